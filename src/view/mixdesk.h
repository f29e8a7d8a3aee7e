#pragma once

#include <zorvic/types.h>

#include <QObject>
#include <QString>

#include <functional>

class QCheckBox;
class QComboBox;
class QSlider;

/// Volume and picture controls of the current preset.
///
/// What a refresh puts on a slider comes back as its change. That was not the operator: it must neither reach the bound
/// channel nor undo what another console has set since.
class MixDesk : public QObject {
    Q_OBJECT

public:
    using Member = float Zorvic::PinnedAsset::*;
    struct Widgets {
        QSlider* Left;
        QSlider* Right;
        QCheckBox* Bind;
        QComboBox* Player;
        QSlider* Brightness;
        QSlider* Contrast;
        QSlider* Saturation;
        QSlider* Hue;
    };
    struct Callbacks {
        std::function<int()> CurrentPK;
        /// The operator moved a slider; `value` as the slider or the picture has it.
        std::function<void(int value, QSlider* slider)> SetVolume;
        std::function<void(float value, Member member)> SetPicture;
        /// The controls show something else than the unit's values: another player was chosen, or a knob let go.
        std::function<void()> Refresh;
    };

    MixDesk(const Widgets& widgets, const Callbacks& callbacks);

    void ShowVolumes(const Zorvic::Preset& preset);
    void ShowPlayers(const Zorvic::Preset& preset);
    void ShowPicture(const Zorvic::Preset& preset);
    void ShowNothing();
    /// Both apply a slider's value to a preset just fetched; false when there is nothing to send.
    bool ApplyVolume(int value, const QSlider* slider, Zorvic::Preset& preset) const;
    bool ApplyPicture(float value, Member member, Zorvic::Preset& preset) const;

private:
    void Enable(bool enable) const;
    void WireVolume(QSlider* slider);
    void WirePicture(QSlider* slider, Member member);
    void Wire(QSlider* slider, const std::function<void(int)>& send);
    QString Target(const QSlider* slider) const;
    bool DragIsOver(const QSlider* slider) const;
    Zorvic::PinnedAsset* FindAdjustedAsset(const Zorvic::Preset& preset) const;
    /// The preset whose values a running refresh puts on the sliders, if it is `preset`; otherwise null.
    const Zorvic::Preset* RefreshOf(const Zorvic::Preset& preset) const;

    Widgets Ui;
    Callbacks Call;
    const Zorvic::Preset* Refreshing = nullptr;
    /// The slider whose knob the operator holds, and what it set when he took hold of it.
    const QSlider* Held = nullptr;
    QString HeldTarget;
};
