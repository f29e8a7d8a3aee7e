#include "zorvicview.h"

#include "playheadwidget.h"
#include "text/remainingtime.h"
#include "text/seektime.h"
#include "widgets/popupkeys.h"

#include <QShortcut>

void ZorvicView::WireTransport() {
    connect(ScrubBar, &PlayHeadWidget::ScrubBarMoved, this, &ZorvicView::OnScrubMoved);
    connect(ScrubBar, &PlayHeadWidget::TrimStartMoved, this, &ZorvicView::OnTrimStartMoved);
    connect(ScrubBar, &PlayHeadWidget::TrimEndMoved, this, &ZorvicView::OnTrimEndMoved);
    connect(ScrubBar, &PlayHeadWidget::SeekLeft, this, [this] { OnSeekKey(false); });
    connect(ScrubBar, &PlayHeadWidget::SeekRight, this, [this] { OnSeekKey(true); });
    connect(ScrubBar, &PlayHeadWidget::ResetTrim, this, &ZorvicView::OnResetTrimClicked);
    connect(SeekBox, &QLineEdit::editingFinished, this, &ZorvicView::OnDirectSeek);
    connect(TakeButton, &QPushButton::clicked, this, &ZorvicView::OnTakePressed);
    connect(EndButton, &QPushButton::clicked, this, &ZorvicView::OnEndPressed);
    connect(PauseButton, &QPushButton::clicked, this, &ZorvicView::OnPausePressed);
    connect(Goto30Button, &QPushButton::clicked, this, &ZorvicView::OnGoto30Pressed);
    connect(Goto10Button, &QPushButton::clicked, this, &ZorvicView::OnGoto10Pressed);
    connect(ResetTrimButton, &QPushButton::clicked, this, &ZorvicView::OnResetTrimClicked);
    connect(InPointButton, &QPushButton::clicked, this, &ZorvicView::OnSetInPointClicked);
    connect(OutPointButton, &QPushButton::clicked, this, &ZorvicView::OnSetOutPointClicked);
}

void ZorvicView::WireShortcuts() {
    const auto add = [this](Qt::Key key, void (ZorvicView::*slot)()) {
        auto* shortcut = new QShortcut(key, this);
        shortcut->setAutoRepeat(false);  // a key held too long must not toggle the show
        connect(shortcut, &QShortcut::activated, this, slot);
    };
    add(Qt::Key_Enter, &ZorvicView::OnEnterKeyPressed);
    add(Qt::Key_Return, &ZorvicView::OnEnterKeyPressed);
    add(Qt::Key_Escape, &ZorvicView::OnEscapePressed);
    KeepKeysInPopup(*ActivePlayerSel);
}

void ZorvicView::CommandSelection(Zorvic::StatusCode (Zorvic::Session::*command)(std::int32_t)) {
    const auto handle = LookupSession();
    if (!handle) return;
    for (const auto& preset : PresentSelection(handle->GetSession())) {
        (handle->GetSession()->*command)(preset.PK);
    }
}

void ZorvicView::OnTakePressed() {
    CommandSelection(&Zorvic::Session::Take);
}

void ZorvicView::OnPausePressed() {
    CommandSelection(&Zorvic::Session::Pause);
}

void ZorvicView::OnEndPressed() {
    CommandSelection(&Zorvic::Session::End);
}

void ZorvicView::OnEnterKeyPressed() {
    if (SeekBox->hasFocus()) {
        OnDirectSeek();
        SeekBox->setModified(false);
        ScrubBar->setFocus();
        return;
    }
    const auto handle = LookupSession();
    if (!handle) return;
    auto* session = handle->GetSession();
    for (const auto& preset : PresentSelection(session)) {
        const auto state = LookupPresetState(session, preset.PK);
        if (!state) continue;  // a preset that plays unseen must not start again
        if (state->IsPlaying) {
            session->Pause(preset.PK);
        } else {
            session->Take(preset.PK);
        }
    }
}

// An operator who has typed a time and thinks better of it must not end the show with the key that takes it back.
void ZorvicView::OnEscapePressed() {
    if (!SeekBox->hasFocus() || !SeekBox->isModified()) {
        OnEndPressed();
        return;
    }
    while (SeekBox->isUndoAvailable()) {
        SeekBox->undo();
    }
    SeekBox->setModified(false);
    ScrubBar->setFocus();
    if (!SeekText.isNull()) {
        SeekBox->setStyleSheet(SeekStyle);
        SeekBox->setText(SeekText);
    }
}

