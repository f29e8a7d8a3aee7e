#pragma once

#include "text/importrate.h"
#include "ui_assetbrowser.h"

#include <zorvic/types.h>

#include <QElapsedTimer>
#include <QString>
#include <QStringList>
#include <QWidget>

#include <memory>
#include <string>
#include <unordered_set>
#include <vector>

/// Window that walks the folders of a unit's drives and lets the operator pick files, either to import them (and to
/// watch the copy) or to choose an asset that the unit has already.
///
/// Every handler looks the unit's session up afresh and does nothing without one. Drives and folder are listed again
/// every 2 s; what the operator has selected, scrolled to or is about to click stays.
class AssetBrowser : public QWidget, public Ui::AssetBrowserUI {
    Q_OBJECT

public:
    /// `guid` names the unit. In internal mode the browser starts in the unit's asset folder.
    AssetBrowser(const std::string& guid, bool internalMode);

    /// Full paths of the selected files, in the order of the list. Folders are left out.
    QStringList GetSelectedPaths() const;

public slots:
    void OnCloseClicked();
    void OnUpClicked();
    void OnSelectClicked();
    void OnFilterChanged(const QString& text);
    void OnItemDoubleClicked(QListWidgetItem* item);
    void RefreshAll();
    void RefreshDrives();
    void UpdateAssetsList();
    /// Starts to copy the selected files into the unit's store.
    void PerformImport();
    /// Shows how far the files of the current import are, given the unit's newest asset list.
    void UpdateIngestProgress(const std::vector<Zorvic::Asset>& assets);
    /// Says in words why nothing came of a choice, until the operator does something else here.
    void ShowNotice(const QString& notice);

signals:
    /// Full paths of the chosen files; empty when only folders were selected.
    void ItemsChosen(QStringList paths);

protected:
    /// Return in the path field belongs to the field, not to the window's shortcut.
    bool eventFilter(QObject* watched, QEvent* event) override;
    void hideEvent(QHideEvent* event) override;

private:
    void WireControls();
    void WireKeys();
    void StartRefreshing();
    void OnRefreshDue();
    void OnFolderKey();
    void OnDriveChanged(const QString& drive);

    /// Which drives are offered: all of them. The place to leave some out.
    static bool IsValidDrive(const std::string& mountpoint);
    void ShowDrives(const QStringList& mountpoints);
    /// Keeps the items of what was listed before.
    void ShowEntries(const std::vector<Zorvic::ExternalAsset>& entries, bool sameFolder);
    /// Hides the row unless its text contains the filter text; true when it does.
    bool ApplyFilter(int row, const QString& filter);
    /// False when the folder that drive and path name could not be listed, or was not yet, so that the list shows an
    /// earlier one.
    bool ListShowsChosenFolder() const;
    /// Names of the selected files, in the order of the list.
    QStringList GetSelectedFiles() const;
    QString FullPath(const QString& fileName) const;
    ImportSums SumImport(const std::vector<Zorvic::Asset>& assets) const;
    void ShowImport(const ImportSums& sums, bool over);

    /// File names and full paths of the files of the current import.
    std::unordered_set<std::string> CurProgressAssets;
    std::string GUID;
    bool InternalMode;
    /// Survives the drive's absence, so that it is in use again when it comes back.
    QString ChosenDrive;
    // Where the entries in the list are from.
    QString ListedDrive;
    QString ListedPath;
    /// The last listing held up the window noticeably.
    bool ListingSlow = false;
    ImportRate Rate;
    QElapsedTimer ImportClock;
};
