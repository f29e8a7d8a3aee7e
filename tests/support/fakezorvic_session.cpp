#include "support/fakezorvic_state.h"

#include <algorithm>
#include <limits>

using FakeZorvic::Call;
using FakeZorvic::SessionState;
using FakeZorvic::Unit;

namespace Zorvic {
namespace {

using Marks = std::unordered_map<std::int32_t, PresetMark>;

Marks::iterator FindMark(Marks& marks, std::int32_t timeMS) {
    return std::ranges::find_if(marks, [timeMS](const auto& entry) { return entry.second.TimeMS == timeMS; });
}

StatusCode AddMark(Marks& marks, std::int32_t timeMS, const std::string& name) {
    if (FindMark(marks, timeMS) != marks.end()) return ZORVIC_STATUS_FAILED;
    PresetMark mark;
    for (const auto& [id, other] : marks) {
        mark.ID = std::max(mark.ID, id);
    }
    ++mark.ID;
    mark.TimeMS = timeMS;
    mark.Name = name;
    marks.emplace(mark.ID, mark);
    return ZORVIC_STATUS_OK;
}

std::int32_t StartPosition(Unit& unit, const PresetState& state) {
    const auto* preset = unit.FindPreset(state.PK);
    return preset && preset->InPosition != 0 ? preset->InPosition : state.TRT;
}

void SetPosition(Unit& unit, std::int32_t pk, std::int32_t time) {
    auto& timeCode = unit.TimeCodes[pk];
    timeCode.PK = pk;
    timeCode.Time = time;
}

StatusCode DeletePresetOf(Unit& unit, std::int32_t pk) {
    const auto* state = unit.FindState(pk);
    if (!unit.FindPreset(pk) || (state && state->IsPlaying)) return ZORVIC_STATUS_FAILED;
    std::erase_if(unit.Presets, [pk](const Preset& preset) { return preset.PK == pk; });
    std::erase_if(unit.States, [pk](const PresetState& other) { return other.PK == pk; });
    unit.TimeCodes.erase(pk);
    return ZORVIC_STATUS_OK;
}

StatusCode Install(Unit& unit, const std::string& path) {
    Asset asset;
    const auto name = path.substr(path.find_last_of("\\/") + 1);
    asset.FullPath = "C:\\Assets\\" + name;
    asset.Status = ZORVIC_ASSETSTATE_INGESTING;
    for (const auto& [place, entries] : unit.Listings) {
        const auto source = std::ranges::find(entries, path, &ExternalAsset::FullPath);
        asset.TotalSize = source == entries.end() ? asset.TotalSize : source->FileSize;
    }
    std::erase_if(unit.Assets, [&](const Asset& other) { return other.FullPath == asset.FullPath; });
    unit.Assets.push_back(asset);
    return ZORVIC_STATUS_OK;
}

}  // namespace

struct Session::Impl {
    std::shared_ptr<SessionState> State = std::make_shared<SessionState>();

    /// Every operation passes here: recorded, hooked, then refused or answered. Nothing of this object is touched after
    /// the hook, which may have destroyed it.
    template <typename Answer>
    StatusCode Run(Call call, Answer answer) const {
        const auto state = State;
        call.Host = state->Host;
        FakeZorvic::Record(call);
        FakeZorvic::RunHook(call);
        if (!state->LinkUp) return ZORVIC_STATUS_NETWORKERROR;
        Unit& unit = *state->Peer;
        const auto failure = unit.Failures.find(call.Operation);
        if (failure == unit.Failures.end()) return answer(unit);
        const auto status = failure->second.Status;
        if (failure->second.Times && --*failure->second.Times <= 0) {
            unit.Failures.erase(failure);
        }
        return status;
    }

    /// A read empties its result first: what a failed call leaves there is of no use to anybody.
    template <typename Result, typename Answer>
    StatusCode Read(Call call, Result& result, Answer answer) const {
        result = {};
        return Run(std::move(call), [&](Unit& unit) { return answer(unit); });
    }

    template <typename Effect>
    StatusCode Command(Call call, std::initializer_list<StateEventType> events, Effect effect) const {
        const auto state = State;
        return Run(std::move(call), [&](Unit& unit) {
            const StatusCode status = unit.FollowsCommands ? effect(unit) : ZORVIC_STATUS_OK;
            if (status != ZORVIC_STATUS_OK) return status;
            for (const auto type : events)
                FakeZorvic::FireIn(*state, type);
            return status;
        });
    }

