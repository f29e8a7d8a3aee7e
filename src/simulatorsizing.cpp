#include "simulatorsizing.h"

namespace Simulator {

namespace {

SizingMaps BuildSizingMaps() {
    SizingMaps maps;
    maps.AlignmentToButtons = {
        {Zorvic::ZORVIC_ECALIGN_CENTERED, {}},
        {Zorvic::ZORVIC_ECALIGN_CENTERLEFT, {.Left = true}},
        {Zorvic::ZORVIC_ECALIGN_CENTERRIGHT, {.Right = true}},
        {Zorvic::ZORVIC_ECALIGN_BOTTOMCENTER, {.Down = true}},
        {Zorvic::ZORVIC_ECALIGN_TOPCENTER, {.Up = true}},
        {Zorvic::ZORVIC_ECALIGN_TOPLEFT, {.Up = true, .Left = true}},
        {Zorvic::ZORVIC_ECALIGN_TOPRIGHT, {.Up = true, .Right = true}},
        {Zorvic::ZORVIC_ECALIGN_BOTTOMLEFT, {.Down = true, .Left = true}},
        {Zorvic::ZORVIC_ECALIGN_BOTTOMRIGHT, {.Down = true, .Right = true}},
        {Zorvic::ZORVIC_ECALIGN_SCALED_CENTERED, {.SizerBox = 1}},
        {Zorvic::ZORVIC_ECALIGN_SCALED_TOP, {.SizerBox = 1, .Up = true}},
        {Zorvic::ZORVIC_ECALIGN_SCALED_BOTTOM, {.SizerBox = 1, .Down = true}},
        {Zorvic::ZORVIC_ECALIGN_SCALED_LEFT, {.SizerBox = 1, .Left = true}},
        {Zorvic::ZORVIC_ECALIGN_SCALED_RIGHT, {.SizerBox = 1, .Right = true}},
        {Zorvic::ZORVIC_ECALIGN_STRETCHED, {.SizerBox = 2}},
    };
    for (const auto& [alignment, states] : maps.AlignmentToButtons)
        maps.ButtonsToAlignment.emplace(states, alignment);
    return maps;
}

}  // namespace

std::uint64_t PackButtonStates(const SimButtonStates& states) {
    std::uint64_t packed = states.SizerBox;
    for (const bool arrow : {states.Up, states.Down, states.Left, states.Right})
        packed = (packed << 1U) | (arrow ? 1U : 0U);
    return packed;
}

const SizingMaps& GetSizingMaps() {
    static const SizingMaps maps = BuildSizingMaps();
    return maps;
}

}  // namespace Simulator
