#include "zorvicview.h"

#include "playheadwidget.h"
#include "text/clocktext.h"
#include "text/remainingtime.h"
#include "widgets/marknamedelegate.h"

#include <QBrush>
#include <QIcon>
#include <QScrollBar>
#include <QSignalBlocker>

#include <algorithm>

namespace {

using Marks = std::unordered_map<std::int32_t, Zorvic::PresetMark>;
using GotosColumn = ZorvicView::GotosColumn;
using CountdownsColumn = ZorvicView::CountdownsColumn;

std::vector<Zorvic::PresetMark> SortedByID(const Marks& marks) {
    std::vector<Zorvic::PresetMark> sorted;
    sorted.reserve(marks.size());
    for (const auto& [key, mark] : marks) {
        sorted.push_back(mark);
    }
    std::sort(sorted.begin(), sorted.end(), [](const auto& a, const auto& b) { return a.ID < b.ID; });
    return sorted;
}

QString PositionText(int positionMS, const Zorvic::Preset& preset) {
    return ClockText(WrapSubtract(positionMS, preset.OutPosition));
}

/// Writes only what differs, and tells whether anything did.
bool ShowRemaining(QTreeWidgetItem* row, int column, int remainingMS) {
    const QString text = ClockText(remainingMS);
    const QBrush brush(QColor(RemainingTimeColor(remainingMS)));
    const bool differs = row->text(column) != text || row->foreground(column) != brush;
    if (differs) {
        row->setText(column, text);
        row->setForeground(column, brush);
    }
    return differs;
}

QPushButton* MakeGoButton() {
    // Kept until the program ends: the tables are rebuilt with every change of the unit.
    static const QIcon* const next = new QIcon(
        QPixmap(QStringLiteral(":icons/next.png")).scaled(12, 12, Qt::KeepAspectRatio, Qt::SmoothTransformation));
    auto* button = new QPushButton(*next, QString());
    button->setMaximumSize(16, 16);
    button->setToolTip(ZorvicView::tr("Jump here"));
    // A rebuild destroys the button, and would hand its keyboard focus to some other control.
    button->setFocusPolicy(Qt::NoFocus);
    return button;
}

}  // namespace

/// What the two kinds of marks differ in.
struct ZorvicView::MarkKind {
    QTreeWidget* View;
    int IndexColumn;
    int NameColumn;
    Marks Zorvic::Preset::*Of;
    Zorvic::StatusCode (Zorvic::Session::*Rename)(std::int32_t, std::int32_t, const std::string&);
    Zorvic::StatusCode (Zorvic::Session::*Delete)(std::int32_t, std::int32_t);
};

ZorvicView::MarkKind ZorvicView::GotoKind() const {
    return {GotosView,
            GotosColumnTypeToIndex(GotosColumn::INDEX),
            GotosColumnTypeToIndex(GotosColumn::NAME),
            &Zorvic::Preset::Gotos,
            &Zorvic::Session::RenameGoto,
            &Zorvic::Session::DeleteGoto};
}

ZorvicView::MarkKind ZorvicView::CountdownKind() const {
    return {CountdownsView,
            CountdownsColumnTypeToIndex(CountdownsColumn::INDEX),
            CountdownsColumnTypeToIndex(CountdownsColumn::NAME),
            &Zorvic::Preset::Countdowns,
            &Zorvic::Session::RenameCountdown,
            &Zorvic::Session::DeleteCountdown};
}

void ZorvicView::SetUpMarks() {
    GotoEditor = new MarkNameDelegate(GotosView);
    CountdownEditor = new MarkNameDelegate(CountdownsView);
    for (auto* editor : {GotoEditor, CountdownEditor}) {
        auto* view = qobject_cast<QTreeWidget*>(editor->parent());
        view->setItemDelegate(editor);
        // Only the name can be changed: a double click opens its editor, wherever in the row it falls.
        view->setEditTriggers(QAbstractItemView::NoEditTriggers);
        const auto name = view == GotosView ? GotoKind().NameColumn : CountdownKind().NameColumn;
        connect(view, &QTreeWidget::itemDoubleClicked, this,
                [view, name](QTreeWidgetItem* item) { view->editItem(item, name); });
        // Queued: the view is still busy closing the editor.
        connect(editor, &MarkNameDelegate::EditingEnded, this, &ZorvicView::OnMarkEditingEnded, Qt::QueuedConnection);
    }
}

