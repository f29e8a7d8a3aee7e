#include "assetbrowser.h"

#include "sessionmanager.h"
#include "text/assettext.h"
#include "text/beyondinterface.h"
#include "text/refusaltext.h"
#include "widgets/placement.h"
#include "widgets/popupkeys.h"
#include "widgets/rowmerge.h"
#include "widgets/wheelguard.h"

#include <zorvic/session.h>

#include <QAbstractItemView>
#include <QElapsedTimer>
#include <QKeyEvent>
#include <QShortcut>
#include <QSignalBlocker>
#include <QTimer>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <iostream>
#include <utility>

using namespace std::chrono_literals;

namespace {

constexpr int FolderType = 1000;
constexpr int FileType = 1001;
constexpr auto RefreshPeriod = 2000ms;
/// A listing that takes longer than this is felt as a hitch in whatever the operator does elsewhere.
constexpr auto NoticeableDelay = 50ms;
const QChar Separator = QLatin1Char('\\');

int TypeOf(const Zorvic::ExternalAsset& entry) {
    return entry.IsDirectory ? FolderType : FileType;
}

}  // namespace

AssetBrowser::AssetBrowser(const std::string& guid, bool internalMode) : GUID(guid), InternalMode(internalMode) {
    setupUi(this);
    setWindowIcon(QIcon(QStringLiteral(":icons/icon.png")));
    PathUpButton->setIcon(QIcon(QStringLiteral(":/icons/up.png")));
    IngestProgressBar->hide();
    ImportLabel->hide();
    ImportClock.start();
    ShowNotice({});
    PlaceOverMainWindow(*this);
    GuardWheel(*this);
    // An open browser must not keep the program running when the main window is closed.
    setAttribute(Qt::WA_QuitOnClose, false);
    WireControls();
    WireKeys();
    if (InternalMode) {
        PathChoice->setText(QStringLiteral("\\Assets"));
    }
    StartRefreshing();
}

void AssetBrowser::WireControls() {
    connect(CloseButton, &QPushButton::clicked, this, &AssetBrowser::OnCloseClicked);
    connect(SelectButton, &QPushButton::clicked, this, &AssetBrowser::OnSelectClicked);
    connect(PathUpButton, &QPushButton::clicked, this, &AssetBrowser::OnUpClicked);
    connect(FilterBox, &QLineEdit::textChanged, this, &AssetBrowser::OnFilterChanged);
    connect(AssetBrowserList, &QListWidget::itemDoubleClicked, this, &AssetBrowser::OnItemDoubleClicked);
    connect(PathChoice, &QLineEdit::returnPressed, this, &AssetBrowser::UpdateAssetsList);
    connect(DriveChoice, &QComboBox::currentTextChanged, this, &AssetBrowser::OnDriveChanged);
    connect(PathChoice, &QLineEdit::textChanged, this, [this] { ShowNotice({}); });
    connect(AssetBrowserList, &QListWidget::itemSelectionChanged, this, [this] { ShowNotice({}); });
}

void AssetBrowser::WireKeys() {
    auto* const selectKey = new QShortcut(QKeySequence(Qt::Key_Return), this);
    // A key held down must not import the same files over and over.
    selectKey->setAutoRepeat(false);
    connect(selectKey, &QShortcut::activated, this, &AssetBrowser::OnSelectClicked);
    auto* const closeKey = new QShortcut(QKeySequence(Qt::Key_Escape), this);
    connect(closeKey, &QShortcut::activated, this, &AssetBrowser::OnCloseClicked);
    connect(new QShortcut(QKeySequence::Find, this), &QShortcut::activated, FilterBox,
            [this] { FilterBox->setFocus(Qt::ShortcutFocusReason); });
    // Return chooses files; so the folders have other keys.
    const auto onList = [this](Qt::Key key, void (AssetBrowser::*act)()) {
        auto* const shortcut = new QShortcut(key, AssetBrowserList);
        shortcut->setContext(Qt::WidgetShortcut);
        connect(shortcut, &QShortcut::activated, this, act);
    };
    onList(Qt::Key_Backspace, &AssetBrowser::OnUpClicked);
    onList(Qt::Key_Right, &AssetBrowser::OnFolderKey);
    PathChoice->installEventFilter(this);
    KeepKeysInPopup(*DriveChoice);
}

void AssetBrowser::StartRefreshing() {
    RefreshAll();
    auto* const timer = new QTimer(this);
    connect(timer, &QTimer::timeout, this, &AssetBrowser::OnRefreshDue);
    timer->start(RefreshPeriod);
}

bool AssetBrowser::eventFilter(QObject* watched, QEvent* event) {
    if (watched == PathChoice && event->type() == QEvent::ShortcutOverride &&
        static_cast<QKeyEvent*>(event)->key() == Qt::Key_Return) {
        event->accept();
        return true;
    }
    return QWidget::eventFilter(watched, event);
}

