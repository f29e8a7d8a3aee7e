#include "aboutdialog.h"
#include "assetbrowser.h"
#include "comparewindow.h"
#include "presetbuilder.h"
#include "shortcutsheet.h"
#include "showoperator.h"
#include "simulatorpane.h"
#include "tour.h"
#include "units.h"
#ifdef ZORVIC_ASRUN
#include "asrun/asrunwindow.h"
#endif

#include <QAction>
#include <QCoreApplication>
#include <QLabel>
#include <QPushButton>
#include <QTreeWidget>

namespace {

/// Of the windows of this kind the one that is shown: each tab has its own.
template <typename Widget>
Widget& Shown() {
    ShowOperator::Becomes([] { return TopLevel<Widget>() && TopLevel<Widget>()->isVisible(); });
    // Clicks of a program do not tell the window manager that somebody asked for the window.
    TopLevel<Widget>()->raise();
    TopLevel<Widget>()->activateWindow();
    return *TopLevel<Widget>();
}

void Choose(const AssetBrowser& browser, const char* file) {
    QListWidgetItem* found = nullptr;
    ShowOperator::Becomes([&] {
        const auto items = browser.AssetBrowserList->findItems(QString::fromLatin1(file), Qt::MatchExactly);
        found = items.isEmpty() ? nullptr : items.first();
        return found != nullptr;
    });
    if (found) found->setSelected(true);
}

void Trigger(const ShowOperator& op, const char* action) {
    op.Window.findChild<QAction*>(QString::fromLatin1(action))->trigger();
}

void NewPreset(ShowOperator& op) {
    op.Press("AddPresetButton");
    auto& builder = Shown<PresetBuilder>();
    op.Picture("builder-new", builder);
    QTest::keyClicks(builder.PresetNameBox, QStringLiteral("Act two"));
    QTest::keyClicks(builder.NotesBox, QStringLiteral("After the interval"));
    const auto panes = builder.findChildren<Simulator::SimulatorPaneWidget*>();
    QTest::mouseClick(panes.at(0)->PaneWidget, Qt::LeftButton);
    auto& browser = Shown<AssetBrowser>();
    Choose(browser, "Interview.mpg");
    op.Picture("builder-assets", browser);
    QTest::mouseClick(browser.SelectButton, Qt::LeftButton);
    op.Becomes([&] { return !browser.isVisible(); });
    op.Picture("builder-filled", builder);
    builder.PresetNameBox->setText(QString(300, QLatin1Char('x')));
    QTest::mouseClick(builder.CreateButton, Qt::LeftButton);
    op.Picture("builder-not-saved", builder);
    QTest::mouseClick(builder.CloseButton, Qt::LeftButton);
}

}  // namespace

void TourBuilder(ShowOperator& op) {
    NewPreset(op);
    for (const auto& [preset, picture] :
         {std::pair("House open", "builder-loop-and-link"), std::pair("Facade", "builder-two-outputs")}) {
        op.Select(preset);
        op.Press("EditPresetButton");
        auto& builder = Shown<PresetBuilder>();
        op.Picture(picture, builder);
        QTest::mouseClick(builder.CloseButton, Qt::LeftButton);
    }
}

void TourAssets(ShowOperator& op, const PictureUnits& units) {
    op.Press("ToggleAssetsViewButton");
    op.Picture("assets-wide");
    op.Press("ToggleAssetsViewButton");
    op.Press("AssetImportButton");
    auto& browser = Shown<AssetBrowser>();
    browser.DriveChoice->setCurrentText(QStringLiteral("E"));
    Choose(browser, "Act Two.mpg");
    Choose(browser, "River.mov");
    op.Picture("import", browser);
    QTest::mouseClick(browser.SelectButton, Qt::LeftButton);
    std::filesystem::remove(units.Drive / "River.mov");
    op.Becomes([&] { return browser.IngestProgressBar->isVisible() && browser.IngestProgressBar->value() > 5; });
    op.Picture("importing", browser);
    op.Picture("importing-tab");
    browser.hide();
    op.Press("ToggleAssetsViewButton");
    op.Picture("assets-importing");
    auto& assets = op.Find<QTreeWidget>("AssetsView");
    const QString failed = QCoreApplication::translate("ZorvicView", "ERROR");
    op.Becomes([&] { return !assets.findItems(failed, Qt::MatchExactly, 1).isEmpty(); });
    op.Picture("assets-import-failed");
    op.Press("ToggleAssetsViewButton");
}

void TourUnits(ShowOperator& op, const PictureUnits& units) {
    op.Connect(units.All.at(2)->Host());
    op.Picture("empty-unit");
    op.Connect(units.All.at(1)->Host());
    op.Picture("three-units");
    op.Tabs().setCurrentIndex(0);
    Trigger(op, "CompareMenuItem");
    auto& compare = Shown<CompareWindow>();
    const auto compared = [&] { return compare.CompareButton->isEnabled(); };
    op.Becomes(compared);
    compare.SecondUnit->setCurrentIndex(2);
    QTest::mouseClick(compare.CompareButton, Qt::LeftButton);
    op.Becomes(compared);
    op.Picture("compare", compare);
    compare.close();
#ifdef ZORVIC_ASRUN
    Trigger(op, "AsRunMenuItem");
    auto& sheet = Shown<AsRunWindow>();
    op.Becomes([&] { return sheet.EntriesView->model()->rowCount() > 5; });
    op.Picture("as-run", sheet);
    sheet.close();
#endif
    Trigger(op, "KeysMenuItem");
    auto& keys = Shown<ShortcutSheet>();
    op.Picture("keys", keys);
    keys.close();
    Trigger(op, "AboutMenuItem");
    auto& about = Shown<AboutDialog>();
    op.Picture("about", about);
    about.close();
}

void TourLoss(ShowOperator& op, const PictureUnits& units) {
    op.Select("House open");
    op.Press("TakeButton");
    QTest::qWait(1500);
    units.All.at(0)->Freeze();
    op.Becomes([&] { return op.Find("LinkLabel").isVisible(); });
    QTest::qWait(2500);
    op.Picture("unit-lost");
    units.All.at(0)->Thaw();
    op.Becomes([&] { return !op.Find("LinkLabel").isVisible(); });
    op.Picture("unit-back");
    op.Press("EndButton");
}
