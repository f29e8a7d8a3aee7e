#pragma once

#include "simulatorpaneconfig.h"
#include "simulatorsizing.h"
#include "ui_simulatorpane.h"

#include <zorvic/layout.h>

#include <QWidget>

#include <cstdint>
#include <optional>
#include <string>

class MetadataCache;

namespace Simulator {

/// Prefix of the output's number on player panels; to be translated where it is shown.
extern const char* const PLAYERLABELTEXT;

/// "Output 1", "Outputs 2-3"; empty without players.
QString OutputsText(Zorvic::Player players);

/// One canvas, scaled down, with the controls that place its asset. Edits the preset's own canvas in place; who hosts
/// the pane sends the preset on. GUI thread only.
class SimulatorPaneWidget : public QWidget, public Ui::SimulatorPaneWidgetUI {
    Q_OBJECT

public:
    SimulatorPaneWidget(const SimulatorPaneConfig& cfg, MetadataCache& cache);
    ~SimulatorPaneWidget() override;

    /// Shows another state of the canvas. Nothing is placed anew and no signal is emitted.
    void SetConfig(const SimulatorPaneConfig& cfg);
    /// The same, for a preset that just came from the unit: controls about which nothing is known are clear then.
    void Refresh(const SimulatorPaneConfig& cfg);
    const SimulatorPaneConfig& GetCfg() const { return CurCfg; }
    /// What the host has to say about the canvas, in words below it; empty for nothing.
    void SetRemark(const QString& remark);
    /// Forgets the preset, which is about to go: from now on every control is without effect.
    void Detach();

    SimButtonStates GetButtonStates() const;
    /// Only shows the states: the sizing box stays silent, so that nothing is placed.
    void LoadButtonStates(const SimButtonStates& states);
    /// Shows the states that would give the asset its present coordinates; leaves the controls as they are when there
    /// is no asset, no metadata or no such placement.
    void LoadButtonStatesFromPreset();
    /// Places the asset on the preset's canvas, in place of what was there. An unknown combination, missing metadata or
    /// an asset that the library cannot place leave the canvas as it is.
    void ApplySizingFromButtonStates(const SimButtonStates& states, const std::string& assetPath);

signals:
    /// Any mouse button was pressed on the pane outside its controls.
    void Clicked(Simulator::SimulatorPaneWidget* pane);
    /// The operator placed or cleared the asset; the preset is already changed.
    void SizingChanged(Simulator::SimulatorPaneWidget* pane);

protected:
    void mousePressEvent(QMouseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    /// A placement that was looked up once, found or not, so that a refresh without a change asks the unit nothing.
    struct KnownPlacement {
        std::string Path;
        Zorvic::Cube Coords;
        Zorvic::Size2D CanvasSize;
        std::uint64_t Revision = 0;             ///< of the asset
        bool HasPicture = true;                 ///< false: it only sounds
        std::optional<SimButtonStates> States;  ///< none: nothing that the controls can show
    };

    void WireControls();
    void Show(const SimulatorPaneConfig& cfg, const std::optional<SimButtonStates>& otherwise);
    void ShowTexts();
    void FitLabels();
    void ShowPlayState(bool playing);
    void ShowNotes();
    void KeepPicture(Zorvic::PinnedAsset& placed) const;
    bool KnowsPlacement() const;
    std::optional<SimButtonStates> InferButtonStates();
    std::optional<SimButtonStates> FindStates(const Zorvic::Size2D& assetSize) const;
    void OnArrowClicked(QPushButton* button);
    void OnSizingModeChanged();
    void OnClearClicked();

    SimulatorPaneConfig CurCfg;
    MetadataCache& MDCache;
    std::optional<KnownPlacement> Known;
    QString Remark;
};

}  // namespace Simulator