bool AssetBrowser::IsValidDrive(const std::string& /*mountpoint*/) {
    return true;
}

/// A hidden browser is refreshed like a visible one, so that it opens up to date. Only a drive that answers slowly is
/// left alone until somebody looks: one that hangs would otherwise hold up the whole console at every refresh.
void AssetBrowser::OnRefreshDue() {
    if (ListingSlow && !isVisible()) {
        RefreshDrives();
    } else {
        RefreshAll();
    }
}

void AssetBrowser::OnDriveChanged(const QString& drive) {
    ChosenDrive = drive;
    UpdateAssetsList();
}

void AssetBrowser::RefreshAll() {
    RefreshDrives();
    UpdateAssetsList();
}

void AssetBrowser::RefreshDrives() {
    const auto handle = FindSession(GUID);
    if (!handle) return;
    std::vector<Zorvic::Drive> drives;
    QStringList mountpoints;
    if (handle->GetSession()->GetDisks(drives) == Zorvic::ZORVIC_STATUS_OK) {
        for (const auto& drive : drives) {
            if (IsValidDrive(drive.Mountpoint)) mountpoints += QString::fromStdString(drive.Mountpoint);
        }
    }
    ShowDrives(mountpoints);
}

void AssetBrowser::ShowDrives(const QStringList& mountpoints) {
    QStringList shown;
    for (int i = 0; i < DriveChoice->count(); ++i) {
        shown += DriveChoice->itemText(i);
    }
    // An open choice is not pulled away under the mouse; the next refresh comes soon.
    if (mountpoints == shown || DriveChoice->view()->isVisible()) return;
    // No listing of whatever drive is current while the box is filled.
    const QSignalBlocker blocker(DriveChoice);
    DriveChoice->clear();
    DriveChoice->addItems(mountpoints);
    if (ChosenDrive.isEmpty()) ChosenDrive = DriveChoice->itemText(0);
    // No other drive steps in for one that is gone: the same path on it is another folder.
    DriveChoice->setCurrentIndex(DriveChoice->findText(ChosenDrive));
    DriveChoice->setPlaceholderText(ChosenDrive.isEmpty() ? QString() : tr("%1 (missing)").arg(ChosenDrive));
}

void AssetBrowser::UpdateAssetsList() {
    const auto handle = FindSession(GUID);
    if (!handle) return;
    const QString drive = DriveChoice->currentText();
    const QString path = PathChoice->text();
    std::vector<Zorvic::ExternalAsset> entries;
    QElapsedTimer waited;
    waited.start();
    const auto status = handle->GetSession()->GetDiskAssets(entries, drive.toStdString(), path.toStdString());
    ListingSlow = waited.hasExpired(NoticeableDelay.count());
    if (status != Zorvic::ZORVIC_STATUS_OK) return;
    const bool sameFolder = drive == ListedDrive && path == ListedPath;
    ListedDrive = drive;
    ListedPath = path;
    ShowEntries(entries, sameFolder);
}

void AssetBrowser::ShowEntries(const std::vector<Zorvic::ExternalAsset>& entries, bool sameFolder) {
    if (!sameFolder) AssetBrowserList->clear();
    using Key = QPair<QString, int>;
    QList<Key> wanted;
    for (const auto& entry : entries)
        wanted.append({QString::fromStdString(entry.Filename), TypeOf(entry)});
    const QIcon folderIcon(QStringLiteral(":icons/folder.png"));
    MergeRows(
        *AssetBrowserList, wanted, [](const QListWidgetItem& row) { return Key(row.text(), row.type()); },
        [&](int place) {
            const auto& [name, type] = wanted.at(place);
            auto* const added = new QListWidgetItem(name, nullptr, type);
            if (type == FolderType) added->setIcon(folderIcon);
            return added;
        });
    for (int row = 0; row < AssetBrowserList->count(); ++row)
        ApplyFilter(row, FilterBox->text());
}

bool AssetBrowser::ApplyFilter(int row, const QString& filter) {
    const bool matches = AssetBrowserList->item(row)->text().contains(filter, Qt::CaseInsensitive);
    // Each change lays the list out anew.
    if (AssetBrowserList->isRowHidden(row) == matches) AssetBrowserList->setRowHidden(row, !matches);
    return matches;
}

void AssetBrowser::OnFilterChanged(const QString& text) {
    for (int row = 0; row < AssetBrowserList->count(); ++row) {
        const bool matches = ApplyFilter(row, text);
        std::cout << "Item " << AssetBrowserList->item(row)->text().toStdString() << (matches ? "true" : "false")
                  << '\n';
    }
    std::cout << std::flush;
}

void AssetBrowser::OnUpClicked() {
    const QString path = PathChoice->text();
    const auto separator = path.lastIndexOf(Separator);
    if (separator < 0) return;
    PathChoice->setText(path.left(separator));
    UpdateAssetsList();
}

