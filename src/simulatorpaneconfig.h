#pragma once

#include <cstdint>

#include <zorvic/types.h>

namespace Simulator {

/// What one pane shows. The pointers lead into the preset being shown and are owned by whoever owns that preset.
struct SimulatorPaneConfig {
    static constexpr std::uint32_t DefaultSize = 128;
    static constexpr std::uint32_t DefaultROSize = 128;
    static constexpr std::uint32_t SmallROSize = 72;
    static constexpr std::uint32_t PreferredScreenWidth = 1920;
    static constexpr std::uint32_t PreferredScreenHeight = 1080;
    static constexpr std::int32_t MaxHDVideoWidth = 1920;
    static constexpr std::int32_t MinHDVideoWidth = 1280;

    Zorvic::CanvasInfo* Canvas = nullptr;
    Zorvic::Size2D ScaledSize;  ///< size on screen in pixels
    Zorvic::Preset* CurPreset = nullptr;
    Zorvic::PresetState* CurPresetState = nullptr;  ///< may be null
    Zorvic::Player Players = Zorvic::ZORVIC_PLAYER_INVALID;
    bool ReadOnly = false;

    /// Panes of larger canvases are drawn larger: 0.75 up to 1280 pixels of width, 1.0 up to 1920, 1.25 above.
    static double GetSizeMultiplier(const Zorvic::Size2D& size);
    /// Size on screen of the pane for a canvas of the given size in pixels.
    static Zorvic::Size2D CalcWidget2D(const Zorvic::Size2D& size, bool readOnly);
    /// Base height of read-only panes: smaller where the primary screen is below 1920x1080.
    static std::uint32_t CalcROBaseSize();

    /// True when there is a canvas with an asset on it, that is, something to place.
    bool HasAsset() const { return Canvas && !Canvas->Assets.empty(); }
};

}  // namespace Simulator
