#include "zorvicview.h"

#include "playheadwidget.h"
#include "text/timetext.h"
#include "view/timecodes.h"

#include <stdexcept>
#include <string>

void ZorvicView::WireTransport() {
    connect(ScrubBar, &PlayHeadWidget::ScrubBarMoved, this, &ZorvicView::OnScrubMoved);
    connect(ScrubBar, &PlayHeadWidget::TrimStartMoved, this, &ZorvicView::OnTrimStartMoved);
    connect(ScrubBar, &PlayHeadWidget::TrimEndMoved, this, &ZorvicView::OnTrimEndMoved);
    connect(ScrubBar, &PlayHeadWidget::SeekLeft, this, [this] { OnSeekKey(false); });
    connect(ScrubBar, &PlayHeadWidget::SeekRight, this, [this] { OnSeekKey(true); });
    connect(ScrubBar, &PlayHeadWidget::ResetTrim, this, &ZorvicView::OnResetTrimClicked);
    connect(SeekBox, &QLineEdit::editingFinished, this, &ZorvicView::OnSeekEditingFinished);
    connect(TakeButton, &QPushButton::clicked, this, &ZorvicView::OnTakePressed);
    connect(EndButton, &QPushButton::clicked, this, &ZorvicView::OnEndPressed);
    connect(PauseButton, &QPushButton::clicked, this, &ZorvicView::OnPausePressed);
    connect(Goto30Button, &QPushButton::clicked, this, &ZorvicView::OnGoto30Pressed);
    connect(Goto10Button, &QPushButton::clicked, this, &ZorvicView::OnGoto10Pressed);
    connect(ResetTrimButton, &QPushButton::clicked, this, &ZorvicView::OnResetTrimClicked);
    connect(InPointButton, &QPushButton::clicked, this, &ZorvicView::OnSetInPointClicked);
    connect(OutPointButton, &QPushButton::clicked, this, &ZorvicView::OnSetOutPointClicked);
}

void ZorvicView::CommandSelection(const QString& what, PresetCommand command) {
    auto round = BeginRound();
    for (const int key : round.SelectedKeys())
        Report(what, round.Session(), (round.Session()->*command)(key));
}

void ZorvicView::OnTakePressed() {
    CommandSelection(TakeButton->text(), &Zorvic::Session::Take);
}

void ZorvicView::OnPausePressed() {
    CommandSelection(PauseButton->text(), &Zorvic::Session::Pause);
}

void ZorvicView::OnEndPressed() {
    CommandSelection(EndButton->text(), &Zorvic::Session::End);
}

void ZorvicView::OnEnterKeyPressed() {
    if (SeekBox->hasFocus()) {
        OnDirectSeek();
        Clock->UseTyped();
        return;
    }
    auto round = BeginRound();
    for (const int key : round.SelectedKeys()) {
        if (round.FindState(key)->IsPlaying) {
            Report(PauseButton->text(), round.Session(), round.Session()->Pause(key));
        } else {
            Report(TakeButton->text(), round.Session(), round.Session()->Take(key));
        }
    }
}

// An operator who has typed a time and thinks better of it must not end the show with the key that takes it back.
void ZorvicView::OnEscapePressed() {
    if (!Clock->TakeBackTyped()) OnEndPressed();
}

void ZorvicView::Seek(Round& round, int pk, int remainingMS) const {
    Report(tr("Seek"), round.Session(), round.Session()->SeekTo(pk, static_cast<std::uint32_t>(remainingMS)));
}

/// The play head jumps at once, without waiting for the next timecode.
void ZorvicView::GotoBeforeOut(int beforeOutMS, SeekTarget target) {
    auto round = BeginRound();
    for (const int key : round.SelectedKeys()) {
        if (const auto* const preset = round.FindPreset(key)) {
            Seek(round, key, target(*preset, *round.FindState(key)));
        }
    }
    const auto* const current = round.Current();
    if (!current) return;
    const auto* const state = round.CurrentState();
    if (!state) throw std::out_of_range("no state of preset " + std::to_string(current->PK));
    ScrubBar->SetBaseTimes(state->TRT, WrapAdd(current->OutPosition, beforeOutMS));
}

