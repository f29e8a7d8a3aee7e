#include "playheadwidget.h"
#include "showoperator.h"
#include "tour.h"

#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <QTableView>
#include <QTreeWidget>

namespace {

constexpr int MeterMS = 1500;

void PlayingAndPaused(ShowOperator& op) {
    op.Select("House open");
    op.Picture("stopped");
    op.Press("TakeButton");
    QTest::qWait(MeterMS);
    op.Picture("playing");
    const auto& bar = op.ScrubBar();
    op.Point(bar, {bar.width() / 3, 30});
    op.Picture("scrub-hover");
    op.PointAway();
    op.Press("PauseButton");
    op.Picture("paused");
    op.Press("PauseButton");
}

void Warnings(ShowOperator& op) {
    op.Select("Storm");
    op.Press("TakeButton");
    op.Picture("last-21-seconds");
    op.Seek("9");
    op.Picture("last-11-seconds");
    op.Select("House open");
    op.Picture("last-seconds-of-another");
    op.Press("EndButton");
    op.Select("Storm");
    op.Press("EndButton");
}

void Cued(ShowOperator& op) {
    op.Select("Interview");
    op.Seek("1:00");
    op.Picture("cued");
    op.Press("EndButton");
}

void Lists(ShowOperator& op) {
    op.Select("House open");
    op.Select("Storm", Qt::ControlModifier);
    op.Select("Facade", Qt::ControlModifier);
    auto& list = op.Find<QTreeWidget>("PresetsView");
    op.Point(*list.viewport(), op.RowOf("Safety curtain").center());
    op.Picture("several-selected-and-row-under-pointer");
    op.PointAway();
    op.Select("Facade");
    op.Press("TakeButton");
    QTest::qWait(MeterMS);
    op.Picture("two-outputs");
    op.Find<QCheckBox>("SimulatorCheckBox").setChecked(false);
    op.Picture("layout-hidden");
    op.Find<QCheckBox>("SimulatorCheckBox").setChecked(true);
    // On the shared output the later one is on top.
    op.Select("House open");
    op.Press("TakeButton");
    QTest::qWait(MeterMS);
    op.Picture("two-presets-play");
    op.Press("EndButton");
    op.Select("Facade");
    op.Press("EndButton");
}

void Buttons(ShowOperator& op) {
    auto& take = op.Find<QPushButton>("TakeButton");
    op.Point(take, take.rect().center());
    op.Find("PauseButton").setFocus();
    op.Find<QPushButton>("EndButton").setDown(true);
    op.Picture("button-hover-focus-pressed");
    op.Find<QPushButton>("EndButton").setDown(false);
    op.PointAway();
    op.ScrubBar().setFocus();
    op.Picture("scrub-focus");
    op.Find("PresetsView").setFocus();
}

}  // namespace

void TourShow(ShowOperator& op) {
    PlayingAndPaused(op);
    Warnings(op);
    Cued(op);
    Lists(op);
    Buttons(op);
}
