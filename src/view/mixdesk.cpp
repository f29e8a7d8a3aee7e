#include "view/mixdesk.h"

#include "text/picturevalue.h"
#include "widgets/sliderthrottle.h"

#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QScopedValueRollback>
#include <QSignalBlocker>
#include <QSlider>
#include <QStringBuilder>

#include <cstdlib>
#include <memory>

namespace {

/// The item "Player 2" as its flag; INVALID for anything else.
Zorvic::Player PlayerFromText(const QString& text) {
    constexpr int PrefixLength = 7;
    const int number = std::atoi(text.mid(PrefixLength).toStdString().c_str());  // NOLINT(cert-err34-c): 0 is refused
    return number >= 1 && number <= 31 ? static_cast<Zorvic::Player>(1U << (number - 1))
                                       : Zorvic::ZORVIC_PLAYER_INVALID;
}

QStringList PlayerTexts(const Zorvic::Preset& preset) {
    QStringList texts;
    for (std::uint32_t canvas = 0; canvas < preset.Canvases.size(); ++canvas) {
        const std::unique_ptr<std::array<std::uint32_t, 2>> range(preset.GetPlayerRangeForCanvas(canvas));
        if (range) {
            texts << QCoreApplication::translate("ZorvicView", "Player %1").arg((*range)[0]);
        }
    }
    return texts;
}

QStringList Items(const QComboBox& box) {
    QStringList texts;
    for (int i = 0; i < box.count(); ++i) {
        texts << box.itemText(i);
    }
    return texts;
}

/// A knob under the operator's mouse stays where it is.
void SetUnlessHeld(QSlider* slider, int value) {
    if (!slider->isSliderDown()) {
        slider->setValue(value);
    }
}

}  // namespace

MixDesk::MixDesk(const Widgets& widgets, const Callbacks& callbacks) : Ui(widgets), Call(callbacks) {
    WireVolume(Ui.Left);
    WireVolume(Ui.Right);
    WirePicture(Ui.Brightness, &Zorvic::PinnedAsset::Brightness);
    WirePicture(Ui.Contrast, &Zorvic::PinnedAsset::Contrast);
    WirePicture(Ui.Saturation, &Zorvic::PinnedAsset::Saturation);
    WirePicture(Ui.Hue, &Zorvic::PinnedAsset::Hue);
    connect(Ui.Player, &QComboBox::currentTextChanged, this, [this] { Call.Refresh(); });
}

void MixDesk::WireVolume(QSlider* slider) {
    Wire(slider, [this, slider](int value) { Call.SetVolume(value, slider); });
}

void MixDesk::WirePicture(QSlider* slider, Member member) {
    Wire(slider, [this, member](int value) { Call.SetPicture(PictureValue(value), member); });
}

// The throttle hears of a release first, and sends the last value while the drag still counts.
void MixDesk::Wire(QSlider* slider, const std::function<void(int)>& send) {
    auto* throttle = new SliderThrottle(slider);
    connect(throttle, &SliderThrottle::Changed, this, [this, slider, send](int value) {
        if (!DragIsOver(slider)) send(value);
    });
    connect(slider, &QSlider::sliderPressed, this, [this, slider] {
        Held = slider;
        HeldTarget = Target(slider);
    });
    // Refreshes have passed the held knob by: it shows the unit's value again.
    connect(slider, &QSlider::sliderReleased, this, [this] {
        Held = nullptr;
        Call.Refresh();
    });
}

/// What the slider sets now: the current preset, and one player of it when it adjusts the picture.
QString MixDesk::Target(const QSlider* slider) const {
    const bool isVolume = slider == Ui.Left || slider == Ui.Right;
    return QString::number(Call.CurrentPK()) % QLatin1Char(' ') % (isVolume ? QString() : Ui.Player->currentText());
}

/// True when the operator still holds the knob, but a refresh has moved on to another preset or player than it was
/// meant for.
bool MixDesk::DragIsOver(const QSlider* slider) const {
    return slider == Held && !Refreshing && HeldTarget != Target(slider);
}

