#include "support/fakezorvic.h"

#include "support/fakezorvic_state.h"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <string_view>

namespace FakeZorvic {
namespace {

bool IsCommand(const Call& call) {
    static constexpr std::array<std::string_view, 5> Silent = {"Session", "Connected", "Reconnect", "ReadAssetMetadata",
                                                               "SetStateEventCallback"};
    return !call.Operation.starts_with("Get") && std::ranges::find(Silent, call.Operation) == Silent.end();
}

}  // namespace

Globals& Global() {
    static Globals globals;
    return globals;
}

std::string Call::ToString() const {
    std::string text = Operation;
    if (PK != 0) text += ' ' + std::to_string(PK);
    if (Number != 0) text += ' ' + std::to_string(Number);
    for (const auto& argument : Texts)
        text += ' ' + argument;
    return text;
}

std::int32_t Unit::AddPreset(Zorvic::Preset preset, std::int32_t trtMS) {
    if (preset.PK == 0) preset.PK = Presets.empty() ? 1 : Presets.back().PK + 1;
    preset.TabDisplayOrder.try_emplace(0, 0, static_cast<std::int32_t>(Presets.size()));
    Zorvic::PresetState& state = States.emplace_back();
    state.PK = preset.PK;
    state.TRT = trtMS;
    Presets.push_back(std::move(preset));
    return Presets.back().PK;
}

Zorvic::Preset* Unit::FindPreset(std::int32_t pk) {
    const auto found = std::ranges::find(Presets, pk, &Zorvic::Preset::PK);
    return found == Presets.end() ? nullptr : &*found;
}

Zorvic::PresetState* Unit::FindState(std::int32_t pk) {
    const auto found = std::ranges::find(States, pk, &Zorvic::PresetState::PK);
    return found == States.end() ? nullptr : &*found;
}

void Reset() {
    Global() = {.Sessions = std::move(Global().Sessions)};
}

Unit& AddUnit(const std::string& host, const std::string& guid, const std::string& nickname) {
    return *(Global().Units[host] = std::make_shared<Unit>(Unit{guid, nickname.empty() ? guid : nickname}));
}

Unit& At(const std::string& host) {
    return *Global().Units.at(host);
}

void SetLANZorvics(std::vector<Zorvic::LANZorvic> units) {
    Global().LANUnits = std::move(units);
}

void SetHook(std::function<void(const Call&)> hook) {
    Global().Hook = std::move(hook);
}

void Begin(const Call& call) {
    Global().Calls.push_back(call);
    // A copy, because a hook may set another one.
    if (const auto hook = Global().Hook) hook(call);
}

std::shared_ptr<Unit> FindUnit(const std::string& host) {
    const auto found = Global().Units.find(host);
    return found == Global().Units.end() ? nullptr : found->second;
}

std::vector<Call> Calls(const std::string& operation) {
    auto calls = Global().Calls;
    std::erase_if(calls, [&](const Call& call) { return !operation.empty() && call.Operation != operation; });
    return calls;
}

std::vector<std::string> Commands() {
    std::vector<std::string> commands;
    for (const auto& call : Global().Calls)
        if (IsCommand(call)) commands.push_back(call.ToString());
    return commands;
}

Call LastCall(const std::string& operation) {
    const auto calls = Calls(operation);
    if (calls.empty()) throw std::out_of_range("no call of " + operation);
    return calls.back();
}

void ClearCalls() {
    Global().Calls.clear();
}

std::size_t Registrations(const void* user) {
    std::size_t count = 0;
    for (const auto& session : Global().Sessions)
        for (const auto& [type, registered] : session->Users)
            count += !user || registered == user ? 1 : 0;
    return count;
}

std::size_t LiveSessions(const std::string& host) {
    return static_cast<std::size_t>(std::ranges::count_if(
        Global().Sessions, [&](const auto& session) { return host.empty() || session->Host == host; }));
}

}  // namespace FakeZorvic

std::vector<Zorvic::LANZorvic> Zorvic::GetLANZorvics() {
    FakeZorvic::Begin({.Operation = "GetLANZorvics"});
    return FakeZorvic::Global().LANUnits;
}
