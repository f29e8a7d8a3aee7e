#include "view/marktables.h"

#include "text/timetext.h"
#include "widgets/marknamedelegate.h"
#include "widgets/remainingcell.h"
#include "widgets/rowmerge.h"
#include "zorvicview.h"

#include <QApplication>
#include <QIcon>
#include <QKeyEvent>
#include <QPixmap>
#include <QPushButton>
#include <QSignalBlocker>

#include <algorithm>

namespace {

using Marks = std::unordered_map<std::int32_t, Zorvic::PresetMark>;
using GotosColumn = ZorvicView::GotosColumn;
using CountdownsColumn = ZorvicView::CountdownsColumn;

constexpr int GoColumn = ZorvicView::GotosColumnTypeToIndex(GotosColumn::GOBUTTON);
constexpr int RemainingColumn = ZorvicView::CountdownsColumnTypeToIndex(CountdownsColumn::REMAINING);

std::vector<Zorvic::PresetMark> SortedByID(const Marks& marks) {
    std::vector<Zorvic::PresetMark> sorted;
    sorted.reserve(marks.size());
    for (const auto& [key, mark] : marks)
        sorted.push_back(mark);
    std::sort(sorted.begin(), sorted.end(), [](const auto& a, const auto& b) { return a.ID < b.ID; });
    return sorted;
}

void SetTextIfOther(QTreeWidgetItem& row, int column, const QString& text) {
    if (row.text(column) != text) row.setText(column, text);
}

/// 12 by 12 points, with as many pixels as the screen has there.
QPixmap NextArrow() {
    const qreal scale = qApp->devicePixelRatio();
    const int side = qRound(12 * scale);
    auto arrow =
        QPixmap(QStringLiteral(":icons/next.png")).scaled(side, side, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    arrow.setDevicePixelRatio(scale);
    return arrow;
}

QPushButton* MakeGoButton() {
    static const QIcon* const next = new QIcon(NextArrow());
    auto* button = new QPushButton(*next, QString());
    button->setMaximumSize(16, 16);
    button->setToolTip(ZorvicView::tr("Jump here"));
    button->setAccessibleName(button->toolTip());
    // A click must not take the keyboard from the list that the operator works in.
    button->setFocusPolicy(Qt::NoFocus);
    return button;
}

}  // namespace

MarkTables::MarkTables(QTreeWidget* gotos, QTreeWidget* countdowns)
    : Tables{MakeTable(gotos, Kind::Goto), MakeTable(countdowns, Kind::Countdown)} {
    for (const auto& table : Tables) {
        auto* const view = table.View;
        view->setItemDelegate(table.Editor);
        // Only the name can be changed: a double click opens its editor, wherever in the row it falls.
        view->setEditTriggers(QAbstractItemView::NoEditTriggers);
        view->installEventFilter(this);
        connect(view, &QTreeWidget::itemDoubleClicked, this,
                [view, name = table.NameColumn](QTreeWidgetItem* row) { view->editItem(row, name); });
    }
}

// Dying, an editor reports what was typed.
MarkTables::~MarkTables() {
    for (const auto& table : Tables) {
        table.View->removeEventFilter(this);
        table.Editor->Cancel();
    }
}

MarkTables::Table MarkTables::MakeTable(QTreeWidget* view, Kind kind) {
    if (kind == Kind::Goto) {
        return {view, new MarkNameDelegate(view), ZorvicView::GotosColumnTypeToIndex(GotosColumn::INDEX),
                ZorvicView::GotosColumnTypeToIndex(GotosColumn::NAME),
                ZorvicView::GotosColumnTypeToIndex(GotosColumn::POSITION)};
    }
    return {view, new MarkNameDelegate(view), ZorvicView::CountdownsColumnTypeToIndex(CountdownsColumn::INDEX),
            ZorvicView::CountdownsColumnTypeToIndex(CountdownsColumn::NAME),
            ZorvicView::CountdownsColumnTypeToIndex(CountdownsColumn::POSITION)};
}

void MarkTables::Show(const Zorvic::Preset& preset) {
    if (preset.PK != ShownPK) ShowNothing();
    ShownPK = preset.PK;
    Fill(Kind::Goto, preset);
    Fill(Kind::Countdown, preset);
}

void MarkTables::ShowNothing() {
    for (const auto& table : Tables) {
        table.Editor->Cancel();
        table.View->clear();
    }
    ShownPK = 0;
}

void MarkTables::Fill(Kind kind, const Zorvic::Preset& preset) {
    const auto& table = Of(kind);
    const QSignalBlocker blocker(table.View);  // nothing here is the operator's edit
    const auto marks = SortedByID(kind == Kind::Goto ? preset.Gotos : preset.Countdowns);
    QList<int> wanted;
    for (const auto& mark : marks)
        wanted.append(mark.ID);
    MergeRows(
        *table.View, wanted, [kind](const QTreeWidgetItem& row) { return IDOf(&row, kind); },
        [&](int place) { return MakeRow(kind, wanted.at(place)); });
    if (kind == Kind::Goto) GotoTimes.clear();
    for (int place = 0; place < wanted.size(); ++place) {
        const auto& mark = marks[static_cast<std::size_t>(place)];
        auto& row = *table.View->topLevelItem(place);
        SetTextIfOther(row, table.NameColumn, QString::fromStdString(mark.Name));
        SetTextIfOther(row, table.PositionColumn, ClockText(WrapSubtract(mark.TimeMS, preset.OutPosition)));
        if (kind != Kind::Goto) continue;
        GotoTimes.emplace(mark.ID, mark.TimeMS);
        if (!table.View->itemWidget(&row, GoColumn)) AddGoButton(&row, mark.ID);
    }
}

QTreeWidgetItem* MarkTables::MakeRow(Kind kind, int id) const {
    auto* row = new QTreeWidgetItem;
    row->setText(Of(kind).IDColumn, QString::number(id));
    row->setFlags(row->flags() | Qt::ItemIsEditable);
    return row;
}

void MarkTables::AddGoButton(QTreeWidgetItem* row, int id) {
    auto* button = MakeGoButton();
    connect(button, &QPushButton::clicked, this, [this, id] { Go(id); });
    Of(Kind::Goto).View->setItemWidget(row, GoColumn, button);
}

void MarkTables::Go(int id) {
    if (const auto time = GotoTimes.find(id); time != GotoTimes.end()) emit GotoTriggered(ShownPK, time->second);
}

void MarkTables::ShowRemaining(const Zorvic::Preset& preset, std::optional<int> positionMS) {
    if (preset.PK != ShownPK) return;
    const auto& table = Of(Kind::Countdown);
    const QSignalBlocker blocker(table.View);
    for (int place = 0; place < table.View->topLevelItemCount(); ++place) {
        auto* const row = table.View->topLevelItem(place);
        const auto mark = preset.Countdowns.find(IDOf(row, Kind::Countdown));
        if (mark == preset.Countdowns.end()) continue;
        const int time = mark->second.TimeMS;
        if (!positionMS) {
            SetTextIfOther(*row, RemainingColumn, {});
        } else {
            ::ShowRemaining(row, RemainingColumn, *positionMS > time ? WrapSubtract(*positionMS, time) : 0);
        }
    }
}

void MarkTables::ShowStale() {
    auto* const view = Of(Kind::Countdown).View;
    const QSignalBlocker blocker(view);
    for (int place = 0; place < view->topLevelItemCount(); ++place)
        view->topLevelItem(place)->setForeground(RemainingColumn, {});
}

int MarkTables::IDOf(const QTreeWidgetItem* row, Kind kind) {
    return row
        ->text(kind == Kind::Goto ? ZorvicView::GotosColumnTypeToIndex(GotosColumn::INDEX)
                                  : ZorvicView::CountdownsColumnTypeToIndex(CountdownsColumn::INDEX))
        .toInt();
}

std::vector<int> MarkTables::SelectedIDs(Kind kind) const {
    std::vector<int> ids;
    for (const auto* row : Of(kind).View->selectedItems())
        ids.push_back(IDOf(row, kind));
    return ids;
}

std::string MarkTables::NameOf(const QTreeWidgetItem* row, Kind kind) const {
    return row->text(Of(kind).NameColumn).toStdString();
}

void MarkTables::SetName(QTreeWidgetItem* row, Kind kind, const std::string& name) {
    const QSignalBlocker blocker(Of(kind).View);
    row->setText(Of(kind).NameColumn, QString::fromStdString(name));
}

bool MarkTables::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() != QEvent::KeyPress) return QObject::eventFilter(watched, event);
    const auto& key = static_cast<const QKeyEvent&>(*event);
    const auto table =
        std::ranges::find_if(Tables, [watched](const Table& candidate) { return candidate.View == watched; });
    auto* const row = table == Tables.end() ? nullptr : table->View->currentItem();
    if (key.key() == Qt::Key_F2) {
        if (row) table->View->editItem(row, table->NameColumn);
        return true;
    }
    // Return alone takes and pauses, wherever the keyboard is.
    const bool isGo = key.modifiers() == Qt::ControlModifier && key.key() == Qt::Key_Return && !key.isAutoRepeat();
    if (!isGo || table != Tables.begin()) return QObject::eventFilter(watched, event);
    if (row) Go(IDOf(row, Kind::Goto));
    return true;
}
