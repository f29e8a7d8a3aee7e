#pragma once

#include "ui_comparewindow.h"

#include <zorvic/compare.h>

#include <QList>
#include <QString>
#include <QWidget>

#include <optional>
#include <string>
#include <vector>

class QTreeWidgetItem;

/// What two connected units do not have in common, as they were when it was asked for. Has no owner: it deletes itself
/// when it is closed.
class CompareWindow : public QWidget, public Ui::CompareWindowUI {
    Q_OBJECT

public:
    struct Unit {
        std::string GUID;
        QString Name;
    };

    /// Compares the first two.
    explicit CompareWindow(std::vector<Unit> units);

private slots:
    void OnCompareClicked();

private:
    struct Contents {
        std::vector<Zorvic::Preset> Presets;
        std::vector<Zorvic::Asset> Assets;
    };
    struct Found {
        std::vector<Zorvic::PresetDifference> Presets;
        std::vector<Zorvic::MediaDifference> Media;
    };

    /// Nothing when the unit does not answer.
    static std::optional<Contents> Read(const std::string& guid);
    void Show(const Found& found);
    static void AddPreset(QList<QTreeWidgetItem*>& rows, const Zorvic::PresetDifference& difference);
    static QString WhereText(bool inFirst, bool inSecond);

    const std::vector<Unit> Units;
};