void ZorvicView::WireMarks() {
    connect(GotosNewButton, &QPushButton::clicked, this, [this] { OnNewGCClicked(false); });
    connect(GotosDeleteButton, &QPushButton::clicked, this, &ZorvicView::OnDelGotoClicked);
    connect(GotosView, &QTreeWidget::itemChanged, this, &ZorvicView::OnGotoChanged);
    connect(CDNewButton, &QPushButton::clicked, this, [this] { OnNewGCClicked(true); });
    connect(CDDeleteButton, &QPushButton::clicked, this, &ZorvicView::OnDelCountdownClicked);
    connect(CountdownsView, &QTreeWidget::itemChanged, this, &ZorvicView::OnCountdownChanged);
}

QString ZorvicView::RemainingTimeToColor(int remainingMS) {
    return RemainingTimeColor(remainingMS);
}

void ZorvicView::AcceptTimeCodes(const std::unordered_map<int, Zorvic::TimeCode>& codes) {
    const auto handle = codes.empty() ? nullptr : LookupSession();
    std::vector<Zorvic::Preset> presets;
    if (!handle || handle->GetSession()->GetPresets(presets) != Zorvic::ZORVIC_STATUS_OK) return;
    const auto states = GetPresetStates(handle->GetSession());
    const auto rows = RowsByPK();
    for (const auto& preset : presets) {
        const auto code = codes.find(preset.PK);
        const auto state = code == codes.end() ? states.end() : states.find(preset.PK);
        if (state == states.end()) continue;
        if (const auto row = rows.find(preset.PK); row != rows.end()) {
            ShowRowTime(row->second, WrapSubtract(code->second.Time, preset.OutPosition));
        }
        if (state->second.IsSelected) {
            ShowTimeCode(preset, state->second, code->second);
        }
    }
}

/// Repaints the row, and no more: hearing of the change, the list would measure its columns again for every row.
void ZorvicView::ShowRowTime(QTreeWidgetItem* row, int remainingMS) {
    const QSignalBlocker blocker(PresetsView->model());
    if (ShowRemaining(row, PresetColumnTypeToIndex(PresetColumn::TIME), remainingMS)) {
        PresetsView->viewport()->update(PresetsView->visualItemRect(row));
    }
}

void ZorvicView::ShowTimeCode(const Zorvic::Preset& preset, const Zorvic::PresetState& state,
                              const Zorvic::TimeCode& timeCode) {
    UpdateCountdowns(preset, state, timeCode);
    ShowSeekTime(WrapSubtract(timeCode.Time, preset.OutPosition));
    ScrubBar->SetTRT(state.TRT);
    ScrubBar->SetTrim(StartPosition(preset, state), preset.OutPosition);
    if (!ScrubBar->isSliderDown()) {
        ScrubBar->SetShowPlayHead(true);
        ScrubBar->SetBaseTimes(state.TRT, timeCode.Time);
    }
    if (timeCode.VUData.size() >= 2) {
        // Out of range, a bar would keep its last level.
        LChannelVol->setValue(std::clamp(timeCode.VUData[0], LChannelVol->minimum(), LChannelVol->maximum()));
        RChannelVol->setValue(std::clamp(timeCode.VUData[1], RChannelVol->minimum(), RChannelVol->maximum()));
    }
}

