#include "support/fakezorvic.h"

#include <zorvic/extras.h>

#include <set>
#include <utility>

using FakeZorvic::Call;
using FakeZorvic::Unit;

namespace FakeZorvic {
namespace {

// Of the sessions alive now, whatever is reset.
std::map<const Zorvic::Session*, std::string> Hosts;
std::map<std::pair<const Zorvic::Session*, Zorvic::StateEventType>, void*> Users;

/// How every operation starts.
void Begin(const Call& call) {
    Calls.push_back(call);
    // A copy, because a hook may set another one.
    if (const auto hook = Hook) hook(call);
}

bool IsCommand(const Call& call) {
    static const std::set<std::string> Silent = {"Session", "Connected", "Reconnect", "ReadAssetMetadata",
                                                 "SetStateEventCallback"};
    return !call.Operation.starts_with("Get") && !Silent.contains(call.Operation);
}

}  // namespace

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
    return state.PK;
}

void Reset() {
    Units.clear();
    LANUnits.clear();
    Calls.clear();
    Hook = nullptr;
}

Unit& AddUnit(const std::string& host, const std::string& guid) {
    return *(Units[host] = std::make_shared<Unit>(Unit{guid, guid}));
}

std::map<std::string, int> Counts() {
    std::map<std::string, int> counts;
    for (const auto& call : Calls)
        ++counts[call.Operation];
    return counts;
}

std::vector<std::string> Commands() {
    std::vector<std::string> commands;
    for (const auto& call : Calls)
        if (IsCommand(call)) commands.push_back(call.ToString());
    return commands;
}

Call LastCall(const std::string& operation) {
    const auto last =
        std::find_if(Calls.rbegin(), Calls.rend(), [&](const auto& call) { return call.Operation == operation; });
    if (last == Calls.rend()) throw std::out_of_range("no call of " + operation);
    return *last;
}

std::ptrdiff_t Registrations(const void* user) {
    return std::ranges::count_if(Users, [&](const auto& entry) { return !user || entry.second == user; });
}

std::ptrdiff_t LiveSessions(const std::string& host) {
    return std::ranges::count_if(Hosts, [&](const auto& entry) { return host.empty() || entry.second == host; });
}

}  // namespace FakeZorvic

namespace Zorvic {

std::string LastReason(const Session& session) {
    return FakeZorvic::Units.at(session.GetHost())->Reason;
}
std::string LinkProblem(const Session& session) {
    const auto unit = FakeZorvic::Units.find(session.GetHost());
    return unit == FakeZorvic::Units.end() || unit->second->Reachable ? std::string() : unit->second->Reason;
}
std::string LibraryVersion() {
    return "1.2.3";
}
StatusCode DescribeUnit(Session& session, LANZorvic& unit) {
    if (!session.Connected()) return ZORVIC_STATUS_NETWORKERROR;
    unit.CommunicatorVersion = "4.5";
    unit.APIVersion = "1.9";
    return ZORVIC_STATUS_OK;
}

struct OutputPreview::Impl {
    std::shared_ptr<Unit> Peer;
};
OutputPreview::OutputPreview(const std::string& host)
    : Pimpl(std::make_unique<Impl>(Impl{FakeZorvic::Units.at(host)})) {
    ++FakeZorvic::LivePreviews;
}
OutputPreview::~OutputPreview() {
    --FakeZorvic::LivePreviews;
}
std::vector<OutputPicture> OutputPreview::Latest() const {
    return Pimpl->Peer->Pictures;
}

struct AsRunSheet::Impl {
    std::shared_ptr<Unit> Peer;
};
AsRunSheet::AsRunSheet(const std::string& host, const Range& /*range*/)
    : Pimpl(std::make_unique<Impl>(Impl{FakeZorvic::Units.at(host)})) {}
AsRunSheet::~AsRunSheet() = default;
AsRunSheet::News AsRunSheet::Take() {
    return {std::exchange(Pimpl->Peer->AsRun, {}), std::exchange(Pimpl->Peer->AsRunAnew, false)};
}
AsRunSheet::State AsRunSheet::Now() const {
    return Pimpl->Peer->AsRunState;
}
std::string AsRunSheet::Problem() const {
    return "no sheet here";
}

std::vector<LANZorvic> GetLANZorvics() {
    FakeZorvic::Begin({.Operation = "GetLANZorvics"});
    return FakeZorvic::LANUnits;
}

struct Session::Impl {
    std::string Host;
    std::shared_ptr<Unit> Peer;  ///< null for a host nobody answers at