    template <typename Effect>
    StatusCode Transport(Call call, Effect effect) const {
        const auto pk = call.PK;
        return Command(std::move(call), {ZORVIC_STATE_PRESETSTATES, ZORVIC_STATE_TIMECODE}, [&](Unit& unit) {
            auto* state = unit.FindState(pk);
            if (!state) return ZORVIC_STATUS_FAILED;
            effect(unit, *state);
            return ZORVIC_STATUS_OK;
        });
    }

    /// Marks are addressed by preset and time.
    StatusCode CreateMark(const char* operation, Marks Preset::*kind, std::int32_t pk, std::int32_t timeMS,
                          const std::string& name) const {
        const Call call{.Operation = operation, .PK = pk, .Number = timeMS, .Texts = {name}};
        return Command(call, {ZORVIC_STATE_PRESETS}, [&](Unit& unit) {
            auto* preset = unit.FindPreset(pk);
            return preset ? AddMark(preset->*kind, timeMS, name) : ZORVIC_STATUS_FAILED;
        });
    }
    /// Without a name the mark is deleted.
    StatusCode ChangeMark(const char* operation, Marks Preset::*kind, std::int32_t pk, std::int32_t timeMS,
                          const std::optional<std::string>& name) const {
        Call call{.Operation = operation, .PK = pk, .Number = timeMS};
        if (name) call.Texts = {*name};
        return Command(std::move(call), {ZORVIC_STATE_PRESETS}, [&](Unit& unit) {
            auto* preset = unit.FindPreset(pk);
            if (!preset) return ZORVIC_STATUS_FAILED;
            auto& marks = preset->*kind;
            const auto mark = FindMark(marks, timeMS);
            if (mark == marks.end()) return ZORVIC_STATUS_FAILED;
            if (name) {
                mark->second.Name = *name;
            } else {
                marks.erase(mark);
            }
            return ZORVIC_STATUS_OK;
        });
    }

