#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <unordered_map>
#include <utility>
#include <vector>

#include <zorvic/enums.h>

namespace Simulator {

/// What the placement controls of one pane show. A true arrow is pressed, which the form shows by disabling it.
struct SimButtonStates {
    std::uint32_t SizerBox = 0;  ///< index of the sizing-mode box: 0 native, 1 scale, 2 stretch
    bool Up = false;
    bool Down = false;
    bool Left = false;
    bool Right = false;
    bool operator==(const SimButtonStates&) const = default;
};

/// The five fields in one value, different for different states.
std::uint64_t PackButtonStates(const SimButtonStates& states);

}  // namespace Simulator

template <>
struct std::hash<Simulator::SimButtonStates> {
    std::size_t operator()(const Simulator::SimButtonStates& states) const noexcept {
        return std::hash<std::uint64_t>{}(Simulator::PackButtonStates(states));
    }
};

namespace Simulator {

struct SizingMaps {
    /// In the order in which placements are tried: where several give the same coordinates, the first is shown. So
    /// the centred ones come first: an asset that reaches from edge to edge shows no arrow that nobody pressed.
    std::vector<std::pair<Zorvic::EasyCanvasAlignment, SimButtonStates>> AlignmentToButtons;
    /// The inverse. A combination without an entry (a corner in scale mode, an arrow in stretch mode) means nothing.
    std::unordered_map<SimButtonStates, Zorvic::EasyCanvasAlignment> ButtonsToAlignment;
};

/// The one table of placements; built on first use, never changed. GUI thread only.
const SizingMaps& GetSizingMaps();

}  // namespace Simulator
