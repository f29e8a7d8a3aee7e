#include "unit.h"

#include "failure.h"
#include "printing.h"
#include "unit_address.h"

#include <zorvic/extras.h>

#include <algorithm>
#include <charconv>
#include <iterator>

namespace ZorvicCtl {
namespace {

using Zorvic::Preset;

/// Where the console shows it; one without a place in its list comes last.
std::int32_t PlaceOf(const Preset& preset) {
    const auto tab = preset.TabDisplayOrder.find(0);
    return tab == preset.TabDisplayOrder.end() ? INT32_MAX : tab->second.Index;
}

std::optional<std::int32_t> NumberIn(const std::string& text) {
    const char* const start = text.data() + (text.starts_with('@') ? 1 : 0);
    const char* const end = text.data() + text.size();
    std::int32_t number = 0;
    const auto [rest, error] = std::from_chars(start, end, number);
    return error == std::errc{} && rest == end ? std::optional(number) : std::nullopt;
}

std::string Ambiguous(const std::string& text, const std::vector<Preset>& found) {
    std::string message = "\"" + OneLine(text) + "\" may be any of these presets:";
    for (const Preset& preset : found)
        message += "\n  @" + std::to_string(preset.PK) + "  " + OneLine(preset.Name);
    return message + "\nGive the number of the one you mean, with the @.";
}

std::string Words(Zorvic::StatusCode status) {
    switch (status) {
        case Zorvic::ZORVIC_STATUS_UNIMPLEMENTED:
        case Zorvic::ZORVIC_STATUS_UNSUPPORTED:
            return "its software is too old for that";
        case Zorvic::ZORVIC_STATUS_MISUSED:
            return "that makes no sense to it";
        default:
            return "it gives no reason";
    }
}

}  // namespace

std::string Title(const Preset& preset) {
    return std::to_string(preset.PK) + " \"" + OneLine(preset.Name) + '"';
}

Unit::Unit(const std::string& text) : Typed(text), Session(FindUnit(text), 1) {
    if (Session.Connected()) return;
    const std::string problem = Zorvic::LinkProblem(Session);
    throw Failure(ExitStatus::NotReachable, problem.empty() ? "No unit answers at " + Session.GetHost() + '.'
                                                            : "No link to " + Session.GetHost() + ": " + problem + '.');
}

std::string Unit::Name() {
    std::string guid;
    std::string nickname;
    return Session.GetUnitID(guid, nickname) == Zorvic::ZORVIC_STATUS_OK && nickname != guid ? nickname : Typed;
}

void Unit::Check(Zorvic::StatusCode status, const std::string& what) {
    if (status == Zorvic::ZORVIC_STATUS_OK) return;
    if (status == Zorvic::ZORVIC_STATUS_NETWORKERROR)
        throw Failure(ExitStatus::NotReachable, "The unit did not answer when it was asked to " + what +
                                                    ". Whether it has done so is not known.");
    const std::string reason = Zorvic::LastReason(Session);
    throw Failure(ExitStatus::Refused,
                  "The unit refused to " + what + ": " + (reason.empty() ? Words(status) : OneLine(reason)) + '.');
}

std::vector<Preset> Unit::Presets() {
    std::vector<Preset> presets;
    Check(Session.GetPresets(presets), "list its presets");
    std::stable_sort(presets.begin(), presets.end(),
                     [](const Preset& a, const Preset& b) { return PlaceOf(a) < PlaceOf(b); });
    return presets;
}

std::vector<Zorvic::PresetState> Unit::States() {
    std::vector<Zorvic::PresetState> states;
    Check(Session.GetPresetStates(states), "tell what plays");
    return states;
}

std::vector<Zorvic::Asset> Unit::Assets() {
    std::vector<Zorvic::Asset> assets;
    Check(Session.GetAssets(assets), "list its media");
    return assets;
}

Preset Unit::FindPreset(const std::string& text) {
    const auto number = NumberIn(text);
    const bool numberOnly = text.starts_with('@') && number;
    std::vector<Preset> found;
    const auto presets = Presets();
    std::copy_if(presets.begin(), presets.end(), std::back_inserter(found), [&](const Preset& preset) {
        return (number && preset.PK == *number) || (!numberOnly && preset.Name == text);
    });
    if (found.size() == 1) return found.front();
    if (found.empty()) throw Failure(ExitStatus::Refused, "The unit has no preset \"" + OneLine(text) + "\".");
    throw Failure(ExitStatus::Refused, Ambiguous(text, found));
}

Zorvic::PresetState Unit::StateOf(std::int32_t pk) {
    const auto states = States();
    const auto found = std::find_if(states.begin(), states.end(), [pk](const auto& state) { return state.PK == pk; });
    return found == states.end() ? Zorvic::PresetState() : *found;
}

std::optional<Zorvic::TimeCode> Unit::PositionOf(std::int32_t pk) {
    Zorvic::TimeCode position;
    return Session.GetTimeCode(position, pk) == Zorvic::ZORVIC_STATUS_OK ? std::optional(position) : std::nullopt;
}

}  // namespace ZorvicCtl
