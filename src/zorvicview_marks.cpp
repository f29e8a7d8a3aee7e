#include "zorvicview.h"

#include "text/timetext.h"
#include "view/marktables.h"
#include "view/presetrows.h"
#include "view/timecodes.h"

#include <algorithm>

namespace {

using Kind = MarkTables::Kind;
using Marks = std::unordered_map<std::int32_t, Zorvic::PresetMark>;

/// What the two kinds of marks differ in.
struct MarkOperations {
    Marks Zorvic::Preset::*Of;
    Zorvic::StatusCode (Zorvic::Session::*Create)(std::int32_t, std::int32_t, const std::string&);
    Zorvic::StatusCode (Zorvic::Session::*Rename)(std::int32_t, std::int32_t, const std::string&);
    Zorvic::StatusCode (Zorvic::Session::*Delete)(std::int32_t, std::int32_t);
};

MarkOperations OperationsOf(Kind kind) {
    using Zorvic::Session;
    if (kind == Kind::Goto) {
        return {&Zorvic::Preset::Gotos, &Session::CreateGoto, &Session::RenameGoto, &Session::DeleteGoto};
    }
    return {&Zorvic::Preset::Countdowns, &Session::CreateCountdown, &Session::RenameCountdown,
            &Session::DeleteCountdown};
}

}  // namespace

void ZorvicView::WireMarks() {
    connect(GotosNewButton, &QPushButton::clicked, this, [this] { OnNewGCClicked(false); });
    connect(GotosDeleteButton, &QPushButton::clicked, this, &ZorvicView::OnDelGotoClicked);
    connect(GotosView, &QTreeWidget::itemChanged, this, &ZorvicView::OnGotoChanged);
    connect(Marks.get(), &MarkTables::GotoTriggered, this, &ZorvicView::OnGotoTriggered);
    connect(CDNewButton, &QPushButton::clicked, this, [this] { OnNewGCClicked(true); });
    connect(CDDeleteButton, &QPushButton::clicked, this, &ZorvicView::OnDelCountdownClicked);
    connect(CountdownsView, &QTreeWidget::itemChanged, this, &ZorvicView::OnCountdownChanged);
}

QString ZorvicView::RemainingTimeToColor(int remainingMS) {
    return RemainingTimeColor(remainingMS);
}

void ZorvicView::AcceptTimeCodes(const std::unordered_map<int, Zorvic::TimeCode>& codes) {
    auto round = BeginRound();
    ShowTimeCodes(round, codes);
}

bool ZorvicView::RefreshTimeCodes(Round& round) {
    const auto* const states = round.States();
    if (!states) return false;
    std::unordered_map<int, Zorvic::TimeCode> codes;
    for (const auto& state : *states) {
        const auto timeCode = state.IsPlaying ? round.FindTimeCode(state.PK) : std::nullopt;
        if (timeCode) codes.emplace(state.PK, *timeCode);
    }
    ShowTimeCodes(round, codes);
    // A preset that is cued stands somewhere without playing; it may be taken, or the cue dropped, elsewhere.
    const auto selected = std::find_if(states->begin(), states->end(), [](const auto& s) { return s.IsSelected; });
    if (selected != states->end() && !selected->IsPlaying) ShowStanding(round, selected->PK);
    return true;
}

void ZorvicView::ShowStanding(Round& round, int pk) {
    const auto timeCode = round.FindTimeCode(pk);
    if (!timeCode && !Clock->IsCued()) return;
    const auto* const preset = round.FindPreset(pk);
    if (!preset) return;
    Clock->ShowTimes(*preset, *round.FindState(pk), timeCode);
    Marks->ShowRemaining(*preset, timeCode ? std::optional(timeCode->Time) : std::nullopt);
    Rows->ShowStanding({preset, round.FindState(pk), timeCode});
}

void ZorvicView::ShowTimeCodes(Round& round, const std::unordered_map<int, Zorvic::TimeCode>& codes) {
    for (const auto& [pk, timeCode] : codes) {
        const auto* const preset = round.FindPreset(pk);
        const auto* const state = preset ? round.FindState(pk) : nullptr;
        if (!state) continue;
        Rows->ShowTime(pk, WrapSubtract(timeCode.Time, preset->OutPosition));
        if (!state->IsSelected) continue;
        UpdateCountdowns(*preset, *state, timeCode);
        Clock->ShowTimeCode(*preset, *state, timeCode);
    }
}