/// While the operator may be typing, the time waits in SeekText.
void ZorvicView::ShowSeekTime(int remainingMS) {
    SeekText = ClockText(remainingMS);
    SeekStyle = QStringLiteral("color: %1;").arg(RemainingTimeToColor(remainingMS));
    if (SeekBox->hasFocus()) return;
    // A style sheet polishes the widget anew, even an equal one.
    if (SeekBox->styleSheet() != SeekStyle) {
        SeekBox->setStyleSheet(SeekStyle);
    }
    if (SeekBox->text() != SeekText || SeekBox->isModified()) {
        SeekBox->setText(SeekText);
    }
}

void ZorvicView::SetBaseTRT(Zorvic::Session* session, int pk) {
    const auto preset = LookupPreset(session, pk);
    const auto state = LookupPresetState(session, pk);
    if (preset && state) {
        ShowRestingState(*preset, *state);
    }
}

void ZorvicView::ShowRestingState(const Zorvic::Preset& preset, const Zorvic::PresetState& state) {
    const int length = TrimmedLength(preset, state);
    Times->setText(ClockText(length));
    if (!state.IsPlaying) {
        ShowSeekTime(length);
        // The raw in point: without one, head and trim stand at the end of the bar until the next timecode.
        ScrubBar->SetBaseTimes(state.TRT, preset.InPosition);
        ScrubBar->SetTrim(preset.InPosition, preset.OutPosition);
    }
    ScrubBar->SetShowPlayHead(state.IsPlaying);
}

bool ZorvicView::IsEditingMark() const {
    return GotoEditor->IsEditing() || CountdownEditor->IsEditing();
}

// Mark IDs repeat from preset to preset: an open editor may outlive a refresh of its own preset, but must not commit a
// name to the mark of another one.
void ZorvicView::UpdateGCs(const Zorvic::Preset& preset, const Zorvic::PresetState&) {
    MarksAreStale = IsEditingMark() && preset.PK == MarksPK;
    if (MarksAreStale) return;
    GotoEditor->Cancel();
    CountdownEditor->Cancel();
    MarksPK = preset.PK;
    const std::vector<QTreeWidget*> trees = {GotosView, CountdownsView};
    std::vector<int> positions;
    for (auto* tree : trees) {
        tree->setUpdatesEnabled(false);
        positions.push_back(tree->verticalScrollBar()->value());
    }
    FillGotos(preset);
    FillCountdowns(preset);
    for (std::size_t i = 0; i < trees.size(); ++i) {
        trees[i]->doItemsLayout();  // gives the scroll bar its range, which Qt would do later
        trees[i]->verticalScrollBar()->setSliderPosition(positions[i]);
        trees[i]->setUpdatesEnabled(true);
    }
}

void ZorvicView::FillGotos(const Zorvic::Preset& preset) {
    GotosView->clear();
    for (const auto& mark : SortedByID(preset.Gotos)) {
        auto* row =
            new QTreeWidgetItem(GotosView, {QString::number(mark.ID), QString(), QString::fromStdString(mark.Name),
                                            PositionText(mark.TimeMS, preset)});
        row->setFlags(row->flags() | Qt::ItemIsEditable);
        auto* button = MakeGoButton();
        connect(button, &QPushButton::clicked, this,
                [this, pk = preset.PK, timeMS = mark.TimeMS] { OnGotoTriggered(pk, timeMS); });
        GotosView->setItemWidget(row, GotosColumnTypeToIndex(GotosColumn::GOBUTTON), button);
    }
}

void ZorvicView::FillCountdowns(const Zorvic::Preset& preset) {
    CountdownsView->clear();
    for (const auto& mark : SortedByID(preset.Countdowns)) {
        auto* row = new QTreeWidgetItem(CountdownsView, {QString::number(mark.ID), QString::fromStdString(mark.Name),
                                                         PositionText(mark.TimeMS, preset), QString()});
        row->setFlags(row->flags() | Qt::ItemIsEditable);
    }
}

void ZorvicView::OnMarkEditingEnded() {
    const auto handle = MarksAreStale && !IsEditingMark() ? LookupSession() : nullptr;
    if (!handle) return;
    const auto preset = LookupPreset(handle->GetSession(), MarksPK);
    const auto state = LookupPresetState(handle->GetSession(), MarksPK);
    if (preset && state) {
        UpdateGCs(*preset, *state);
    }
}