const Zorvic::Preset* MixDesk::RefreshOf(const Zorvic::Preset& preset) const {
    return Refreshing && Refreshing->PK == preset.PK ? Refreshing : nullptr;
}

void MixDesk::ShowVolumes(const Zorvic::Preset& preset) {
    Enable(true);
    if (preset.Volume.size() < 2) return;
    const QScopedValueRollback<const Zorvic::Preset*> refresh(Refreshing, &preset);
    SetUnlessHeld(Ui.Left, preset.Volume[0]);
    SetUnlessHeld(Ui.Right, preset.Volume[1]);
}

bool MixDesk::ApplyVolume(int value, const QSlider* slider, Zorvic::Preset& preset) const {
    const bool both = !Refreshing && Ui.Bind->isChecked();
    for (const std::size_t channel : {std::size_t{0}, std::size_t{1}}) {
        if (!both && slider != (channel == 0 ? Ui.Left : Ui.Right)) continue;
        if (preset.Volume.size() <= channel) return false;
        const auto* source = RefreshOf(preset);
        const bool isStale = Refreshing && (!source || source->Volume[channel] != preset.Volume[channel]);
        if (!isStale) preset.Volume[channel] = static_cast<std::uint16_t>(value);
    }
    return true;
}

void MixDesk::ShowPlayers(const Zorvic::Preset& preset) {
    const QStringList players = PlayerTexts(preset);
    if (players == Items(*Ui.Player)) return;  // an open list stays open
    const QString chosen = Ui.Player->currentText();
    {
        const QSignalBlocker blocker(Ui.Player);
        Ui.Player->clear();
        Ui.Player->addItems(players);
        if (players.contains(chosen)) Ui.Player->setCurrentText(chosen);
    }
    if (Ui.Player->currentText() != chosen) Call.Refresh();
}

void MixDesk::ShowNothing() {
    Enable(false);
    const QSignalBlocker blocker(Ui.Player);
    Ui.Player->clear();
}

void MixDesk::Enable(bool enable) const {
    for (QWidget* control : std::initializer_list<QWidget*>{Ui.Left, Ui.Right, Ui.Bind, Ui.Player, Ui.Brightness,
                                                            Ui.Contrast, Ui.Saturation, Ui.Hue})
        control->setEnabled(enable);
}

/// The one asset on the canvas of the chosen player, inside `preset`; null when there is none or more than one.
Zorvic::PinnedAsset* MixDesk::FindAdjustedAsset(const Zorvic::Preset& preset) const {
    const auto player = PlayerFromText(Ui.Player->currentText());
    auto* canvas = player == Zorvic::ZORVIC_PLAYER_INVALID ? nullptr : preset.LookupCanvasByPlayer(player);
    return canvas && canvas->Assets.size() == 1 ? &canvas->Assets.front() : nullptr;
}

void MixDesk::ShowPicture(const Zorvic::Preset& preset) {
    const auto* asset = FindAdjustedAsset(preset);
    if (!asset) return;
    const QScopedValueRollback<const Zorvic::Preset*> refresh(Refreshing, &preset);
    SetUnlessHeld(Ui.Brightness, PicturePosition(asset->Brightness));
    SetUnlessHeld(Ui.Contrast, PicturePosition(asset->Contrast));
    SetUnlessHeld(Ui.Saturation, PicturePosition(asset->Saturation));
    SetUnlessHeld(Ui.Hue, PicturePosition(asset->Hue));
}

bool MixDesk::ApplyPicture(float value, Member member, Zorvic::Preset& preset) const {
    auto* asset = FindAdjustedAsset(preset);
    if (!asset) return false;
    const auto* source = RefreshOf(preset);
    const auto* shown = source ? FindAdjustedAsset(*source) : nullptr;
    if (!Refreshing || (shown && shown->*member == asset->*member)) asset->*member = value;
    return true;
}