    /// Every operation passes here: recorded, hooked, then refused or answered. Nothing of this object is touched after
    /// the hook, which may have destroyed it.
    template <typename Answer>
    StatusCode Run(Call call, Answer answer) const {
        const auto peer = Peer;
        call.Host = Host;
        FakeZorvic::Begin(call);
        if (!peer || !peer->Reachable) return ZORVIC_STATUS_NETWORKERROR;
        const auto failure = peer->Failures.find(call.Operation);
        if (failure == peer->Failures.end()) return answer(*peer) ? ZORVIC_STATUS_OK : ZORVIC_STATUS_FAILED;
        auto& [status, times] = failure->second;
        const StatusCode result = status;
        if (times && --*times <= 0) peer->Failures.erase(failure);
        return result;
    }

    /// For a command that only matters by having been sent.
    StatusCode Accept(Call call) const {
        return Run(std::move(call), [](Unit&) { return true; });
    }

    /// A read empties its result first: what a failed call leaves there is of no use to anybody.
    template <typename Result>
    StatusCode Read(const char* operation, Result& result, Result Unit::*source) const {
        result = {};
        return Run({.Operation = operation}, [&](Unit& unit) {
            result = unit.*source;
            return true;
        });
    }

    template <typename Key, typename Result>
    StatusCode ReadEntry(Call call, Result& result, std::map<Key, Result> Unit::*source, const Key& key) const {
        result = {};
        return Run(std::move(call), [&](Unit& unit) {
            const auto found = (unit.*source).find(key);
            if (found != (unit.*source).end()) result = found->second;
            return found != (unit.*source).end();
        });
    }

