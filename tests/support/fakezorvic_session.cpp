#include "support/fakezorvic_state.h"

using FakeZorvic::Call;
using FakeZorvic::SessionState;
using FakeZorvic::Unit;

namespace Zorvic {

struct Session::Impl {
    std::shared_ptr<SessionState> State = std::make_shared<SessionState>();

    /// Every operation passes here: recorded, hooked, then refused or answered. Nothing of this object is touched after
    /// the hook, which may have destroyed it.
    template <typename Answer>
    StatusCode Run(Call call, Answer answer) const {
        const auto state = State;
        call.Host = state->Host;
        FakeZorvic::Begin(call);
        if (!state->LinkUp()) return ZORVIC_STATUS_NETWORKERROR;
        Unit& unit = *state->Peer;
        const auto failure = unit.Failures.find(call.Operation);
        if (failure == unit.Failures.end()) return answer(unit);
        auto& [status, times] = failure->second;
        const StatusCode result = status;
        if (times && --*times <= 0) unit.Failures.erase(failure);
        return result;
    }

    /// For a command that only matters by having been sent.
    StatusCode Accept(Call call) const {
        return Run(std::move(call), [](Unit&) { return ZORVIC_STATUS_OK; });
    }

    /// A read empties its result first: what a failed call leaves there is of no use to anybody.
    template <typename Result>
    StatusCode Read(const char* operation, Result& result, Result Unit::*source) const {
        result = {};
        return Run({.Operation = operation}, [&](Unit& unit) {
            result = unit.*source;
            return ZORVIC_STATUS_OK;
        });
    }