void ZorvicView::UpdateCountdowns(const Zorvic::Preset& preset, const Zorvic::PresetState&,
                                  const Zorvic::TimeCode& timeCode) {
    if (preset.PK != MarksPK) return;
    for (const auto& [key, mark] : preset.Countdowns) {
        const auto rows =
            CountdownsView->findItems(QString::number(mark.ID), Qt::MatchFixedString | Qt::MatchCaseSensitive,
                                      CountdownsColumnTypeToIndex(CountdownsColumn::INDEX));
        if (rows.isEmpty()) continue;
        const int left = timeCode.Time > mark.TimeMS ? WrapSubtract(timeCode.Time, mark.TimeMS) : 0;
        ShowRemaining(rows.first(), CountdownsColumnTypeToIndex(CountdownsColumn::REMAINING), left);
    }
}

void ZorvicView::OnNewGCClicked(bool countdown) {
    const auto handle = LookupSession();
    if (!handle) return;
    auto* session = handle->GetSession();
    const auto preset = GetSelectedPreset(session);
    const auto state = preset ? LookupPresetState(session, preset->PK) : nullptr;
    if (!state) return;
    int position = state->TRT;
    if (state->IsPlaying) {
        Zorvic::TimeCode timeCode;
        if (session->GetTimeCode(timeCode, preset->PK) != Zorvic::ZORVIC_STATUS_OK) return;
        position = timeCode.Time;
    }
    const std::string name = PositionText(position, *preset).toStdString();
    if (countdown) {
        session->CreateCountdown(preset->PK, position, name);
    } else {
        session->CreateGoto(preset->PK, position, name);
    }
}

void ZorvicView::OnGotoChanged(QTreeWidgetItem* item, int column) {
    RenameMark(GotoKind(), item, column);
}

void ZorvicView::OnCountdownChanged(QTreeWidgetItem* item, int column) {
    RenameMark(CountdownKind(), item, column);
}

void ZorvicView::RenameMark(const MarkKind& kind, QTreeWidgetItem* item, int column) {
    const auto handle = column == kind.NameColumn ? LookupSession() : nullptr;
    if (!handle) return;
    const auto preset = GetSelectedPreset(handle->GetSession());
    if (!preset || preset->PK != MarksPK) return;
    const auto& marks = (*preset).*kind.Of;
    const auto mark = marks.find(item->text(kind.IndexColumn).toInt());
    if (mark == marks.end()) return;
    const std::string name = item->text(kind.NameColumn).toStdString();
    const auto status = (handle->GetSession()->*kind.Rename)(preset->PK, mark->second.TimeMS, name);
    if (status == Zorvic::ZORVIC_STATUS_OK) return;
    const QSignalBlocker blocker(kind.View);  // this is not the operator's edit
    item->setText(kind.NameColumn, QString::fromStdString(mark->second.Name));
}

void ZorvicView::OnDelGotoClicked() {
    DeleteMarks(GotoKind());
}

void ZorvicView::OnDelCountdownClicked() {
    DeleteMarks(CountdownKind());
}

void ZorvicView::DeleteMarks(const MarkKind& kind) {
    const auto handle = LookupSession();
    if (!handle) return;
    const auto preset = GetSelectedPreset(handle->GetSession());
    if (!preset || preset->PK != MarksPK) return;
    const auto& marks = (*preset).*kind.Of;
    for (const auto* row : kind.View->selectedItems()) {
        const auto mark = marks.find(row->text(kind.IndexColumn).toInt());
        if (mark != marks.end()) {
            (handle->GetSession()->*kind.Delete)(preset->PK, mark->second.TimeMS);
        }
    }
}

void ZorvicView::OnGotoTriggered(int pk, int timeMS) {
    if (const auto handle = LookupSession()) {
        handle->GetSession()->SeekTo(pk, static_cast<std::uint32_t>(timeMS));
    }
}