void ZorvicView::SetBaseTRT(Zorvic::Session* session, int pk) {
    auto round = BeginRound(session);
    ShowTimes(round, pk);
}

void ZorvicView::ShowTimes(Round& round, int pk) {
    const auto* const preset = round.FindPreset(pk);
    const auto* const state = preset ? round.FindState(pk) : nullptr;
    if (state) Clock->ShowTimes(*preset, *state, round.FindTimeCode(pk));
}

void ZorvicView::UpdateGCs(const Zorvic::Preset& preset, const Zorvic::PresetState&) {
    Marks->Show(preset);
}

void ZorvicView::UpdateCountdowns(const Zorvic::Preset& preset, const Zorvic::PresetState&,
                                  const Zorvic::TimeCode& timeCode) {
    Marks->ShowRemaining(preset, timeCode.Time);
}

void ZorvicView::OnNewGCClicked(bool countdown) {
    auto round = BeginRound();
    const auto* const preset = round.Current();
    const auto* const state = preset ? round.CurrentState() : nullptr;
    if (!state) return;
    int position = state->TRT;
    if (state->IsPlaying) {
        const auto timeCode = round.FindTimeCode(preset->PK);
        if (!timeCode) return;
        position = timeCode->Time;
    }
    const std::string name = ClockText(WrapSubtract(position, preset->OutPosition)).toStdString();
    const auto create = OperationsOf(countdown ? Kind::Countdown : Kind::Goto).Create;
    Report((countdown ? CDNewButton : GotosNewButton)->accessibleName(), round.Session(),
           (round.Session()->*create)(preset->PK, position, name));
}

void ZorvicView::OnGotoChanged(QTreeWidgetItem* item, int column) {
    if (column == GotosColumnTypeToIndex(GotosColumn::NAME)) RenameMark(item, false);
}

void ZorvicView::OnCountdownChanged(QTreeWidgetItem* item, int column) {
    if (column == CountdownsColumnTypeToIndex(CountdownsColumn::NAME)) RenameMark(item, true);
}

void ZorvicView::RenameMark(QTreeWidgetItem* item, bool countdown) {
    const auto kind = countdown ? Kind::Countdown : Kind::Goto;
    auto round = BeginRound();
    const auto* const preset = round.Current();
    if (!preset || preset->PK != Marks->PK()) return;
    const auto operations = OperationsOf(kind);
    const auto& marks = preset->*operations.Of;
    const auto mark = marks.find(MarkTables::IDOf(item, kind));
    if (mark == marks.end()) return;
    const auto name = Marks->NameOf(item, kind);
    const auto status = (round.Session()->*operations.Rename)(preset->PK, mark->second.TimeMS, name);
    Report(tr("Rename"), round.Session(), status);
    if (status != Zorvic::ZORVIC_STATUS_OK) Marks->SetName(item, kind, mark->second.Name);
}

void ZorvicView::OnDelGotoClicked() {
    DeleteMarks(false);
}

void ZorvicView::OnDelCountdownClicked() {
    DeleteMarks(true);
}

void ZorvicView::DeleteMarks(bool countdowns) {
    const auto kind = countdowns ? Kind::Countdown : Kind::Goto;
    auto round = BeginRound();
    const auto* const preset = round.Current();
    if (!preset || preset->PK != Marks->PK()) return;
    const auto operations = OperationsOf(kind);
    const auto& marks = preset->*operations.Of;
    for (const int id : Marks->SelectedIDs(kind)) {
        const auto mark = marks.find(id);
        if (mark == marks.end()) continue;
        Report((countdowns ? CDDeleteButton : GotosDeleteButton)->accessibleName(), round.Session(),
               (round.Session()->*operations.Delete)(preset->PK, mark->second.TimeMS));
    }
}

void ZorvicView::OnGotoTriggered(int pk, int timeMS) {
    auto round = BeginRound();
    if (round.Session()) Seek(round, pk, timeMS);
}
