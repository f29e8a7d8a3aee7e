#pragma once

#include "simulatorpane.h"
#include "simulatorpaneconfig.h"
#include "simulatorsizing.h"

#include <QGridLayout>
#include <QWidget>

#include <memory>
#include <vector>

class MetadataCache;

namespace Simulator {

/// A preset's canvases side by side, one pane each. The read-only one shows the preset that the unit plays (its
/// placement controls still work); the editable one stands in a PresetBuilder, which hears of every click on a pane.
/// GUI thread only.
class SimulatorWidget : public QWidget {
    Q_OBJECT

public:
    SimulatorWidget(QWidget* parent, MetadataCache& cache, bool readOnly);
    ~SimulatorWidget() override;

    /// Shows another preset, or none (null). With `owned` the widget takes over preset and state; without it both must
    /// live until the next call or the widget's end. Panes stay in place when only their content is refreshed, so that
    /// keyboard focus and an open box survive. May be called from a pane's own signal.
    /// False when the preset's canvases cannot be shown; the widget is empty then.
    bool SetPreset(Zorvic::Preset* preset, Zorvic::PresetState* state, bool owned);
    /// The panes' configurations in canvas order, newly allocated and owned by the caller.
    std::vector<SimulatorPaneConfig>* GetPaneConfigs() const;
    Zorvic::Preset* GetPreset() const { return CurPreset; }

signals:
    /// The operator changed a placement; GetPreset() holds the change.
    void SizingChanged();

private:
    bool BuildSimulatorPaneConfigs(bool readOnly, std::vector<SimulatorPaneConfig>& out);
    bool CanReusePanes(const Zorvic::Preset& shown, const std::vector<SimulatorPaneConfig>& configs) const;
    void ReplacePanes(const std::vector<SimulatorPaneConfig>& configs);
    void AddPane(const SimulatorPaneConfig& cfg);

    std::unique_ptr<QGridLayout> Grid;
    Zorvic::Preset* CurPreset = nullptr;
    Zorvic::PresetState* CurPresetState = nullptr;
    std::vector<SimulatorPaneWidget*> Children;
    MetadataCache& MDCache;
    const bool ReadOnly;
    bool OwnedPreset = false;
};

}  // namespace Simulator
