#pragma once

#include "wire.h"

#include <google/protobuf/text_format.h>
#include <grpcpp/server.h>
#include <grpcpp/server_builder.h>

#include <atomic>
#include <chrono>
#include <memory>
#include <mutex>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

namespace Wire = ::zorvic::v1;

/// A message from protobuf's text form.
template <class Message>
Message FromText(const std::string& text) {
    Message message;
    if (!google::protobuf::TextFormat::ParseFromString(text, &message)) throw std::invalid_argument(text);
    return message;
}

inline Wire::Piece IdentityPiece(const std::string& guid = "unit-1") {
    return FromText<Wire::Piece>("identity { guid: '" + guid + "' nickname: 'Left wing' }");
}

inline Wire::Piece PresetPiece(const Wire::Preset& upserted) {
    Wire::Piece piece;
    *piece.mutable_presets()->add_upserted() = upserted;
    return piece;
}

inline Wire::Frame MakeFrame(std::uint64_t revision, const std::vector<Wire::Piece>& pieces, bool snapshot = false,
                             bool more = false) {
    Wire::Frame frame;
    frame.set_revision(revision);
    frame.set_snapshot(snapshot);
    frame.set_more(more);
    for (const auto& piece : pieces)
        frame.add_pieces(piece.SerializeAsString());
    return frame;
}

inline Wire::Frame GarbageFrame(std::uint64_t revision) {
    Wire::Frame frame = MakeFrame(revision, {});
    frame.add_pieces("\xff\xff\xff\xff garbage");
    return frame;
}

/// A unit in the test's own process that does what the test says: it streams and lies.
class ScriptedUnit final : public Wire::Unit::Service {
public:
    explicit ScriptedUnit(const std::string& guid = "unit-1") : GUID(guid) {
        grpc::ServerBuilder builder;
        builder.AddListeningPort("127.0.0.1:0", grpc::InsecureServerCredentials(), &Port);
        builder.RegisterService(this);
        Server = builder.BuildAndStart();
    }
    ~ScriptedUnit() override {
        Ending = true;
        Server->Shutdown(std::chrono::system_clock::now());
    }
    std::string Host() const { return "127.0.0.1:" + std::to_string(Port); }

    /// Streams a preset and returns its revision. The last one, from here or from an update, is in the snapshot.
    std::uint64_t Store(const Wire::Preset& preset) {
        const std::scoped_lock lock(Lock);
        Stored = preset;
        Sent.push_back(MakeFrame(++Revision, {PresetPiece(preset)}));
        return Revision;
    }
    void Store(const std::string& preset) { Store(FromText<Wire::Preset>(preset)); }
    /// Puts one frame on every stream as it is.
    void Send(const Wire::Frame& frame) {
        const std::scoped_lock lock(Lock);
        Sent.push_back(frame);
    }
    std::vector<Wire::UpdatePresetRequest> Updates() {
        const std::scoped_lock lock(Lock);
        return Received;
    }
    /// Frames before the last one of a snapshot, 700 ms each.
    std::atomic<int> SlowFrames = 0;
    std::atomic<bool> LastPause = false;
    /// What every update is answered with.
    std::atomic<grpc::StatusCode> UpdateOutcome = grpc::StatusCode::OK;
    std::atomic<Wire::RefusalReason> UpdateReason{};
    int Port = 0;

private:
    template <class Condition>
    void Await(const grpc::ServerContext& call, const Condition& condition) const {
        while (!Ending && !call.IsCancelled() && !condition())
            std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    bool Send(grpc::ServerWriter<Wire::Frame>& writer, const Wire::Frame& frame) {
        return writer.Write(frame) && !Ending;
    }

    grpc::Status Identify(grpc::ServerContext*, const Wire::IdentifyRequest*, Wire::Identity* reply) override {
        *reply = IdentityPiece(GUID).identity();
        return grpc::Status::OK;
    }
    grpc::Status Watch(grpc::ServerContext* call, const Wire::WatchRequest*,
                       grpc::ServerWriter<Wire::Frame>* writer) override {
        for (int number = 0; number < SlowFrames; ++number) {
            std::this_thread::sleep_for(std::chrono::milliseconds(700));
            Send(*writer, MakeFrame(0, {}, true, true));
        }
        auto [frame, next] = Snapshot();
        while (Send(*writer, frame))
            frame = NextFrame(*call, next, frame.revision());
        return grpc::Status::OK;
    }
    std::pair<Wire::Frame, std::size_t> Snapshot() {
        const std::scoped_lock lock(Lock);
        return {MakeFrame(Revision, {IdentityPiece(GUID), PresetPiece(Stored)}, true), Sent.size()};
    }
    Wire::Frame NextFrame(const grpc::ServerContext& call, std::size_t& next, std::uint64_t revision) {
        const auto heartbeat = std::chrono::steady_clock::now() + std::chrono::milliseconds(100);
        Await(call, [&] {
            const std::scoped_lock lock(Lock);
            return next < Sent.size() || std::chrono::steady_clock::now() > heartbeat;
        });
        const std::scoped_lock lock(Lock);
        return next < Sent.size() ? Sent[next++] : MakeFrame(revision, {});
    }
    grpc::Status UpdatePreset(grpc::ServerContext*, const Wire::UpdatePresetRequest* request,
                              Wire::CommandReply* reply) override {
        {
            const std::scoped_lock lock(Lock);
            Received.push_back(*request);
        }
        if (UpdateOutcome == grpc::StatusCode::OK) reply->set_revision(Store(request->preset()));
        Wire::Refusal refusal;
        refusal.set_reason(UpdateReason);
        return {UpdateOutcome, "", refusal.SerializeAsString()};
    }
    grpc::Status Pause(grpc::ServerContext*, const Wire::PauseRequest* request, Wire::CommandReply*) override {
        LastPause = request->paused();
        return request->has_paused() ? grpc::Status::OK : grpc::Status(grpc::INVALID_ARGUMENT, "");
    }
    grpc::Status ListDirectory(grpc::ServerContext* call, const Wire::ListDirectoryRequest*,
                               Wire::ListDirectoryReply*) override {
        Await(*call, [] { return false; });
        return grpc::Status::CANCELLED;
    }

    const std::string GUID;
    std::atomic<bool> Ending = false;
    std::mutex Lock;  // guards what follows but Server
    Wire::Preset Stored;
    std::vector<Wire::Frame> Sent;  // to every stream, which keeps its place in it
    std::uint64_t Revision = 1;
    std::vector<Wire::UpdatePresetRequest> Received;
    std::unique_ptr<grpc::Server> Server;
};
