#include "playheadwidget.h"
#include "showoperator.h"
#include "tour.h"

#include <QComboBox>
#include <QContextMenuEvent>
#include <QMenu>
#include <QMenuBar>
#include <QSlider>
#include <QTreeWidget>

namespace {

void ContextMenu(QWidget& widget, QPoint at) {
    QContextMenuEvent event(QContextMenuEvent::Mouse, at, widget.mapToGlobal(at));
    QCoreApplication::sendEvent(&widget, &event);
}

}  // namespace

void TourMarks(ShowOperator& op) {
    op.Select("Overture");
    op.ShowMarks("GotoTab");
    op.Picture("gotos");
    auto& gotos = op.Find<QTreeWidget>("GotosView");
    gotos.setFocus();
    gotos.editItem(gotos.topLevelItem(1), 2);
    op.Picture("goto-renamed");
    op.Key(Qt::Key_Escape);
    op.ShowMarks("CountdownTab");
    op.Find("PresetsView").setFocus();
    op.Press("TakeButton");
    op.Seek("40");
    op.Picture("countdowns");
    auto& countdowns = op.Find<QTreeWidget>("CountdownsView");
    countdowns.setCurrentItem(countdowns.topLevelItem(0));
    op.Seek("30");
    op.Picture("countdown-selected");
    op.Press("EndButton");
}

void TourMix(ShowOperator& op) {
    op.ShowMarks("AssetsTab");
    op.Select("House open");
    op.Press("TakeButton");
    op.Find<QSlider>("LChannel").setValue(40000);
    op.Find<QSlider>("RChannel").setValue(52000);
    op.Find<QSlider>("BrightnessSel").setValue(30);
    op.Find<QSlider>("HueSel").setValue(-45);
    op.Find("LChannel").setFocus();
    QTest::qWait(2500);
    op.Picture("mix");
    for (const auto& [name, value] : {std::pair("LChannel", 65535), std::pair("RChannel", 65535),
                                      std::pair("BrightnessSel", 0), std::pair("HueSel", 0)})
        op.Find<QSlider>(name).setValue(value);
    op.Find("PresetsView").setFocus();
}

void TourMenus(ShowOperator& op) {
    for (auto* const action : op.Window.menuBar()->actions()) {
        const QString name = QStringLiteral("menu-") + action->text().remove(QLatin1Char('&')).toLower();
        auto* const menu = action->menu();
        const QPoint place = op.Window.menuBar()->actionGeometry(action).bottomLeft();
        op.PictureOfMenu(qPrintable(name), op.Window, [&] { menu->exec(op.Window.menuBar()->mapToGlobal(place)); });
    }
    auto* const viewport = op.Find<QTreeWidget>("PresetsView").viewport();
    const QPoint row(viewport->width() / 3, op.RowOf("House open").center().y());
    op.PictureOfMenu("menu-of-preset", op.Window, [&] { ContextMenu(*viewport, row); });
    auto& bar = op.ScrubBar();
    op.PictureOfMenu("menu-of-scrub-bar", op.Window, [&] { ContextMenu(bar, {bar.width() / 2, 30}); });
    op.PictureOfMenu("players", op.Window, [&] { op.Find<QComboBox>("ActivePlayerSel").showPopup(); });
    op.Press("EndButton");
}
