#include "simulator.h"

#include "log.h"
#include "presetbuilder.h"

#include <algorithm>

namespace Simulator {

namespace {

/// True when the outputs suit the orientation; says what is wrong otherwise.
bool CanShow(const Zorvic::ProjectorCanvasConfig& cfg) {
    const Zorvic::CanvasOrientationEnum orientation = cfg.Orientation;
    switch (orientation) {
        case Zorvic::CanvasOrientationEnum::Single:
            if (cfg.NumOutputs == 1) return true;
            ZORVIC_LOG_ERROR << "Output count " << cfg.NumOutputs << " on a \"Single\" layout!";
            return false;
        case Zorvic::CanvasOrientationEnum::Landscape:
            if (cfg.NumOutputs >= 2) return true;
            ZORVIC_LOG_ERROR << "Less than 2 outputs for a Landscape layout! Output count: " << cfg.NumOutputs;
            return false;
        default:
            ZORVIC_LOG_WARNING << "Unsupported orientation with integer code " << static_cast<int>(orientation);
            return false;
    }
}

/// True when both look the same to the operator and the controls act on the same asset.
bool SameShape(const SimulatorPaneConfig& one, const SimulatorPaneConfig& other) {
    const auto path = [](const SimulatorPaneConfig& cfg) {
        return cfg.HasAsset() ? cfg.Canvas->Assets.front().FullPath : std::string();
    };
    return one.ScaledSize == other.ScaledSize && one.Players == other.Players && path(one) == path(other);
}

}  // namespace

SimulatorWidget::SimulatorWidget(QWidget* parent, MetadataCache& cache, bool readOnly)
    : QWidget(parent), MDCache(cache), ReadOnly(readOnly) {}

SimulatorWidget::~SimulatorWidget() {
    if (!OwnedPreset) return;
    delete CurPreset;
    delete CurPresetState;
}

bool SimulatorWidget::SetPreset(Zorvic::Preset* preset, Zorvic::PresetState* state, bool owned) {
    // What is owned lives until no pane points into it any more; what is not owned may be gone already.
    const std::unique_ptr<Zorvic::Preset> oldPreset(OwnedPreset && CurPreset != preset ? CurPreset : nullptr);
    const std::unique_ptr<Zorvic::PresetState> oldState(OwnedPreset && CurPresetState != state ? CurPresetState
                                                                                               : nullptr);
    CurPreset = preset;
    CurPresetState = state;
    OwnedPreset = owned;

    std::vector<SimulatorPaneConfig> configs;
    const bool built = !preset || BuildSimulatorPaneConfigs(ReadOnly, configs);
    if (oldPreset && CanReusePanes(*oldPreset, configs)) {
        for (std::size_t i = 0; i < configs.size(); ++i)
            Children[i]->Refresh(configs[i]);
    } else {
        ReplacePanes(configs);
    }
    if (!preset) {
        ZORVIC_LOG_DEBUG << "Called with no preset";
    } else if (!built) {
        ZORVIC_LOG_WARNING << "Failed to build pane configs";
    } else {
        ZORVIC_LOG_DEBUG << "Success";
    }
    return built;
}

std::vector<SimulatorPaneConfig>* SimulatorWidget::GetPaneConfigs() const {
    auto configs = std::make_unique<std::vector<SimulatorPaneConfig>>();
    for (const SimulatorPaneWidget* const pane : Children)
        configs->push_back(pane->GetCfg());
    return configs.release();
}

bool SimulatorWidget::BuildSimulatorPaneConfigs(bool readOnly, std::vector<SimulatorPaneConfig>& out) {
    std::vector<SimulatorPaneConfig> configs;
    for (std::size_t i = 0; i < CurPreset->Canvases.size(); ++i) {
        Zorvic::CanvasInfo& canvas = CurPreset->Canvases[i];
        if (canvas.Assets.size() > 1) {
            ZORVIC_LOG_WARNING << "Canvas " << i << " contains multiple assets, unsupported. Bailing out.";
            return true;
        }
        if (canvas.Index != i) {
            ZORVIC_LOG_ERROR << "Improperly sorted canvases, Canvas.Index of " << canvas.Index
                             << " does not match the array index of " << i << '!';
            return false;
        }
        SimulatorPaneConfig cfg;
        cfg.Canvas = &canvas;
        cfg.ScaledSize = SimulatorPaneConfig::CalcWidget2D(canvas.CanvasCfg.Dimensions, readOnly);
        cfg.CurPreset = CurPreset;
        cfg.CurPresetState = CurPresetState;
        cfg.Players = CurPreset->GetPlayersForCanvas(canvas.Index);
        cfg.ReadOnly = readOnly;
        if (!CanShow(canvas.CanvasCfg)) return false;
        configs.push_back(cfg);
    }
    out = std::move(configs);
    ZORVIC_LOG_DEBUG << "Success";
    return true;
}

bool SimulatorWidget::CanReusePanes(const Zorvic::Preset& shown,
                                    const std::vector<SimulatorPaneConfig>& configs) const {
    // A box that is open, or a button held down, must never act on another preset than the one it was pressed for.
    return ReadOnly && CurPreset && CurPreset->PK == shown.PK &&
           std::equal(Children.begin(), Children.end(), configs.begin(), configs.end(),
                      [](const SimulatorPaneWidget* pane, const SimulatorPaneConfig& cfg) {
                          return SameShape(pane->GetCfg(), cfg);
                      });
}

void SimulatorWidget::ReplacePanes(const std::vector<SimulatorPaneConfig>& configs) {
    for (SimulatorPaneWidget* const pane : Children) {
        // The call may come from one of the pane's own signals: it goes when the event is through, and until then
        // it knows no preset, so that nothing it still hears has an effect.
        pane->Detach();
        pane->hide();
        pane->setParent(nullptr);
        pane->deleteLater();
    }
    Children.clear();
    Grid.reset();  // a widget takes a layout only when it has none
    Grid = std::make_unique<QGridLayout>();
    Grid->setSizeConstraint(QLayout::SetMaximumSize);
    Grid->setContentsMargins(0, 0, 0, 0);
    setLayout(Grid.get());
    for (const SimulatorPaneConfig& cfg : configs)
        AddPane(cfg);
    Grid->setColumnStretch(static_cast<int>(configs.size()), 1);
}

void SimulatorWidget::AddPane(const SimulatorPaneConfig& cfg) {
    auto* const pane = new SimulatorPaneWidget(cfg, MDCache);
    auto* const builder = qobject_cast<PresetBuilder*>(window());
    if (!ReadOnly && builder) connect(pane, &SimulatorPaneWidget::Clicked, builder, &PresetBuilder::OnPaneClicked);
    connect(pane, &SimulatorPaneWidget::SizingChanged, this, &SimulatorWidget::SizingChanged);
    Grid->addWidget(pane, 0, static_cast<int>(cfg.Canvas->Index), Qt::AlignLeft);
    pane->show();  // at once: the layout would do it after the next frame
    Children.push_back(pane);
}

}  // namespace Simulator