    /// For a command that has its effect on a record of the unit.
    template <typename Record, typename Effect>
    StatusCode Change(const Call& call, Record* (Unit::*find)(std::int32_t), Effect effect) const {
        return Run(call, [&call, find, effect](Unit& unit) {
            auto* const record = (unit.*find)(call.PK);
            if (record) effect(*record);
            return record != nullptr;
        });
    }
};

Session::Session(const std::string& host, int) : Pimpl(std::make_unique<Impl>()) {
    const auto found = FakeZorvic::Units.find(host);
    *Pimpl = {host, found == FakeZorvic::Units.end() ? nullptr : found->second};
    FakeZorvic::Hosts[this] = host;
    FakeZorvic::Begin({.Operation = "Session", .Host = host});
}

Session::~Session() {
    FakeZorvic::Hosts.erase(this);
    std::erase_if(FakeZorvic::Users, [this](const auto& entry) { return entry.first.first == this; });
}

std::string Session::GetHost() const {
    return Pimpl->Host;
}
bool Session::Connected() const {
    return Pimpl->Accept({.Operation = "Connected"}) == ZORVIC_STATUS_OK;
}

StatusCode Session::SetStateEventCallback(StateEventType type, StateEventCallback fn, void* user) {
    Pimpl->Accept({.Operation = "SetStateEventCallback", .Number = type});
    FakeZorvic::Users.erase({this, type});
    if (fn && FakeZorvic::Hosts.contains(this)) FakeZorvic::Users[{this, type}] = user;
    return ZORVIC_STATUS_OK;
}

/// A command that only matters by having been sent, and what it says.
#define ONLY_RECORDED(NAME, PARAMETERS, ...)                                   \
    StatusCode Session::NAME PARAMETERS {                                      \
        return Pimpl->Accept({.Operation = #NAME __VA_OPT__(, ) __VA_ARGS__}); \
    }
ONLY_RECORDED(CreatePreset, (const Preset& preset), .PK = preset.PK, .Texts = {preset.Name}, .Sent = preset)
ONLY_RECORDED(DeletePreset, (std::int32_t pk), .PK = pk)
ONLY_RECORDED(SelectPreset, (std::int32_t pk), .PK = pk)
ONLY_RECORDED(Pause, (std::int32_t pk), .PK = pk)
ONLY_RECORDED(End, (std::int32_t pk), .PK = pk)
ONLY_RECORDED(SeekTo, (std::int32_t pk, std::uint32_t timeMS), .PK = pk, .Number = timeMS)
ONLY_RECORDED(CreateGoto, (std::int32_t pk, std::int32_t timeMS, const std::string& name), .PK = pk, .Number = timeMS,
              .Texts = {name})
ONLY_RECORDED(DeleteGoto, (std::int32_t pk, std::int32_t timeMS), .PK = pk, .Number = timeMS)
ONLY_RECORDED(CreateCountdown, (std::int32_t pk, std::int32_t timeMS, const std::string& name), .PK = pk,
              .Number = timeMS, .Texts = {name})
ONLY_RECORDED(RenameCountdown, (std::int32_t pk, std::int32_t timeMS, const std::string& name), .PK = pk,
              .Number = timeMS, .Texts = {name})
ONLY_RECORDED(DeleteCountdown, (std::int32_t pk, std::int32_t timeMS), .PK = pk, .Number = timeMS)
ONLY_RECORDED(InstallAsset, (const std::string& path), .Texts = {path})
ONLY_RECORDED(DeleteAsset, (const std::string& path), .Texts = {path})
ONLY_RECORDED(Reconnect, (const std::string& host), .Texts = {host})
ONLY_RECORDED(RebootZorvic, ())
ONLY_RECORDED(SoftRebootZorvic, ())
ONLY_RECORDED(ShutdownZorvic, ())
#undef ONLY_RECORDED

// Commands that have their effect.
StatusCode Session::UpdatePreset(const Preset& preset) {
    return Pimpl->Change({.Operation = "UpdatePreset", .PK = preset.PK, .Sent = preset}, &Unit::FindPreset,
                         [copy = preset](Preset& stored) { stored = copy; });
}
StatusCode Session::Take(std::int32_t pk) {
    return Pimpl->Change({.Operation = "Take", .PK = pk}, &Unit::FindState,
                         [](PresetState& state) { state.IsPlaying = true; });
}
StatusCode Session::RenameGoto(std::int32_t pk, std::int32_t timeMS, const std::string& name) {
    return Pimpl->Change({.Operation = "RenameGoto", .PK = pk, .Number = timeMS, .Texts = {name}}, &Unit::FindPreset,
                         [=](Preset& preset) {
                             for (auto& [id, mark] : preset.Gotos)
                                 if (mark.TimeMS == timeMS) mark.Name = name;
                         });
}

/// A read of everything of one kind.
#define READ(NAME, RESULT, SOURCE)                        \
    StatusCode Session::NAME(RESULT& result) {            \
        return Pimpl->Read(#NAME, result, &Unit::SOURCE); \
    }
READ(GetPresets, std::vector<Preset>, Presets)
READ(GetPresetStates, std::vector<PresetState>, States)
READ(GetKonaHardwareState, KonaHardwareState, Hardware)
READ(GetAssets, std::vector<Asset>, Assets)
READ(GetDisks, std::vector<Drive>, Drives)
#undef READ
StatusCode Session::GetUnitID(std::string& guid, std::string& nickname) {
    nickname = Pimpl->Peer ? Pimpl->Peer->Nickname : std::string();
    return Pimpl->Read("GetUnitID", guid, &Unit::GUID);
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

}  // namespace Zorvic