    StatusCode Power(const char* operation) const {
        return Command({.Operation = operation}, {}, [](Unit&) { return ZORVIC_STATUS_OK; });
    }
};

Session::Session(const std::string& host, int flag) : Pimpl(std::make_unique<Impl>()) {
    auto& state = *Pimpl->State;
    state.Host = host;
    state.Peer = FakeZorvic::FindUnit(host);
    state.LinkUp = state.Peer && state.Peer->Reachable;
    FakeZorvic::Enroll(Pimpl->State);
    const Call call{.Operation = "Session", .Host = host, .Number = flag};
    FakeZorvic::Record(call);
    FakeZorvic::RunHook(call);
}

Session::~Session() {
    FakeZorvic::Record({.Operation = "~Session", .Host = Pimpl->State->Host});
    FakeZorvic::Withdraw(Pimpl->State);
}

bool Session::Connected() const {
    const auto state = Pimpl->State;
    const Call call{.Operation = "Connected", .Host = state->Host};
    FakeZorvic::Record(call);
    FakeZorvic::RunHook(call);
    return state->LinkUp;
}

std::string Session::GetHost() const {
    FakeZorvic::Record({.Operation = "GetHost", .Host = Pimpl->State->Host});
    return Pimpl->State->Host;
}

StatusCode Session::Reconnect(const std::string& host) {
    const auto state = Pimpl->State;
    const Call call{.Operation = "Reconnect", .Host = state->Host, .Texts = {host}};
    FakeZorvic::Record(call);
    FakeZorvic::RunHook(call);
    if (!host.empty() && host != state->Host) {
        state->Host = host;
        state->Peer = FakeZorvic::FindUnit(host);
    }
    state->LinkUp = state->Peer && state->Peer->Reachable;
    return state->LinkUp ? ZORVIC_STATUS_OK : ZORVIC_STATUS_NETWORKERROR;
}

StatusCode Session::GetUnitID(std::string& guid, std::string& nickname) {
    nickname.clear();
    return Pimpl->Read({.Operation = "GetUnitID"}, guid, [&](Unit& unit) {
        guid = unit.GUID;
        nickname = unit.Nickname;
        return ZORVIC_STATUS_OK;
    });
}

StatusCode Session::GetPresets(std::vector<Preset>& presets) {
    return Pimpl->Read({.Operation = "GetPresets"}, presets, [&](Unit& unit) {
        presets = unit.Presets;
        return ZORVIC_STATUS_OK;
    });
}

StatusCode Session::GetPresetStates(std::vector<PresetState>& states) {
    return Pimpl->Read({.Operation = "GetPresetStates"}, states, [&](Unit& unit) {
        states = unit.States;
        return ZORVIC_STATUS_OK;
    });
}

StatusCode Session::CreatePreset(const Preset& preset) {
    return Pimpl->Command({.Operation = "CreatePreset", .PK = preset.PK, .Texts = {preset.Name}, .Sent = preset},
                          {ZORVIC_STATE_PRESETS, ZORVIC_STATE_PRESETSTATES}, [copy = preset](Unit& unit) mutable {
                              copy.PK = 0;
                              unit.AddPreset(std::move(copy), 0);
                              return ZORVIC_STATUS_OK;
                          });
}

StatusCode Session::UpdatePreset(const Preset& preset) {
    return Pimpl->Command({.Operation = "UpdatePreset", .PK = preset.PK, .Sent = preset}, {ZORVIC_STATE_PRESETS},
                          [copy = preset](Unit& unit) {
                              auto* stored = unit.FindPreset(copy.PK);
                              if (!stored) return ZORVIC_STATUS_FAILED;
                              *stored = copy;
                              return ZORVIC_STATUS_OK;
                          });
}

StatusCode Session::DeletePreset(std::int32_t pk) {
    return Pimpl->Command({.Operation = "DeletePreset", .PK = pk}, {ZORVIC_STATE_PRESETS, ZORVIC_STATE_PRESETSTATES},
                          [pk](Unit& unit) { return DeletePresetOf(unit, pk); });
}

StatusCode Session::SelectPreset(std::int32_t pk) {
    return Pimpl->Command({.Operation = "SelectPreset", .PK = pk}, {ZORVIC_STATE_PRESETSTATES}, [pk](Unit& unit) {
        for (auto& state : unit.States) {
            state.IsSelected = state.PK == pk;
        }
        return unit.FindState(pk) ? ZORVIC_STATUS_OK : ZORVIC_STATUS_FAILED;
    });
}

StatusCode Session::Take(std::int32_t pk) {
    return Pimpl->Transport({.Operation = "Take", .PK = pk}, [](Unit& unit, PresetState& state) {
        if (!state.IsPaused) {
            SetPosition(unit, state.PK, StartPosition(unit, state));
        }
        state.IsPlaying = true;
        state.IsPaused = false;
    });
}

StatusCode Session::Pause(std::int32_t pk) {
    return Pimpl->Transport({.Operation = "Pause", .PK = pk},
                            [](Unit&, PresetState& state) { state.IsPaused = state.IsPlaying && !state.IsPaused; });
}

StatusCode Session::End(std::int32_t pk) {
    return Pimpl->Transport({.Operation = "End", .PK = pk}, [](Unit& unit, PresetState& state) {
        state.IsPlaying = false;
        state.IsPaused = false;
        unit.TimeCodes.erase(state.PK);
    });
}

StatusCode Session::SeekTo(std::int32_t pk, std::uint32_t timeMS) {
    return Pimpl->Transport({.Operation = "SeekTo", .PK = pk, .Number = timeMS}, [&](Unit& unit, PresetState& state) {
        constexpr std::uint32_t Highest = std::numeric_limits<std::int32_t>::max();
        const auto time = timeMS > Highest ? 0 : static_cast<std::int32_t>(timeMS);
        if (state.IsPlaying) {
            SetPosition(unit, state.PK, std::min(time, state.TRT));
        }
    });
}

StatusCode Session::CreateGoto(std::int32_t pk, std::int32_t timeMS, const std::string& name) {
    return Pimpl->CreateMark("CreateGoto", &Preset::Gotos, pk, timeMS, name);
}

StatusCode Session::RenameGoto(std::int32_t pk, std::int32_t timeMS, const std::string& name) {
    return Pimpl->ChangeMark("RenameGoto", &Preset::Gotos, pk, timeMS, name);
}

StatusCode Session::DeleteGoto(std::int32_t pk, std::int32_t timeMS) {
    return Pimpl->ChangeMark("DeleteGoto", &Preset::Gotos, pk, timeMS, std::nullopt);
}

StatusCode Session::CreateCountdown(std::int32_t pk, std::int32_t timeMS, const std::string& name) {
    return Pimpl->CreateMark("CreateCountdown", &Preset::Countdowns, pk, timeMS, name);
}

StatusCode Session::RenameCountdown(std::int32_t pk, std::int32_t timeMS, const std::string& name) {
    return Pimpl->ChangeMark("RenameCountdown", &Preset::Countdowns, pk, timeMS, name);
}

StatusCode Session::DeleteCountdown(std::int32_t pk, std::int32_t timeMS) {
    return Pimpl->ChangeMark("DeleteCountdown", &Preset::Countdowns, pk, timeMS, std::nullopt);
}

StatusCode Session::GetTimeCode(TimeCode& timeCode, std::int32_t pk) {
    return Pimpl->Read({.Operation = "GetTimeCode", .PK = pk}, timeCode, [&](Unit& unit) {
        const auto found = unit.TimeCodes.find(pk);
        if (found == unit.TimeCodes.end()) return ZORVIC_STATUS_FAILED;
        timeCode = found->second;
        return ZORVIC_STATUS_OK;
    });
}

StatusCode Session::GetKonaHardwareState(KonaHardwareState& state) {
    return Pimpl->Read({.Operation = "GetKonaHardwareState"}, state, [&](Unit& unit) {
        state = unit.Hardware;
        return ZORVIC_STATUS_OK;
    });
}

StatusCode Session::GetAssets(std::vector<Asset>& assets) {
    return Pimpl->Read({.Operation = "GetAssets"}, assets, [&](Unit& unit) {
        assets = unit.Assets;
        return ZORVIC_STATUS_OK;
    });
}

StatusCode Session::DeleteAsset(const std::string& path) {
    return Pimpl->Command({.Operation = "DeleteAsset", .Texts = {path}}, {ZORVIC_STATE_ASSETS}, [&](Unit& unit) {
        const auto isIt = [&](const Asset& asset) { return asset.FullPath == path; };
        return std::erase_if(unit.Assets, isIt) == 0 ? ZORVIC_STATUS_FAILED : ZORVIC_STATUS_OK;
    });
}

StatusCode Session::ReadAssetMetadata(const std::string& path, AssetMetadata& metadata) {
    return Pimpl->Read({.Operation = "ReadAssetMetadata", .Texts = {path}}, metadata, [&](Unit& unit) {
        const auto found = unit.Metadata.find(path);
        if (found == unit.Metadata.end()) return ZORVIC_STATUS_FAILED;
        metadata = found->second;
        return ZORVIC_STATUS_OK;
    });
}

StatusCode Session::GetDisks(std::vector<Drive>& drives) {
    return Pimpl->Read({.Operation = "GetDisks"}, drives, [&](Unit& unit) {
        drives = unit.Drives;
        return ZORVIC_STATUS_OK;
    });
}

StatusCode Session::GetDiskAssets(std::vector<ExternalAsset>& entries, const std::string& drive,
                                  const std::string& path) {
    return Pimpl->Read({.Operation = "GetDiskAssets", .Texts = {drive, path}}, entries, [&](Unit& unit) {
        const auto found = unit.Listings.find({drive, path});
        if (found == unit.Listings.end()) return ZORVIC_STATUS_FAILED;
        entries = found->second;
        return ZORVIC_STATUS_OK;
    });
}

StatusCode Session::InstallAsset(const std::string& path) {
    return Pimpl->Command({.Operation = "InstallAsset", .Texts = {path}}, {ZORVIC_STATE_ASSETS},
                          [&](Unit& unit) { return Install(unit, path); });
}

StatusCode Session::RebootZorvic() {
    return Pimpl->Power("RebootZorvic");
}

StatusCode Session::SoftRebootZorvic() {
    return Pimpl->Power("SoftRebootZorvic");
}

StatusCode Session::ShutdownZorvic() {
    return Pimpl->Power("ShutdownZorvic");
}

StatusCode Session::SetStateEventCallback(StateEventType type, StateEventCallback fn, void* user) {
    const auto state = Pimpl->State;
    const Call call{.Operation = "SetStateEventCallback", .Host = state->Host, .Number = type, .User = user};
    FakeZorvic::Record(call);
    FakeZorvic::RunHook(call);
    if (type <= ZORVIC_STATE_INVALID || type >= ZORVIC_STATE_MAX) return ZORVIC_STATUS_MISUSED;
    {
        const std::scoped_lock lock(state->CallbackLock);
        state->Callbacks.erase(type);
        if (fn) {
            state->Callbacks.emplace(type, SessionState::Callback{fn, user});
        }
    }
    if (state->Peer) FakeZorvic::FireIn(*state, type);
    return ZORVIC_STATUS_OK;
}

}  // namespace Zorvic
