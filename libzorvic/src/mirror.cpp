#include "mirror.h"

#include "conversions.h"
#include "events.h"
#include "link_error.h"

#include <google/protobuf/arena.h>

#include <string>
#include <utility>

namespace Zorvic::Internal {
namespace {

/// The list as it is after a piece: a chunk of a snapshot adds to it, a change replaces it.
template <class Record, class WireList>
std::shared_ptr<std::vector<Record>> Extended(const std::vector<Record>& before, const WireList& chunk, bool snapshot) {
    auto list = std::make_shared<std::vector<Record>>();
    if (snapshot) *list = before;
    list->reserve(list->size() + static_cast<std::size_t>(chunk.size()));
    for (const auto& record : chunk)
        list->push_back(FromWire(record));
    return list;
}

}  // namespace

const Preset* FindPreset(const PresetList& presets, std::int32_t pk) {
    const auto* preset = presets.Find(pk);
    return preset ? preset->get() : nullptr;
}

const StoredAsset* FindAsset(const AssetList& assets, const std::string& path) {
    const auto* asset = assets.Find(path);
    return asset ? asset->get() : nullptr;
}

void CopyRecords(const PresetList& from, std::vector<Preset>& to) {
    to.resize(from.Size());
    from.ForEach([next = to.begin()](const auto& preset) mutable { *next++ = *preset; });
}

void CopyRecords(const AssetList& from, std::vector<Asset>& to) {
    to.resize(from.Size());
    from.ForEach([next = to.begin()](const auto& asset) mutable { *next++ = asset->Record; });
}

void CopyRecords(const StateList& from, std::vector<PresetState>& to) {
    to.resize(from.Size());
    from.ForEach([next = to.begin()](const auto& state) mutable { *next++ = state; });
}

Mirror::Mirror(std::string guid, std::shared_ptr<const UnitState> known) : GUID(std::move(guid)) {
    if (!known) return;
    Next = *known;
    Presets = *known->Presets;
    Assets = *known->Assets;
    States = *known->PresetStates;
    Unknown = *known->Unknown;
    Resumable = true;
}

void Mirror::Certify(const std::string& guid) {
    if (guid.empty()) throw LinkError("who answers has no certificate of a unit");
    if (!GUID.empty() && guid != GUID) throw LinkError("another unit answers: " + guid);
    GUID = guid;
}

unsigned Mirror::Apply(const Wire::Frame& frame) {
    StartFrame(frame);
    for (const std::string& bytes : frame.pieces())
        ApplyPiece(bytes);
    return frame.more() ? 0 : Publish();
}

void Mirror::StartFrame(const Wire::Frame& frame) {
    if (frame.snapshot() && !InSnapshot) {
        Presets.Clear();
        Assets.Clear();
        States.Clear();
        Unknown.clear();
        const std::uint64_t reached = Current() ? Next.Revision : 0;
        Next = UnitState{};
        Next.Revision = reached;
        Changes = AllEvents;
        InSnapshot = true;
    } else if (!frame.snapshot() && (InSnapshot || !Resumable)) {
        throw LinkError("a change came before the snapshot was complete");
    }
    if (frame.revision() < Next.Revision) throw LinkError("the revision went back");
    Next.Revision = frame.revision();
}

void Mirror::ApplyPiece(const std::string& bytes) {
    google::protobuf::Arena arena;  // many small records at once: parsing on an arena takes a fifth of the time
    auto& piece = *google::protobuf::Arena::CreateMessage<Wire::Piece>(&arena);
    if (!piece.ParseFromString(bytes)) throw LinkError("a piece of the state cannot be read");
    switch (piece.content_case()) {
        case Wire::Piece::kIdentity:
            return ApplyIdentity(piece.identity());
        case Wire::Piece::kPresets:
            return ApplyPresets(piece.presets());
        case Wire::Piece::kStates:
            return ApplyStates(piece.states());
        case Wire::Piece::kStateChange:
            return ApplyStateChange(piece.state_change());
        case Wire::Piece::kAssets:
            return ApplyAssets(piece.assets());
        case Wire::Piece::kHardware:
            Next.Hardware = FromWire(piece.hardware());
            Changes |= EventBit(ZORVIC_STATE_HWSTATE);
            return;
        case Wire::Piece::kDrives:
            Next.Drives = Extended<Drive>(*Next.Drives, piece.drives().drives(), InSnapshot);
            return;
        case Wire::Piece::kTimecodes:
            Next.TimeCodes = Extended<TimeCode>(*Next.TimeCodes, piece.timecodes().timecodes(), InSnapshot);
            Changes |= EventBit(ZORVIC_STATE_TIMECODE);
            return;
        case Wire::Piece::CONTENT_NOT_SET:
            return;  // a kind of state that only a newer library knows
    }
}

void Mirror::ApplyIdentity(const Wire::Identity& identity) {
    if (!GUID.empty() && identity.guid() != GUID) throw LinkError("another unit answers: " + identity.guid());
    if (!SpeaksAlike(identity.api_version())) {
        throw LinkError("the unit speaks version " + identity.api_version() +
                        " of the protocol and this library version " + ApiVersion + ": update the older one");
    }
    Next.GUID = identity.guid();
    Next.Nickname = identity.nickname();
    Next.Run = identity.run();
}

void Mirror::ApplyPresets(const Wire::PresetChange& change) {
    for (const auto& preset : change.upserted()) {
        Presets.Set(std::make_shared<const Preset>(FromWire(preset)));
        RememberUnknown(preset);
    }
    for (const std::int32_t pk : change.removed()) {
        Presets.Erase(pk);
        Unknown.erase(pk);
    }
    Changes |= EventBit(ZORVIC_STATE_PRESETS);
}

// The unit may be newer than this library; most are not.
void Mirror::RememberUnknown(const Wire::Preset& preset) {
    if (HoldsUnknownFields(preset)) {
        Unknown[preset.pk()] = std::make_shared<const Wire::Preset>(preset);
    } else {
        Unknown.erase(preset.pk());
    }
}

void Mirror::ApplyStates(const Wire::PresetStates& states) {
    if (!InSnapshot) States.Clear();
    for (const auto& state : states.states())
        States.Set(FromWire(state));
    Changes |= EventBit(ZORVIC_STATE_PRESETSTATES);
}

void Mirror::ApplyStateChange(const Wire::PresetStateChange& change) {
    for (const auto& state : change.upserted())
        States.Set(FromWire(state));
    for (const std::int32_t pk : change.removed())
        States.Erase(pk);
    Changes |= EventBit(ZORVIC_STATE_PRESETSTATES);
}

void Mirror::ApplyAssets(const Wire::AssetChange& change) {
    for (const auto& from : change.upserted()) {
        StoredAsset asset{FromWire(from), std::nullopt};
        if (from.has_metadata()) asset.Metadata = FromWire(from.metadata());
        Assets.Set(std::make_shared<const StoredAsset>(std::move(asset)));
    }
    for (const std::string& path : change.removed())
        Assets.Erase(path);
    Changes |= EventBit(ZORVIC_STATE_ASSETS);
}

unsigned Mirror::Publish() {
    if (InSnapshot && Next.GUID.empty()) throw LinkError("the unit does not say who it is");
    InSnapshot = false;
    Resumable = true;
    GUID = Next.GUID;
    const unsigned changes = std::exchange(Changes, 0);
    if ((changes & EventBit(ZORVIC_STATE_PRESETS)) != 0) {
        Next.Presets = Presets.Share();
        if (!Unknown.empty() || !Next.Unknown->empty()) Next.Unknown = std::make_shared<UnknownFields>(Unknown);
    }
    if ((changes & EventBit(ZORVIC_STATE_ASSETS)) != 0) Next.Assets = Assets.Share();
    if ((changes & EventBit(ZORVIC_STATE_PRESETSTATES)) != 0) Next.PresetStates = States.Share();
    auto state = std::make_shared<const UnitState>(Next);
    {
        const std::scoped_lock lock(Lock);
        Published = std::move(state);
    }
    Changed.notify_all();
    return changes;
}

std::shared_ptr<const UnitState> Mirror::Current() const {
    const std::scoped_lock lock(Lock);
    return Published;
}

void Mirror::WaitForRevision(std::uint64_t revision, std::chrono::steady_clock::time_point deadline) const {
    std::unique_lock lock(Lock);
    Changed.wait_until(lock, deadline, [&] { return Closed || (Published && Published->Revision >= revision); });
}

void Mirror::Close() {
    {
        const std::scoped_lock lock(Lock);
        Closed = true;
    }
    Changed.notify_all();
}

}  // namespace Zorvic::Internal
