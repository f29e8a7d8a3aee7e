#include "words.h"

#include "clock_text.h"

#include <zorvic/tables.h>

#include <map>

namespace ZorvicCtl {
namespace {

template <class Value>
std::string Look(const std::map<Value, std::string>& words, Value value) {
    const auto found = words.find(value);
    return found == words.end() ? std::to_string(static_cast<int>(value)) : found->second;
}

}  // namespace

std::string RoleText(Zorvic::UnitRole role) {
    static const std::map<Zorvic::UnitRole, std::string> words = {{Zorvic::ZORVIC_ROLE_SINGLE, "Single"},
                                                                  {Zorvic::ZORVIC_ROLE_PRIMARY, "Primary"},
                                                                  {Zorvic::ZORVIC_ROLE_MIRROR, "Mirror"}};
    return Look(words, role);
}

std::string TypeText(Zorvic::UnitType type) {
    static const std::map<Zorvic::UnitType, std::string> words = {{Zorvic::ZORVIC_UTYPE_SERVER_T4X, "Server T4X"},
                                                                  {Zorvic::ZORVIC_UTYPE_SERVER_M20X, "Server M20X"},
                                                                  {Zorvic::ZORVIC_UTYPE_LUMEN, "Lumen"}};
    return Look(words, type);
}

std::string AssetStateText(Zorvic::AssetState state) {
    static const std::map<Zorvic::AssetState, std::string> words = {
        {Zorvic::ZORVIC_ASSETSTATE_READY, "Ready"},
        {Zorvic::ZORVIC_ASSETSTATE_INGESTING, "Ingesting"},
        {Zorvic::ZORVIC_ASSETSTATE_ERROR, "ERROR"},
        {Zorvic::ZORVIC_ASSETSTATE_PROCESSING, "Processing"}};
    return Look(words, state);
}

std::string RefreshText(Zorvic::RefreshMode refresh) {
    return Look(RefreshMap, refresh);
}

std::string ResolutionText(Zorvic::ResolutionMode mode) {
    return Look(ResolutionMap, mode);
}

std::string PlayText(const Zorvic::PresetState& state) {
    if (!state.IsPlaying) return "stopped";
    return state.IsPaused ? "paused" : "playing";
}

std::string LoopText(std::int32_t loop) {
    return loop == -1 ? "\u221E" : std::to_string(loop);
}

// Times are 32-bit counts that units may fill with anything: sums wrap, as they do on the wire.
std::string PositionText(std::int32_t positionMS, const Zorvic::Preset& preset) {
    return ClockText(static_cast<std::int32_t>(static_cast<std::uint32_t>(positionMS) -
                                               static_cast<std::uint32_t>(preset.OutPosition)));
}

std::string TimeText(const Zorvic::Preset& preset, const Zorvic::PresetState& state,
                     const std::optional<Zorvic::TimeCode>& position) {
    const std::int32_t start = preset.InPosition != 0 ? preset.InPosition : state.TRT;
    return PositionText(position ? position->Time : start, preset);
}

std::string FileName(const std::string& path) {
    return path.substr(path.find_last_of("/\\") + 1);
}

}  // namespace ZorvicCtl
