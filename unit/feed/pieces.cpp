#include "feed/pieces.h"

#include <utility>

namespace ZorvicUnit {

using zorvic::v1::Piece;

namespace {

FeedChange MakeChange(FeedKind kind, std::string id, const Piece& piece, bool gone = false) {
    return {{kind, std::move(id)}, std::make_shared<const std::string>(piece.SerializeAsString()), gone};
}

}  // namespace

FeedChange IdentityChange(const zorvic::v1::Identity& identity) {
    Piece piece;
    *piece.mutable_identity() = identity;
    return MakeChange(FeedKind::Identity, {}, piece);
}

FeedChange HardwareChange(const zorvic::v1::HardwareState& hardware) {
    Piece piece;
    *piece.mutable_hardware() = hardware;
    return MakeChange(FeedKind::Hardware, {}, piece);
}

FeedChange PresetChanged(const zorvic::v1::Preset& preset) {
    Piece piece;
    *piece.mutable_presets()->add_upserted() = preset;
    return MakeChange(FeedKind::Presets, std::to_string(preset.pk()), piece);
}

FeedChange PresetGone(std::int32_t pk) {
    Piece piece;
    piece.mutable_presets()->add_removed(pk);
    return MakeChange(FeedKind::Presets, std::to_string(pk), piece, true);
}

FeedChange AssetChanged(const zorvic::v1::Asset& asset) {
    Piece piece;
    *piece.mutable_assets()->add_upserted() = asset;
    return MakeChange(FeedKind::Assets, asset.full_path(), piece);
}

FeedChange AssetGone(const std::string& path) {
    Piece piece;
    piece.mutable_assets()->add_removed(path);
    return MakeChange(FeedKind::Assets, path, piece, true);
}

FeedChange StateChanged(const zorvic::v1::PresetState& state) {
    Piece piece;
    *piece.mutable_state_change()->add_upserted() = state;
    return MakeChange(FeedKind::States, std::to_string(state.pk()), piece);
}

FeedChange StateGone(std::int32_t pk) {
    Piece piece;
    piece.mutable_state_change()->add_removed(pk);
    return MakeChange(FeedKind::States, std::to_string(pk), piece, true);
}

FeedChange DrivesChange(const std::vector<zorvic::v1::Drive>& drives) {
    Piece piece;
    piece.mutable_drives()->mutable_drives()->Assign(drives.begin(), drives.end());
    return MakeChange(FeedKind::Drives, {}, piece);
}

FeedChange TimeCodesChange(zorvic::v1::TimeCodes timeCodes) {
    Piece piece;
    *piece.mutable_timecodes() = std::move(timeCodes);
    return MakeChange(FeedKind::TimeCodes, {}, piece);
}

PieceBytes WholeStates(const std::vector<PieceBytes>& single) {
    Piece whole;
    auto& states = *whole.mutable_states();
    Piece piece;
    for (const PieceBytes& bytes : single) {
        piece.ParseFromString(*bytes);
        states.mutable_states()->MergeFrom(piece.state_change().upserted());
    }
    return std::make_shared<const std::string>(whole.SerializeAsString());
}

}  // namespace ZorvicUnit