/// The play head jumps at once, without waiting for the next timecode.
void ZorvicView::GotoBeforeOut(int beforeOutMS, SeekTarget target) {
    const auto handle = LookupSession();
    if (!handle) return;
    auto* session = handle->GetSession();
    const auto states = GetPresetStates(session);
    for (const auto& preset : PresentSelection(session)) {
        session->SeekTo(preset.PK, target(preset, states.at(preset.PK)));
    }
    if (const auto current = GetSelectedPreset(session)) {
        ScrubBar->SetBaseTimes(states.at(current->PK).TRT, WrapAdd(current->OutPosition, beforeOutMS));
    }
}

// The target differs from that of the 10-second button, and from what the bar shows until the next timecode. Operators
// know both buttons as they are.
void ZorvicView::OnGoto30Pressed() {
    GotoBeforeOut(30000, [](const Zorvic::Preset& preset, const Zorvic::PresetState& state) {
        return static_cast<std::uint32_t>(WrapAdd(WrapSubtract(state.TRT, preset.OutPosition), 30000));
    });
}

void ZorvicView::OnGoto10Pressed() {
    GotoBeforeOut(10000, [](const Zorvic::Preset& preset, const Zorvic::PresetState&) {
        return static_cast<std::uint32_t>(WrapAdd(preset.OutPosition, 10000));
    });
}

QTime ZorvicView::GetSeekBoxTime() const {
    return ParseSeekTime(SeekBox->text().toStdString());
}

// Leaving the box finishes editing too, but only a typed Return means to seek.
void ZorvicView::OnDirectSeek() {
    if (!SeekBox->hasFocus()) return;
    const int timeMS = GetSeekBoxTime().msecsSinceStartOfDay();
    const auto handle = LookupSession();
    if (!handle) return;
    if (const auto preset = GetSelectedPreset(handle->GetSession())) {
        handle->GetSession()->SeekTo(preset->PK, static_cast<std::uint32_t>(WrapAdd(timeMS, preset->OutPosition)));
    }
}

void ZorvicView::OnSeekKey(bool back) {
    constexpr int StepMS = 50;
    const auto handle = LookupSession();
    if (!handle) return;
    auto* session = handle->GetSession();
    const auto preset = GetSelectedPreset(session);
    const auto state = preset ? LookupPresetState(session, preset->PK) : nullptr;
    if (!state) return;
    const int target = WrapAdd(ScrubBar->GetHead(), back ? -StepMS : StepMS);
    ScrubBar->SetBaseTimes(state->TRT, target);
    session->SeekTo(state->PK, static_cast<std::uint32_t>(target));
    if (!state->IsPaused) return;
    // A paused preset sends no timecodes.
    Zorvic::TimeCode timeCode;
    if (session->GetTimeCode(timeCode, state->PK) == Zorvic::ZORVIC_STATUS_OK) {
        timeCode.Time = target;
        AcceptTimeCodes({{state->PK, timeCode}});
    }
}

void ZorvicView::OnSetInPointClicked() {
    EditCurrentPreset([this](Zorvic::Session&, Zorvic::Preset& preset) {
        preset.InPosition = ScrubBar->GetHead();
        return true;
    });
}

void ZorvicView::OnSetOutPointClicked() {
    OnTrimEndMoved(ScrubBar->GetHead());
}

void ZorvicView::OnResetTrimClicked() {
    EditCurrentPreset([this](Zorvic::Session& session, Zorvic::Preset& preset) {
        const auto state = LookupPresetState(&session, preset.PK);
        if (!state) return false;
        preset.InPosition = state->TRT;
        preset.OutPosition = 0;
        return true;
    });
}

void ZorvicView::OnScrubMoved(int remaining) {
    const auto handle = LookupSession();
    if (!handle) return;
    if (const auto preset = GetSelectedPreset(handle->GetSession())) {
        handle->GetSession()->SeekTo(preset->PK, static_cast<std::uint32_t>(remaining));
    }
}

void ZorvicView::OnTrimStartMoved(int remaining) {
    EditCurrentPreset([this, remaining](Zorvic::Session& session, Zorvic::Preset& preset) {
        preset.InPosition = remaining;
        return LookupPresetState(&session, preset.PK) != nullptr;
    });
}

void ZorvicView::OnTrimEndMoved(int remaining) {
    EditCurrentPreset([remaining](Zorvic::Session&, Zorvic::Preset& preset) {
        preset.OutPosition = remaining;
        return true;
    });
}