// The target differs from that of the 10-second button, and from what the bar shows until the next timecode. Operators
// know both buttons as they are.
void ZorvicView::OnGoto30Pressed() {
    GotoBeforeOut(30000, [](const Zorvic::Preset& preset, const Zorvic::PresetState& state) {
        return WrapAdd(WrapSubtract(state.TRT, preset.OutPosition), 30000);
    });
}

void ZorvicView::OnGoto10Pressed() {
    GotoBeforeOut(10000, [](const Zorvic::Preset& preset, const Zorvic::PresetState&) {
        return WrapAdd(preset.OutPosition, 10000);
    });
}

QTime ZorvicView::GetSeekBoxTime() const {
    return ParseSeekTime(SeekBox->text().toStdString());
}

/// Leaving the box finishes editing too, but only a typed Return means to seek.
void ZorvicView::OnSeekEditingFinished() {
    if (!Clock->IsBeingLeft()) OnDirectSeek();
}

void ZorvicView::OnDirectSeek() {
    // A console elsewhere may have put another preset under the hand that types.
    if (!SeekBox->hasFocus() || Clock->HasLostTyped()) return;
    const int timeMS = GetSeekBoxTime().msecsSinceStartOfDay();
    auto round = BeginRound();
    if (const auto* const preset = round.Current()) {
        Seek(round, preset->PK, WrapAdd(timeMS, preset->OutPosition));
    }
}

void ZorvicView::OnSeekKey(bool back) {
    auto round = BeginRound();
    const auto* const state = round.CurrentState();
    if (!state) return;
    const int target = WrapAdd(ScrubBar->GetHead(), back ? -PlayHeadWidget::StepMS : PlayHeadWidget::StepMS);
    ScrubBar->SetBaseTimes(state->TRT, target);
    Seek(round, state->PK, target);
    if (!state->IsPaused) return;
    // A paused preset sends no timecodes.
    if (auto timeCode = round.FindTimeCode(state->PK)) {
        timeCode->Time = target;
        ShowTimeCodes(round, {{state->PK, *timeCode}});
    }
}

void ZorvicView::OnSetInPointClicked() {
    EditCurrent(InPointButton->text(), [this](Zorvic::Preset& preset) {
        preset.InPosition = ScrubBar->GetHead();
        return true;
    });
}

void ZorvicView::OnSetOutPointClicked() {
    OnTrimEndMoved(ScrubBar->GetHead());
}

void ZorvicView::OnResetTrimClicked() {
    auto round = BeginRound();
    const auto* const state = round.CurrentState();
    if (!state) return;
    const auto status = round.EditCurrent([state](Zorvic::Preset& preset) {
        preset.InPosition = state->TRT;
        preset.OutPosition = 0;
        return true;
    });
    Report(ResetTrimButton->text(), round.Session(), status);
}

void ZorvicView::OnScrubMoved(int remaining) {
    auto round = BeginRound();
    if (const auto* const state = round.CurrentState()) {
        Seek(round, state->PK, remaining);
    }
}

void ZorvicView::OnTrimStartMoved(int remaining) {
    auto round = BeginRound();
    if (!round.CurrentState()) return;
    const auto status = round.EditCurrent([remaining](Zorvic::Preset& preset) {
        preset.InPosition = remaining;
        return true;
    });
    Report(InPointButton->text(), round.Session(), status);
}

void ZorvicView::OnTrimEndMoved(int remaining) {
    EditCurrent(OutPointButton->text(), [remaining](Zorvic::Preset& preset) {
        preset.OutPosition = remaining;
        return true;
    });
}
