#include "view/timecodes.h"

#include "playheadwidget.h"
#include "qtversions.h"
#include "text/timetext.h"

#include <QApplication>
#include <QFocusEvent>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>

#include <algorithm>
#include <utility>

namespace {

QIcon StatusIcon(const Zorvic::PresetState& state) {
    return QIcon(!state.IsPlaying ? QStringLiteral(":icons/stopped.png")
                 : state.IsPaused ? QStringLiteral(":icons/paused.png")
                                  : QStringLiteral(":icons/playing.png"));
}

}  // namespace

Timecodes::Timecodes(const Widgets& widgets) : Ui(widgets) {
    for (auto* meter : {Ui.LeftMeter, Ui.RightMeter})
        meter->setMaximum(100);
    Ui.SeekBox->installEventFilter(this);
    connect(Ui.SeekBox, &QLineEdit::textEdited, this, [this] { LostTyped = false; });
}

void Timecodes::ShowPreset(const Zorvic::Preset& preset, const Zorvic::PresetState& state,
                           const std::optional<Zorvic::TimeCode>& timeCode) {
    Ui.StatusIcon->setPixmap(PixmapFor(*Ui.StatusIcon, StatusIcon(state), {44, 44}));
    StateWord = !state.IsPlaying ? tr("Stopped") : state.IsPaused ? tr("Paused") : tr("Playing");
    Ui.StatusIcon->setAccessibleName(StateWord);
    Ui.TRT->setText(ClockText(state.TRT));
    ShowTimes(preset, state, timeCode);
}

void Timecodes::ShowTimes(const Zorvic::Preset& preset, const Zorvic::PresetState& state,
                          const std::optional<Zorvic::TimeCode>& timeCode) {
    TakeOver(preset.PK);
    const int length = TrimmedLength(preset, state);
    Ui.Length->setText(ClockText(length));
    SetCued(false);
    if (timeCode) {
        ShowTimeCode(preset, state, *timeCode);
        if (!state.IsPlaying || state.IsPaused) ShowLevels({0, 0});
        return;
    }
    if (!state.IsPlaying) {
        ShowSeekTime(length);
        ShowLevels({0, 0});
        // The raw in point: without one, head and trim stand at the end of the bar until the next timecode.
        if (!Ui.Bar->isSliderDown()) Ui.Bar->SetBaseTimes(state.TRT, preset.InPosition);
        Ui.Bar->SetTrim(preset.InPosition, preset.OutPosition);
    }
    Ui.Bar->SetShowPlayHead(state.IsPlaying);
}

void Timecodes::ShowTimeCode(const Zorvic::Preset& preset, const Zorvic::PresetState& state,
                             const Zorvic::TimeCode& timeCode) {
    SetCued(!state.IsPlaying);
    ShowSeekTime(WrapSubtract(timeCode.Time, preset.OutPosition));
    Ui.Bar->SetTRT(state.TRT);
    Ui.Bar->SetTrim(StartPosition(preset, state), preset.OutPosition);
    if (!Ui.Bar->isSliderDown()) {
        Ui.Bar->SetShowPlayHead(true);
        Ui.Bar->SetBaseTimes(state.TRT, timeCode.Time);
    }
    ShowLevels(timeCode.VUData);
}

void Timecodes::ShowNothing() {
    TakeOver(0);
    Ui.StatusIcon->clear();
    Ui.StatusIcon->setAccessibleName({});
    StateWord.clear();
    for (auto* label : {Ui.Length, Ui.TRT})
        label->setText(ClockText(0));
    ShowSeek(ClockText(0), {});
    SetCued(false);
    Ui.Bar->SetShowPlayHead(false);
    Ui.Bar->SetBaseTimes(100, 100);
    Ui.Bar->SetTrim(100, 0);
    ShowLevels({0, 0});
}

void Timecodes::ShowStale() {
    const auto dim = QApplication::palette().color(QPalette::Disabled, QPalette::Text);
    SeekStyle = QStringLiteral("color: %1;").arg(dim.name());
    ShowSeekText();
    ShowLevels({0, 0});
}

void Timecodes::SetCued(bool cued) {
    Cued = cued;
    Ui.Bar->SetCued(cued);
    Ui.State->setText(cued ? tr("Cued") : StateWord);
}

/// A drag belongs to the preset that it began on, and so does a time that is being typed.
void Timecodes::TakeOver(int pk) {
    if (std::exchange(ShownPK, pk) == pk) return;
    Ui.Bar->EndDrag();
    LostTyped = LostTyped || (Ui.SeekBox->hasFocus() && Ui.SeekBox->isModified());
}

void Timecodes::ShowLevels(const std::vector<int>& levels) {
    if (levels.size() < 2) return;
    const auto show = [](QProgressBar* meter, int level) {
        // Out of range, a bar would keep its last level.
        meter->setValue(std::clamp(level, meter->minimum(), meter->maximum()));
    };
    show(Ui.LeftMeter, levels[0]);
    show(Ui.RightMeter, levels[1]);
}

void Timecodes::ShowSeekTime(int remainingMS) {
    ShowSeek(ClockText(remainingMS), QStringLiteral("color: %1;").arg(RemainingTimeColor(remainingMS)));
}

/// While the operator may be typing, the time waits.
void Timecodes::ShowSeek(const QString& text, const QString& style) {
    SeekText = text;
    SeekStyle = style;
    if (!Ui.SeekBox->hasFocus() || LostTyped) ShowSeekText();
}

void Timecodes::ShowSeekText() {
    // A style sheet polishes the widget anew, even an equal one.
    if (Ui.SeekBox->styleSheet() != SeekStyle) Ui.SeekBox->setStyleSheet(SeekStyle);
    if (Ui.SeekBox->text() != SeekText || Ui.SeekBox->isModified()) Ui.SeekBox->setText(SeekText);
}

void Timecodes::UseTyped() {
    Ui.SeekBox->setModified(false);
    Ui.Bar->setFocus();
}

bool Timecodes::TakeBackTyped() {
    if (!Ui.SeekBox->hasFocus() || !(Ui.SeekBox->isModified() || LostTyped)) return false;
    Ui.Bar->setFocus();
    return true;
}

/// What was typed and not used goes with the focus, unless a menu or another window has it only for a while.
bool Timecodes::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::FocusIn) BeingLeft = false;
    if (event->type() == QEvent::FocusOut) {
        BeingLeft = true;
        LostTyped = false;
        const auto reason = static_cast<QFocusEvent*>(event)->reason();
        const bool comesBack =
            reason == Qt::PopupFocusReason || reason == Qt::ActiveWindowFocusReason || reason == Qt::MenuBarFocusReason;
        if (!comesBack) ShowSeekText();
    }
    if (event->type() == QEvent::KeyPress) BeingLeft = false;
    return QObject::eventFilter(watched, event);
}
