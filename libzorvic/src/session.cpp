#include <zorvic/session.h>

#include "conversions.h"
#include "session_impl.h"

#include <utility>

namespace Zorvic {
namespace {

using Internal::Wire::MarkKind;
using Stub = Internal::Wire::Unit::Stub;

/// A drive that hangs must not hold the console.
constexpr std::chrono::milliseconds ListingLimit{150};

Internal::Wire::PresetRequest PresetRequest(std::int32_t pk) {
    Internal::Wire::PresetRequest request;
    request.set_pk(pk);
    return request;
}

Internal::Wire::AssetRequest AssetRequest(const std::string& path) {
    Internal::Wire::AssetRequest request;
    request.set_path(path);
    return request;
}

Internal::Wire::MarkRequest MarkRequest(MarkKind kind, std::int32_t pk, std::int32_t timeMS,
                                        const std::string& name = {}) {
    Internal::Wire::MarkRequest request;
    request.set_kind(kind);
    request.set_pk(pk);
    request.set_time_ms(timeMS);
    request.set_name(name);
    return request;
}

}  // namespace

Session::Session(const std::string& host, int /*flag*/) : Pimpl(std::make_unique<Impl>(host)) {}

Session::~Session() = default;

bool Session::Connected() const {
    return Pimpl->Connected();
}

std::string Session::GetHost() const {
    return Pimpl->Host;
}

StatusCode Session::Reconnect(const std::string& host) {
    return Pimpl->Reconnect(host);
}

StatusCode Session::GetUnitID(std::string& guid, std::string& nickname) {
    const auto state = Pimpl->State();
    if (!state) return ZORVIC_STATUS_NETWORKERROR;
    guid = state->GUID;
    nickname = state->Nickname;
    return ZORVIC_STATUS_OK;
}

StatusCode Session::GetPresets(std::vector<Preset>& presets) {
    const auto state = Pimpl->State();
    if (!state) return ZORVIC_STATUS_NETWORKERROR;
    Internal::CopyRecords(*state->Presets, presets);
    Pimpl->Edits.HandedOut(state->Presets, Internal::Connection::Clock::now());
    return ZORVIC_STATUS_OK;
}

StatusCode Session::GetPresetStates(std::vector<PresetState>& states) {
    const auto state = Pimpl->State();
    if (!state) return ZORVIC_STATUS_NETWORKERROR;
    Internal::CopyRecords(*state->PresetStates, states);
    return ZORVIC_STATUS_OK;
}

StatusCode Session::CreatePreset(const Preset& preset) {
    Internal::Wire::CreatePresetRequest request;
    *request.mutable_preset() = Internal::ToWire(preset);
    request.mutable_preset()->clear_pk();
    Internal::RoundPictureValues(*request.mutable_preset());
    return Pimpl->Create(&Stub::CreatePreset, std::move(request));
}

StatusCode Session::UpdatePreset(const Preset& preset) {
    return Pimpl->UpdatePreset(preset);
}

StatusCode Session::DeletePreset(std::int32_t pk) {
    return Pimpl->Command(&Stub::DeletePreset, PresetRequest(pk));
}

StatusCode Session::SelectPreset(std::int32_t pk) {
    return Pimpl->Command(&Stub::SelectPreset, PresetRequest(pk));
}

StatusCode Session::Take(std::int32_t pk) {
    return Pimpl->Command(&Stub::Take, PresetRequest(pk));
}

// Says what it wants and not "the other way round": a lost answer and a second try, or two consoles at once, must not
// undo each other.
StatusCode Session::Pause(std::int32_t pk) {
    const auto state = Pimpl->State();
    if (!state) return ZORVIC_STATUS_NETWORKERROR;
    Internal::Wire::PauseRequest request;
    request.set_pk(pk);
    const PresetState* shown = state->PresetStates->Find(pk);
    request.set_paused(!(shown && shown->IsPlaying && shown->IsPaused));
    return Pimpl->Command(&Stub::Pause, request);
}

StatusCode Session::End(std::int32_t pk) {
    return Pimpl->Command(&Stub::End, PresetRequest(pk));
}

StatusCode Session::SeekTo(std::int32_t pk, std::uint32_t timeMS) {
    Internal::Wire::SeekRequest request;
    request.set_pk(pk);
    request.set_time_ms(timeMS);
    return Pimpl->Command(&Stub::SeekTo, request);
}

StatusCode Session::CreateGoto(std::int32_t pk, std::int32_t timeMS, const std::string& name) {
    return Pimpl->Create(&Stub::CreateMark, MarkRequest(MarkKind::MARK_KIND_GOTO, pk, timeMS, name));
}

StatusCode Session::CreateCountdown(std::int32_t pk, std::int32_t timeMS, const std::string& name) {
    return Pimpl->Create(&Stub::CreateMark, MarkRequest(MarkKind::MARK_KIND_COUNTDOWN, pk, timeMS, name));
}

StatusCode Session::RenameGoto(std::int32_t pk, std::int32_t timeMS, const std::string& name) {
    return Pimpl->Command(&Stub::RenameMark, MarkRequest(MarkKind::MARK_KIND_GOTO, pk, timeMS, name));
}

StatusCode Session::RenameCountdown(std::int32_t pk, std::int32_t timeMS, const std::string& name) {
    return Pimpl->Command(&Stub::RenameMark, MarkRequest(MarkKind::MARK_KIND_COUNTDOWN, pk, timeMS, name));
}

StatusCode Session::DeleteGoto(std::int32_t pk, std::int32_t timeMS) {
    return Pimpl->Command(&Stub::DeleteMark, MarkRequest(MarkKind::MARK_KIND_GOTO, pk, timeMS));
}

StatusCode Session::DeleteCountdown(std::int32_t pk, std::int32_t timeMS) {
    return Pimpl->Command(&Stub::DeleteMark, MarkRequest(MarkKind::MARK_KIND_COUNTDOWN, pk, timeMS));
}

StatusCode Session::GetTimeCode(TimeCode& timeCode, std::int32_t pk) {
    const auto state = Pimpl->State();
    if (!state) return ZORVIC_STATUS_NETWORKERROR;
    for (const TimeCode& candidate : *state->TimeCodes) {
        if (candidate.PK != pk) continue;
        timeCode = candidate;
        return ZORVIC_STATUS_OK;
    }
    return ZORVIC_STATUS_FAILED;
}

StatusCode Session::GetKonaHardwareState(KonaHardwareState& hardware) {
    const auto state = Pimpl->State();
    if (!state) return ZORVIC_STATUS_NETWORKERROR;
    hardware = state->Hardware;
    return ZORVIC_STATUS_OK;
}

StatusCode Session::GetAssets(std::vector<Asset>& assets) {
    const auto state = Pimpl->State();
    if (!state) return ZORVIC_STATUS_NETWORKERROR;
    Internal::CopyRecords(*state->Assets, assets);
    return ZORVIC_STATUS_OK;
}

StatusCode Session::DeleteAsset(const std::string& path) {
    return Pimpl->Command(&Stub::DeleteAsset, AssetRequest(path));
}

StatusCode Session::ReadAssetMetadata(const std::string& path, AssetMetadata& metadata) {
    const auto state = Pimpl->State();
    if (!state) return ZORVIC_STATUS_NETWORKERROR;
    const Internal::StoredAsset* asset = Internal::FindAsset(*state->Assets, path);
    if (asset && asset->Metadata) {
        metadata = *asset->Metadata;
        return ZORVIC_STATUS_OK;
    }
    Internal::Wire::AssetMetadata reply;
    const StatusCode result = Pimpl->Ask(&Stub::ReadAssetMetadata, AssetRequest(path), reply);
    if (result == ZORVIC_STATUS_OK) metadata = Internal::FromWire(reply);
    return result;
}

StatusCode Session::GetDisks(std::vector<Drive>& drives) {
    const auto state = Pimpl->State();
    if (!state) return ZORVIC_STATUS_NETWORKERROR;
    drives = *state->Drives;
    return ZORVIC_STATUS_OK;
}

StatusCode Session::GetDiskAssets(std::vector<ExternalAsset>& entries, const std::string& drive,
                                  const std::string& path) {
    Internal::Wire::ListDirectoryRequest request;
    request.set_drive(drive);
    request.set_path(path);
    Internal::Wire::ListDirectoryReply reply;
    const StatusCode result = Pimpl->Ask(&Stub::ListDirectory, request, reply, ListingLimit);
    // In time or not, the link is there: the drive is what did not answer.
    if (result == ZORVIC_STATUS_NETWORKERROR && Connected()) return ZORVIC_STATUS_FAILED;
    if (result != ZORVIC_STATUS_OK) return result;
    entries.clear();
    entries.reserve(static_cast<std::size_t>(reply.entries_size()));
    for (const auto& entry : reply.entries())
        entries.push_back(Internal::FromWire(entry));
    return ZORVIC_STATUS_OK;
}

StatusCode Session::InstallAsset(const std::string& path) {
    return Pimpl->Command(&Stub::InstallAsset, AssetRequest(path));
}

StatusCode Session::RebootZorvic() {
    return Pimpl->Power(Internal::Wire::POWER_ACTION_REBOOT);
}

StatusCode Session::SoftRebootZorvic() {
    return Pimpl->Power(Internal::Wire::POWER_ACTION_SOFT_REBOOT);
}

StatusCode Session::ShutdownZorvic() {
    return Pimpl->Power(Internal::Wire::POWER_ACTION_SHUTDOWN);
}

StatusCode Session::SetStateEventCallback(StateEventType type, StateEventCallback fn, void* user) {
    if (type <= ZORVIC_STATE_INVALID || type >= ZORVIC_STATE_MAX) return ZORVIC_STATUS_MISUSED;
    Pimpl->Events.Register(type, fn, user);
    return ZORVIC_STATUS_OK;
}

}  // namespace Zorvic
