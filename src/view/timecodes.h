#pragma once

#include <zorvic/types.h>

#include <QObject>
#include <QString>

#include <optional>
#include <vector>

class PlayHeadWidget;
class QLabel;
class QLineEdit;
class QProgressBar;

/// Where the unit's selected preset stands: the seek field, the scrub bar, the lengths beside it and the level meters.
class Timecodes : public QObject {
    Q_OBJECT

public:
    struct Widgets {
        QLabel* StatusIcon;
        QLabel* State;
        QLineEdit* SeekBox;
        QLabel* Length;
        QLabel* TRT;
        PlayHeadWidget* Bar;
        QProgressBar* LeftMeter;
        QProgressBar* RightMeter;
    };

    explicit Timecodes(const Widgets& widgets);

    /// What does not run: lengths and icon, and the position of a preset that stands somewhere. One that plays and has
    /// no position yet keeps the one shown.
    void ShowPreset(const Zorvic::Preset& preset, const Zorvic::PresetState& state,
                    const std::optional<Zorvic::TimeCode>& timeCode);
    void ShowTimeCode(const Zorvic::Preset& preset, const Zorvic::PresetState& state, const Zorvic::TimeCode& timeCode);
    /// The lengths of a preset, and its position as far as it has one.
    void ShowTimes(const Zorvic::Preset& preset, const Zorvic::PresetState& state,
                   const std::optional<Zorvic::TimeCode>& timeCode);
    /// There is no preset.
    void ShowNothing();
    /// What is shown may be true no more.
    void ShowStale();

    bool IsCued() const { return Cued; }
    /// What was typed has been used.
    void UseTyped();
    /// Takes back what the operator has typed; false when he has not.
    bool TakeBackTyped();
    /// What he has typed was for a preset that is not shown any more, and he has typed nothing since.
    bool HasLostTyped() const { return LostTyped; }
    /// True while the field is being left: editing ends then too, but only a typed Return means to seek.
    bool IsBeingLeft() const { return BeingLeft; }

    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void TakeOver(int pk);
    void SetCued(bool cued);
    void ShowSeekTime(int remainingMS);
    void ShowSeek(const QString& text, const QString& style);
    void ShowSeekText();
    void ShowLevels(const std::vector<int>& levels);

    Widgets Ui;
    /// What the seek field shows as soon as the operator does not edit it.
    QString SeekText = QStringLiteral("");
    QString SeekStyle;
    bool BeingLeft = false;
    bool LostTyped = false;
    int ShownPK = 0;
    bool Cued = false;
    QString StateWord;
};