    template <typename Key, typename Result>
    StatusCode ReadEntry(Call call, Result& result, std::map<Key, Result> Unit::*source, const Key& key) const {
        result = {};
        return Run(std::move(call), [&](Unit& unit) {
            const auto found = (unit.*source).find(key);
            if (found == (unit.*source).end()) return ZORVIC_STATUS_FAILED;
            result = found->second;
            return ZORVIC_STATUS_OK;
        });
    }
};

Session::Session(const std::string& host, int) : Pimpl(std::make_unique<Impl>()) {
    *Pimpl->State = {.Host = host, .Peer = FakeZorvic::FindUnit(host)};
    FakeZorvic::Global().Sessions.push_back(Pimpl->State);
    FakeZorvic::Begin({.Operation = "Session", .Host = host});
}

Session::~Session() {
    std::erase(FakeZorvic::Global().Sessions, Pimpl->State);
}

bool Session::Connected() const {
    const auto state = Pimpl->State;
    FakeZorvic::Begin({.Operation = "Connected", .Host = state->Host});
    return state->LinkUp();
}

std::string Session::GetHost() const {
    return Pimpl->State->Host;
}

StatusCode Session::Reconnect(const std::string& host) {
    const auto state = Pimpl->State;
    FakeZorvic::Begin({.Operation = "Reconnect", .Texts = {host}, .Host = state->Host});
    return state->LinkUp() ? ZORVIC_STATUS_OK : ZORVIC_STATUS_NETWORKERROR;
}

StatusCode Session::GetUnitID(std::string& guid, std::string& nickname) {
    return Pimpl->Run({.Operation = "GetUnitID"}, [&](Unit& unit) {
        guid = unit.GUID;
        nickname = unit.Nickname;
        return ZORVIC_STATUS_OK;
    });
}

// Reads.
StatusCode Session::GetPresets(std::vector<Preset>& presets) {
    return Pimpl->Read("GetPresets", presets, &Unit::Presets);
}
StatusCode Session::GetPresetStates(std::vector<PresetState>& states) {
    return Pimpl->Read("GetPresetStates", states, &Unit::States);
}
StatusCode Session::GetKonaHardwareState(KonaHardwareState& state) {
    return Pimpl->Read("GetKonaHardwareState", state, &Unit::Hardware);
}
StatusCode Session::GetAssets(std::vector<Asset>& assets) {
    return Pimpl->Read("GetAssets", assets, &Unit::Assets);
}
StatusCode Session::GetDisks(std::vector<Drive>& drives) {
    return Pimpl->Read("GetDisks", drives, &Unit::Drives);
}
StatusCode Session::GetTimeCode(TimeCode& timeCode, std::int32_t pk) {
    return Pimpl->ReadEntry({.Operation = "GetTimeCode", .PK = pk}, timeCode, &Unit::TimeCodes, pk);
}
StatusCode Session::ReadAssetMetadata(const std::string& path, AssetMetadata& metadata) {
    return Pimpl->ReadEntry({.Operation = "ReadAssetMetadata", .Texts = {path}}, metadata, &Unit::Metadata, path);
}
StatusCode Session::GetDiskAssets(std::vector<ExternalAsset>& entries, const std::string& drive,
                                  const std::string& path) {
    return Pimpl->ReadEntry({.Operation = "GetDiskAssets", .Texts = {drive, path}}, entries, &Unit::Listings,
                            {drive, path});
}

// Presets.
StatusCode Session::CreatePreset(const Preset& preset) {
    return Pimpl->Accept({.Operation = "CreatePreset", .PK = preset.PK, .Texts = {preset.Name}, .Sent = preset});
}
StatusCode Session::UpdatePreset(const Preset& preset) {
    return Pimpl->Run({.Operation = "UpdatePreset", .PK = preset.PK, .Sent = preset}, [copy = preset](Unit& unit) {
        auto* const stored = unit.FindPreset(copy.PK);
        if (!stored) return ZORVIC_STATUS_FAILED;
        *stored = copy;
        return ZORVIC_STATUS_OK;
    });
}
StatusCode Session::DeletePreset(std::int32_t pk) {
    return Pimpl->Accept({.Operation = "DeletePreset", .PK = pk});
}
StatusCode Session::SelectPreset(std::int32_t pk) {
    return Pimpl->Accept({.Operation = "SelectPreset", .PK = pk});
}

// Transport.
StatusCode Session::Take(std::int32_t pk) {
    return Pimpl->Run({.Operation = "Take", .PK = pk}, [pk](Unit& unit) {
        auto* const state = unit.FindState(pk);
        if (!state) return ZORVIC_STATUS_FAILED;
        state->IsPlaying = true;
        return ZORVIC_STATUS_OK;
    });
}
StatusCode Session::Pause(std::int32_t pk) {
    return Pimpl->Accept({.Operation = "Pause", .PK = pk});
}
StatusCode Session::End(std::int32_t pk) {
    return Pimpl->Accept({.Operation = "End", .PK = pk});
}
StatusCode Session::SeekTo(std::int32_t pk, std::uint32_t timeMS) {
    return Pimpl->Accept({.Operation = "SeekTo", .PK = pk, .Number = timeMS});
}

// Marks.
StatusCode Session::CreateGoto(std::int32_t pk, std::int32_t timeMS, const std::string& name) {
    return Pimpl->Accept({.Operation = "CreateGoto", .PK = pk, .Number = timeMS, .Texts = {name}});
}
StatusCode Session::RenameGoto(std::int32_t pk, std::int32_t timeMS, const std::string& name) {
    const Call call{.Operation = "RenameGoto", .PK = pk, .Number = timeMS, .Texts = {name}};
    return Pimpl->Run(call, [&call](Unit& unit) {
        auto* const preset = unit.FindPreset(call.PK);
        if (!preset) return ZORVIC_STATUS_FAILED;
        for (auto& [id, mark] : preset->Gotos)
            if (mark.TimeMS == call.Number) mark.Name = call.Texts.front();
        return ZORVIC_STATUS_OK;
    });
}
StatusCode Session::DeleteGoto(std::int32_t pk, std::int32_t timeMS) {
    return Pimpl->Accept({.Operation = "DeleteGoto", .PK = pk, .Number = timeMS});
}
StatusCode Session::CreateCountdown(std::int32_t pk, std::int32_t timeMS, const std::string& name) {
    return Pimpl->Accept({.Operation = "CreateCountdown", .PK = pk, .Number = timeMS, .Texts = {name}});
}
StatusCode Session::RenameCountdown(std::int32_t pk, std::int32_t timeMS, const std::string& name) {
    return Pimpl->Accept({.Operation = "RenameCountdown", .PK = pk, .Number = timeMS, .Texts = {name}});
}
StatusCode Session::DeleteCountdown(std::int32_t pk, std::int32_t timeMS) {
    return Pimpl->Accept({.Operation = "DeleteCountdown", .PK = pk, .Number = timeMS});
}

// Assets and the unit itself.
StatusCode Session::InstallAsset(const std::string& path) {
    return Pimpl->Accept({.Operation = "InstallAsset", .Texts = {path}});
}
StatusCode Session::DeleteAsset(const std::string& path) {
    return Pimpl->Accept({.Operation = "DeleteAsset", .Texts = {path}});
}
StatusCode Session::RebootZorvic() {
    return Pimpl->Accept({.Operation = "RebootZorvic"});
}
StatusCode Session::SoftRebootZorvic() {
    return Pimpl->Accept({.Operation = "SoftRebootZorvic"});
}
StatusCode Session::ShutdownZorvic() {
    return Pimpl->Accept({.Operation = "ShutdownZorvic"});
}

StatusCode Session::SetStateEventCallback(StateEventType type, StateEventCallback fn, void* user) {
    const auto state = Pimpl->State;
    FakeZorvic::Begin({.Operation = "SetStateEventCallback", .Number = type, .Host = state->Host});
    state->Users.erase(type);
    if (fn) state->Users.emplace(type, user);
    return ZORVIC_STATUS_OK;
}

}  // namespace Zorvic
