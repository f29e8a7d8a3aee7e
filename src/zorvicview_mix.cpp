#include "zorvicview.h"

#include "text/picturevalue.h"
#include "widgets/sliderthrottle.h"

#include <QScopedValueRollback>
#include <QSignalBlocker>
#include <QStringBuilder>

#include <cstdlib>

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
            texts << ZorvicView::tr("Player %1").arg((*range)[0]);
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

void ZorvicView::WireMix() {
    for (auto* meter : {LChannelVol, RChannelVol}) {
        meter->setMaximum(100);
    }
    for (auto* slider : {LChannel, RChannel}) {
        WireMixSlider(slider, [this, slider](int value) { OnVolSliderMoved(value, slider); });
    }
    WireVideoSlider(BrightnessSel, &Zorvic::PinnedAsset::Brightness);
    WireVideoSlider(ContrastSel, &Zorvic::PinnedAsset::Contrast);
    WireVideoSlider(SaturationSel, &Zorvic::PinnedAsset::Saturation);
    WireVideoSlider(HueSel, &Zorvic::PinnedAsset::Hue);
    connect(ActivePlayerSel, &QComboBox::currentTextChanged, this, &ZorvicView::OnActivePlayerChanged);
}

void ZorvicView::WireVideoSlider(QSlider* slider, float Zorvic::PinnedAsset::*member) {
    WireMixSlider(slider, [this, member](int value) { OnVideoSliderChanged(PictureValue(value), member); });
}

// The throttle hears of a release first, and sends the last value while the drag still counts.
void ZorvicView::WireMixSlider(QSlider* slider, const std::function<void(int)>& send) {
    auto* throttle = new SliderThrottle(slider);
    connect(throttle, &SliderThrottle::Changed, this, [this, slider, send](int value) {
        if (!DragIsOver(slider)) send(value);
    });
    connect(slider, &QSlider::sliderPressed, this, [this, slider] {
        HeldSlider = slider;
        HeldTarget = MixTarget(slider);
    });
    connect(slider, &QSlider::sliderReleased, this, &ZorvicView::OnMixSliderReleased);
}

/// What the slider sets now: the current preset, and one player of it when it adjusts the picture.
QString ZorvicView::MixTarget(const QSlider* slider) const {
    const bool isVolume = slider == LChannel || slider == RChannel;
    return QString::number(CurrentPK()) % QLatin1Char(' ') % (isVolume ? QString() : ActivePlayerSel->currentText());
}

/// True when the operator still holds the knob, but a refresh has moved on to another preset or player than it was
/// meant for.
bool ZorvicView::DragIsOver(const QSlider* slider) const {
    return slider == HeldSlider && !MixRefresh && HeldTarget != MixTarget(slider);
}

/// Refreshes have passed the held knob by: it shows the unit's value again.
void ZorvicView::OnMixSliderReleased() {
    HeldSlider = nullptr;
    if (const auto preset = GetSelectedPreset()) {
        UpdateVideoSliders(*preset);
        SetVolSliders(*preset);
    }
}

const Zorvic::Preset* ZorvicView::RefreshOf(const Zorvic::Preset& preset) const {
    return MixRefresh && MixRefresh->PK == preset.PK ? MixRefresh : nullptr;
}

void ZorvicView::SetVolSliders(const Zorvic::Preset& preset) {
    if (preset.Volume.size() < 2) return;
    const QScopedValueRollback<const Zorvic::Preset*> refresh(MixRefresh, &preset);
    SetUnlessHeld(LChannel, preset.Volume[0]);
    SetUnlessHeld(RChannel, preset.Volume[1]);
}

// What a refresh puts on a slider comes back here. It was not the operator: it must neither reach the bound channel nor
// undo what another console has set since.
void ZorvicView::OnVolSliderMoved(int value, QSlider* slider) {
    EditCurrentPreset([&](Zorvic::Session&, Zorvic::Preset& preset) {
        const bool both = !MixRefresh && BindAudioChannels->isChecked();
        for (const std::size_t channel : {std::size_t{0}, std::size_t{1}}) {
            if (!both && slider != (channel == 0 ? LChannel : RChannel)) continue;
            if (preset.Volume.size() <= channel) return false;
            const auto* source = RefreshOf(preset);
            const bool isStale = MixRefresh && (!source || source->Volume[channel] != preset.Volume[channel]);
            if (!isStale) {
                preset.Volume[channel] = static_cast<std::uint16_t>(value);
            }
        }
        return true;
    });
}

void ZorvicView::SetVideoSliderPlayers(const Zorvic::Preset& preset) {
    const QStringList players = PlayerTexts(preset);
    if (players == Items(*ActivePlayerSel)) return;  // an open list stays open
    const QString chosen = ActivePlayerSel->currentText();
    {
        const QSignalBlocker blocker(ActivePlayerSel);
        ActivePlayerSel->clear();
        ActivePlayerSel->addItems(players);
        if (players.contains(chosen)) {
            ActivePlayerSel->setCurrentText(chosen);
        }
    }
    if (ActivePlayerSel->currentText() != chosen) {
        OnActivePlayerChanged();
    }
}

void ZorvicView::OnActivePlayerChanged() {
    if (const auto preset = GetSelectedPreset()) {
        UpdateVideoSliders(*preset);
    }
}

/// The one asset on the canvas of the chosen player, inside `preset`; null when there is none or more than one.
Zorvic::PinnedAsset* ZorvicView::FindAdjustedAsset(const Zorvic::Preset& preset) const {
    const auto player = PlayerFromText(ActivePlayerSel->currentText());
    auto* canvas = player == Zorvic::ZORVIC_PLAYER_INVALID ? nullptr : preset.LookupCanvasByPlayer(player);
    return canvas && canvas->Assets.size() == 1 ? &canvas->Assets.front() : nullptr;
}

void ZorvicView::UpdateVideoSliders(const Zorvic::Preset& preset) {
    const auto* asset = FindAdjustedAsset(preset);
    if (!asset) return;
    const QScopedValueRollback<const Zorvic::Preset*> refresh(MixRefresh, &preset);
    SetUnlessHeld(BrightnessSel, PicturePosition(asset->Brightness));
    SetUnlessHeld(ContrastSel, PicturePosition(asset->Contrast));
    SetUnlessHeld(SaturationSel, PicturePosition(asset->Saturation));
    SetUnlessHeld(HueSel, PicturePosition(asset->Hue));
}

void ZorvicView::OnVideoSliderChanged(float value, float Zorvic::PinnedAsset::*member) {
    EditCurrentPreset([&](Zorvic::Session&, Zorvic::Preset& preset) {
        auto* asset = FindAdjustedAsset(preset);
        if (!asset) return false;
        const auto* source = RefreshOf(preset);
        const auto* shown = source ? FindAdjustedAsset(*source) : nullptr;
        if (!MixRefresh || (shown && shown->*member == asset->*member)) {
            asset->*member = value;
        }
        return true;
    });
}
