#include "scripted_unit.h"

#include <google/protobuf/util/field_mask_util.h>
#include <grpcpp/server_builder.h>

#include <thread>

using namespace std::chrono_literals;

Wire::Preset NamedPreset(int pk, const std::string& name) {
    Wire::Preset preset;
    preset.set_pk(pk);
    preset.set_name(name);
    return preset;
}

Wire::Piece IdentityPiece(const std::string& guid) {
    Wire::Piece piece;
    piece.mutable_identity()->set_guid(guid);
    piece.mutable_identity()->set_nickname("Left wing");
    return piece;
}

Wire::Piece PresetPiece(const std::vector<Wire::Preset>& upserted) {
    Wire::Piece piece;
    piece.mutable_presets()->mutable_upserted()->Assign(upserted.begin(), upserted.end());
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
    Locked([this] { Ending = true; });
    Server->Shutdown(std::chrono::system_clock::now());
}

void ScriptedUnit::StoreLocked(const Wire::Preset& preset) {
    Presets[preset.pk()] = preset;
    Sent.push_back(MakeFrame(++Revision, {PresetPiece({preset})}));
    Changed.notify_all();
}

Wire::Frame ScriptedUnit::Snapshot() const {
    std::vector<Wire::Preset> presets;
    for (const auto& [pk, preset] : Presets)
        presets.push_back(preset);
    return MakeFrame(Revision, {IdentityPiece(GUID), PresetPiece(presets)}, true);
}

grpc::Status ScriptedUnit::Identify(grpc::ServerContext*, const Wire::IdentifyRequest*, Wire::Identity* reply) {
    *reply = IdentityPiece(GUID).identity();
    return grpc::Status::OK;
}

grpc::Status ScriptedUnit::Watch(grpc::ServerContext* context, const Wire::WatchRequest*,
                                 grpc::ServerWriter<Wire::Frame>* writer) {
    std::unique_lock lock(Lock);
    WaitWhileFrozen(*context, lock);
    std::size_t next = Sent.size();
    Wire::Frame frame = Snapshot();
    while (!context->IsCancelled() && !Ending) {
        lock.unlock();
        if (next > 0) std::this_thread::sleep_for(StreamDelay.load());
        writer->Write(frame);
        lock.lock();
        Changed.wait_for(lock, 100ms, [&] { return next < Sent.size() || Ending; });
        WaitWhileFrozen(*context, lock);
        frame = next < Sent.size() ? Sent[next++] : MakeFrame(frame.revision(), {});
    }
    return grpc::Status::OK;
}

grpc::Status ScriptedUnit::UpdatePreset(grpc::ServerContext*, const Wire::UpdatePresetRequest* request,
                                        Wire::CommandReply* reply) {
    const std::scoped_lock lock(Lock);
    Received.push_back(*request);
    if (!CommandStatus.ok()) return CommandStatus;
    Wire::Preset preset = Presets[request->preset().pk()];
    google::protobuf::util::FieldMaskUtil::MergeOptions options;
    options.set_replace_message_fields(true);
    options.set_replace_repeated_fields(true);
    google::protobuf::util::FieldMaskUtil::MergeMessageTo(request->preset(), request->fields(), options, &preset);
    StoreLocked(preset);
    reply->set_revision(Revision);
    return grpc::Status::OK;
}

grpc::Status ScriptedUnit::Take(grpc::ServerContext* context, const Wire::PresetRequest*, Wire::CommandReply* reply) {
    std::unique_lock lock(Lock);
    ++TakesStarted;
    WaitWhileFrozen(*context, lock);
    reply->set_revision(Revision);
    return CommandStatus;
}

grpc::Status ScriptedUnit::ListDirectory(grpc::ServerContext* context, const Wire::ListDirectoryRequest*,
                                         Wire::ListDirectoryReply*) {
    while (!context->IsCancelled())
        std::this_thread::sleep_for(5ms);
    return grpc::Status::CANCELLED;
}

void ScriptedUnit::WaitWhileFrozen(const grpc::ServerContext& context, std::unique_lock<std::mutex>& lock) {
    while (Frozen && !Ending && !context.IsCancelled())
        Changed.wait_for(lock, 10ms);
}
