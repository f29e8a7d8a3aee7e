#include "scripted_unit.h"

#include <google/protobuf/util/field_mask_util.h>
#include <grpcpp/server_builder.h>

#include <chrono>
#include <thread>

using namespace std::chrono_literals;

Wire::Piece IdentityPiece(const std::string& guid) {
    Wire::Piece piece;
    piece.mutable_identity()->set_guid(guid);
    piece.mutable_identity()->set_nickname("Stage left");
    return piece;
}

Wire::Piece PresetPiece(const std::vector<Wire::Preset>& upserted, const std::vector<int>& removed) {
    Wire::Piece piece;
    auto& change = *piece.mutable_presets();
    change.mutable_upserted()->Assign(upserted.begin(), upserted.end());
    change.mutable_removed()->Assign(removed.begin(), removed.end());
    return piece;
}

Wire::Frame MakeFrame(std::uint64_t revision, const std::vector<Wire::Piece>& pieces, bool snapshot, bool more) {
    Wire::Frame frame;
    frame.set_revision(revision);
    frame.set_snapshot(snapshot);
    frame.set_more(more);
    for (const auto& piece : pieces)
        frame.add_pieces(piece.SerializeAsString());
    return frame;
}

ScriptedUnit::ScriptedUnit(const std::string& guid) : GUID(guid) {
    grpc::ServerBuilder builder;
    builder.AddListeningPort("127.0.0.1:0", grpc::InsecureServerCredentials(), &Port);
    builder.RegisterService(this);
    Server = builder.BuildAndStart();
}

ScriptedUnit::~ScriptedUnit() {
    HangUp();
    Server->Shutdown(std::chrono::system_clock::now());
}

std::string ScriptedUnit::Host() const {
    return "127.0.0.1:" + std::to_string(Port);
}

std::uint64_t ScriptedUnit::Store(const Wire::Preset& preset) {
    const std::lock_guard guard(Lock);
    return StoreLocked(preset);
}

std::uint64_t ScriptedUnit::StoreLocked(const Wire::Preset& preset) {
    Presets[preset.pk()] = preset;
    Sent.push_back(MakeFrame(++Revision, {PresetPiece({preset})}));
    Changed.notify_all();
    return Revision;
}

void ScriptedUnit::Send(const Wire::Frame& frame) {
    const std::lock_guard guard(Lock);
    Sent.push_back(frame);
    Changed.notify_all();
}

void ScriptedUnit::SendPieces(const std::vector<Wire::Piece>& pieces) {
    const std::lock_guard guard(Lock);
    Sent.push_back(MakeFrame(++Revision, pieces));
    Changed.notify_all();
}

void ScriptedUnit::Freeze(bool frozen) {
    const std::lock_guard guard(Lock);
    Frozen = frozen;
    Changed.notify_all();
}

void ScriptedUnit::HangUp() {
    const std::lock_guard guard(Lock);
    ++HangUps;
    Frozen = false;
    Changed.notify_all();
}

void ScriptedUnit::AnswerCommandsWith(const grpc::Status& status) {
    const std::lock_guard guard(Lock);
    CommandStatus = status;
}

void ScriptedUnit::DelayStream(std::chrono::milliseconds delay) {
    const std::lock_guard guard(Lock);
    StreamDelay = delay;
}

Wire::Preset ScriptedUnit::Stored(int pk) const {
    const std::lock_guard guard(Lock);
    return Presets.at(pk);
}

std::vector<Wire::UpdatePresetRequest> ScriptedUnit::Updates() const {
    const std::lock_guard guard(Lock);
    return Received;
}

int ScriptedUnit::TakesStarted() const {
    const std::lock_guard guard(Lock);
    return Takes;
}

Wire::Frame ScriptedUnit::Snapshot() const {
    std::vector<Wire::Preset> presets;
    for (const auto& [pk, preset] : Presets)
        presets.push_back(preset);
    return MakeFrame(Revision, {IdentityPiece(GUID), PresetPiece(presets)}, true);
}

grpc::Status ScriptedUnit::Watch(grpc::ServerContext* context, const Wire::WatchRequest*,
                                 grpc::ServerWriter<Wire::Frame>* writer) {
    std::unique_lock lock(Lock);
    WaitWhileFrozen(*context, lock);
    const int hangUps = HangUps;
    std::size_t next = Sent.size();
    Wire::Frame frame = Snapshot();
    while (!context->IsCancelled() && HangUps == hangUps) {
        const auto delay = StreamDelay;
        lock.unlock();
        if (next > 0) std::this_thread::sleep_for(delay);
        writer->Write(frame);
        lock.lock();
        Changed.wait_for(lock, 100ms, [&] { return next < Sent.size() || HangUps != hangUps; });
        WaitWhileFrozen(*context, lock);
        frame = next < Sent.size() ? Sent[next++] : MakeFrame(frame.revision(), {});
    }
    return grpc::Status::OK;
}

grpc::Status ScriptedUnit::UpdatePreset(grpc::ServerContext*, const Wire::UpdatePresetRequest* request,
                                        Wire::CommandReply* reply) {
    const std::lock_guard guard(Lock);
    Received.push_back(*request);
    if (!CommandStatus.ok()) return CommandStatus;
    Wire::Preset preset = Presets[request->preset().pk()];
    google::protobuf::util::FieldMaskUtil::MergeOptions options;
    options.set_replace_message_fields(true);
    options.set_replace_repeated_fields(true);
    google::protobuf::util::FieldMaskUtil::MergeMessageTo(request->preset(), request->fields(), options, &preset);
    reply->set_revision(StoreLocked(preset));
    return grpc::Status::OK;
}

grpc::Status ScriptedUnit::Take(grpc::ServerContext* context, const Wire::PresetRequest*, Wire::CommandReply* reply) {
    std::unique_lock lock(Lock);
    ++Takes;
    Changed.notify_all();
    WaitWhileFrozen(*context, lock);
    reply->set_revision(Revision);
    return CommandStatus;
}

grpc::Status ScriptedUnit::ListDirectory(grpc::ServerContext* context, const Wire::ListDirectoryRequest*,
                                         Wire::ListDirectoryReply* reply) {
    while (!context->IsCancelled())
        std::this_thread::sleep_for(5ms);
    reply->add_entries()->set_filename("too late");
    return grpc::Status::OK;
}

void ScriptedUnit::WaitWhileFrozen(const grpc::ServerContext& context, std::unique_lock<std::mutex>& lock) {
    while (Frozen && !context.IsCancelled())
        Changed.wait_for(lock, 10ms);
}
