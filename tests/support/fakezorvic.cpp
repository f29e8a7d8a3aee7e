#include "support/fakezorvic.h"

#include "support/fakezorvic_state.h"

#include <algorithm>
#include <array>
#include <mutex>
#include <stdexcept>
#include <string_view>

namespace FakeZorvic {
namespace {

struct Globals {
    std::mutex Lock;  ///< guards everything below; never held while code of a test or the console runs
    std::map<std::string, std::shared_ptr<Unit>> Units;
    std::vector<Zorvic::LANZorvic> LANUnits;
    std::vector<Call> Calls;
    std::function<void(const Call&)> Hook;
    std::vector<std::shared_ptr<SessionState>> Sessions;
};

Globals& Global() {
    static Globals globals;
    return globals;
}

std::vector<std::shared_ptr<SessionState>> SessionsOf(const std::optional<std::string>& host) {
    const std::scoped_lock lock(Global().Lock);
    auto sessions = Global().Sessions;
    std::erase_if(sessions, [&](const auto& session) { return host && session->Host != *host; });
    return sessions;
}

bool IsCommand(const Call& call) {
    static constexpr std::array<std::string_view, 6> Silent = {
        "Session", "~Session", "Connected", "Reconnect", "ReadAssetMetadata", "SetStateEventCallback"};
    return !call.Operation.starts_with("Get") && std::ranges::find(Silent, call.Operation) == Silent.end();
}

}  // namespace

std::string Call::ToString() const {
    std::string text = Operation;
    if (PK != 0) text += ' ' + std::to_string(PK);
    if (Number != 0) text += ' ' + std::to_string(Number);
    for (const auto& argument : Texts) {
        text += ' ' + argument;
    }
    return text;
}

std::int32_t Unit::AddPreset(Zorvic::Preset preset, std::int32_t trtMS) {
    if (preset.PK == 0) preset.PK = LastPK + 1;
    LastPK = std::max(LastPK, preset.PK);
    preset.TabDisplayOrder.try_emplace(0, 0, static_cast<std::int32_t>(Presets.size()));
    Zorvic::PresetState state;
    state.PK = preset.PK;
    state.TRT = trtMS;
    States.push_back(state);
    Presets.push_back(std::move(preset));
    return LastPK;
}

Zorvic::Preset* Unit::FindPreset(std::int32_t pk) {
    const auto found = std::ranges::find(Presets, pk, &Zorvic::Preset::PK);
    return found == Presets.end() ? nullptr : &*found;
}

Zorvic::PresetState* Unit::FindState(std::int32_t pk) {
    const auto found = std::ranges::find(States, pk, &Zorvic::PresetState::PK);
    return found == States.end() ? nullptr : &*found;
}

void Unit::Fail(const std::string& operation, Zorvic::StatusCode status, std::optional<int> times) {
    Failures[operation] = {status, times};
}

void Reset() {
    const std::scoped_lock lock(Global().Lock);
    Global().Units.clear();
    Global().LANUnits.clear();
    Global().Calls.clear();
    Global().Hook = nullptr;
}

Unit& AddUnit(const std::string& host, const std::string& guid, const std::string& nickname) {
    const std::scoped_lock lock(Global().Lock);
    auto& unit = Global().Units[host];
    unit = std::make_shared<Unit>();
    unit->GUID = guid;
    unit->Nickname = nickname.empty() ? guid : nickname;
    return *unit;
}

Unit& At(const std::string& host) {
    const std::scoped_lock lock(Global().Lock);
    return *Global().Units.at(host);
}

std::shared_ptr<Unit> FindUnit(const std::string& host) {
    const std::scoped_lock lock(Global().Lock);
    const auto found = Global().Units.find(host);
    return found == Global().Units.end() ? nullptr : found->second;
}

void SetLANZorvics(std::vector<Zorvic::LANZorvic> units) {
    const std::scoped_lock lock(Global().Lock);
    Global().LANUnits = std::move(units);
}

void SetConnected(const std::string& host, bool connected) {
    for (const auto& session : SessionsOf(host)) {
        session->LinkUp = connected && session->Peer;
    }
}

void SetHook(std::function<void(const Call&)> hook) {
    const std::scoped_lock lock(Global().Lock);
    Global().Hook = std::move(hook);
}

void Record(const Call& call) {
    const std::scoped_lock lock(Global().Lock);
    Global().Calls.push_back(call);
}

void RunHook(const Call& call) {
    std::function<void(const Call&)> hook;
    {
        const std::scoped_lock lock(Global().Lock);
        hook = Global().Hook;
    }
    if (hook) hook(call);
}

std::vector<Call> Calls() {
    const std::scoped_lock lock(Global().Lock);
    return Global().Calls;
}

std::vector<Call> Calls(const std::string& operation) {
    auto calls = Calls();
    std::erase_if(calls, [&](const Call& call) { return call.Operation != operation; });
    return calls;
}

std::vector<std::string> Commands() {
    std::vector<std::string> commands;
    for (const auto& call : Calls()) {
        if (IsCommand(call)) commands.push_back(call.ToString());
    }
    return commands;
}

Call LastCall(const std::string& operation) {
    const auto calls = Calls(operation);
    if (calls.empty()) throw std::out_of_range("no call of " + operation);
    return calls.back();
}

void ClearCalls() {
    const std::scoped_lock lock(Global().Lock);
    Global().Calls.clear();
}

void Enroll(const std::shared_ptr<SessionState>& session) {
    const std::scoped_lock lock(Global().Lock);
    Global().Sessions.push_back(session);
}

void Withdraw(const std::shared_ptr<SessionState>& session) {
    {
        const std::scoped_lock lock(session->CallbackLock);
        session->Callbacks.clear();
    }
    const std::scoped_lock lock(Global().Lock);
    std::erase(Global().Sessions, session);
}

void FireIn(SessionState& session, Zorvic::StateEventType type) {
    const std::scoped_lock lock(session.CallbackLock);
    if (const auto found = session.Callbacks.find(type); found != session.Callbacks.end())
        found->second.Function(type, found->second.User);
}

std::vector<Registration> Registrations() {
    std::vector<Registration> registrations;
    for (const auto& session : SessionsOf(std::nullopt)) {
        const std::scoped_lock lock(session->CallbackLock);
        for (const auto& [type, callback] : session->Callbacks) {
            registrations.push_back({session->Host, type, callback.User});
        }
    }
    return registrations;
}

std::vector<Zorvic::StateEventType> RegistrationsFor(const void* user) {
    std::vector<Zorvic::StateEventType> types;
    for (const auto& registration : Registrations()) {
        if (registration.User == user) types.push_back(registration.Type);
    }
    return types;
}

std::size_t LiveSessions() {
    return SessionsOf(std::nullopt).size();
}

std::size_t LiveSessions(const std::string& host) {
    return SessionsOf(host).size();
}

}  // namespace FakeZorvic

std::vector<Zorvic::LANZorvic> Zorvic::GetLANZorvics() {
    const FakeZorvic::Call call{.Operation = "GetLANZorvics", .Host = {}};
    FakeZorvic::Record(call);
    FakeZorvic::RunHook(call);
    const std::scoped_lock lock(FakeZorvic::Global().Lock);
    return FakeZorvic::Global().LANUnits;
}