void AssetBrowser::OnItemDoubleClicked(QListWidgetItem* item) {
    if (item->type() == FileType) {
        OnSelectClicked();
    } else if (item->type() == FolderType) {
        // While a folder is slow to open, the one before it is still on show: do not append its entries twice.
        if (ListShowsChosenFolder()) PathChoice->setText(PathChoice->text() + Separator + item->text());
        UpdateAssetsList();
    }
}

void AssetBrowser::OnFolderKey() {
    auto* const item = AssetBrowserList->currentItem();
    if (item && item->type() == FolderType) OnItemDoubleClicked(item);
}

bool AssetBrowser::ListShowsChosenFolder() const {
    return ListedDrive == DriveChoice->currentText() && ListedPath == PathChoice->text();
}

QStringList AssetBrowser::GetSelectedFiles() const {
    QStringList names;
    // The entries of another folder than drive and path name would make paths of files that nobody picked.
    for (int row = 0; ListShowsChosenFolder() && row < AssetBrowserList->count(); ++row) {
        const auto* const item = AssetBrowserList->item(row);
        if (item->type() == FileType && item->isSelected()) names += item->text();
    }
    return names;
}

QString AssetBrowser::FullPath(const QString& fileName) const {
    return DriveChoice->currentText() + QLatin1Char(':') + PathChoice->text() + Separator + fileName;
}

QStringList AssetBrowser::GetSelectedPaths() const {
    QStringList paths = GetSelectedFiles();
    std::ranges::transform(paths, paths.begin(), [this](const QString& name) { return FullPath(name); });
    return paths;
}

void AssetBrowser::ShowNotice(const QString& notice) {
    NoticeLabel->setText(notice);
    NoticeLabel->setVisible(!notice.isEmpty());
}

void AssetBrowser::hideEvent(QHideEvent* event) {
    ShowNotice({});
    QWidget::hideEvent(event);
}

void AssetBrowser::OnSelectClicked() {
    ShowNotice(ListShowsChosenFolder() ? QString() : tr("Nothing chosen: the list does not show this folder."));
    for (const auto& name : GetSelectedFiles()) {
        CurProgressAssets.insert(name.toStdString());
    }
    emit ItemsChosen(GetSelectedPaths());
}

void AssetBrowser::PerformImport() {
    const auto handle = FindSession(GUID);
    if (!handle) return;
    CurProgressAssets.clear();
    const QStringList paths = GetSelectedPaths();
    for (const auto& selected : paths) {
        const std::string path = selected.toStdString();
        CurProgressAssets.insert(StripPathFromFilename(path));
        CurProgressAssets.insert(path);
        std::cout << "Ingesting asset at \"" << path << "\"." << std::endl;
        const auto status = handle->GetSession()->InstallAsset(path);
        if (status != Zorvic::ZORVIC_STATUS_OK) {
            ShowNotice(RefusedText(tr("Import %1").arg(selected), status, LastReasonText(*handle->GetSession())));
            std::cerr << "Error ingesting asset " << path << std::endl;
        }
    }
}

ImportSums AssetBrowser::SumImport(const std::vector<Zorvic::Asset>& assets) const {
    ImportSums sums;
    for (const auto& asset : assets) {
        if (!CurProgressAssets.contains(StripPathFromFilename(asset.FullPath))) continue;
        sums.Total += asset.TotalSize;
        sums.Current += asset.CurrentSize;
        ++sums.Files;
        if (asset.CurrentSize >= asset.TotalSize) ++sums.FilesDone;
    }
    return sums;
}

void AssetBrowser::UpdateIngestProgress(const std::vector<Zorvic::Asset>& assets) {
    constexpr int Nothing = -1;
    constexpr int Complete = 100;
    const auto sums = SumImport(assets);
    int percentage = Nothing;
    if (sums.Total != 0) {
        const long double share =
            static_cast<long double>(sums.Current) / static_cast<long double>(sums.Total) * Complete;
        percentage = static_cast<int>(std::clamp<long double>(share, 0, Complete));
    }
    IngestProgressBar->setValue(std::max(percentage, 0));
    const bool over = percentage == Nothing || percentage == Complete;
    if (over) CurProgressAssets.clear();
    IngestProgressBar->setVisible(!over);
    ShowImport(sums, over);
}

/// The copy is the unit's business: it goes on when this window is closed.
void AssetBrowser::ShowImport(const ImportSums& sums, bool over) {
    ImportLabel->setVisible(!over);
    if (over) return Rate.Restart();
    Rate.Note(sums.Current, ImportClock.elapsed());
    ImportLabel->setText(ImportText(sums, Rate.BytesPerSecond()));
}

void AssetBrowser::OnCloseClicked() {
    hide();
}
