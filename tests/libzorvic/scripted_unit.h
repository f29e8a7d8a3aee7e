#pragma once

#include "wire.h"

#include <grpcpp/server.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <type_traits>
#include <vector>

namespace Wire = ::zorvic::v1;

/// Records, pieces and frames as a unit sends them.
Wire::Preset NamedPreset(int pk, const std::string& name);
Wire::Piece IdentityPiece(const std::string& guid);
Wire::Piece PresetPiece(const std::vector<Wire::Preset>& upserted);
Wire::Frame MakeFrame(std::uint64_t revision, const std::vector<Wire::Piece>& pieces, bool snapshot = false,
                      bool more = false);

/// A unit in the test's own process that does what the test says: it streams, lies, falls silent or hangs up on
/// command.
class ScriptedUnit final : public Wire::Unit::Service {
public:
    explicit ScriptedUnit(const std::string& guid = "unit-1");
    ~ScriptedUnit() override;

    int ListeningPort() const { return Port; }
    std::string Host() const { return "127.0.0.1:" + std::to_string(Port); }

    /// Stores a preset and streams the change.
    void Store(const Wire::Preset& preset) {
        Locked([&] { StoreLocked(preset); });
    }
    /// Puts one frame on every stream as it is.
    void Send(const Wire::Frame& frame) {
        Locked([&] { Sent.push_back(frame); });
    }
    /// Streams a change made of this piece, at a revision of its own.
    void SendPiece(const Wire::Piece& piece) {
        Locked([&] { Sent.push_back(MakeFrame(++Revision, {piece})); });
    }
    /// What every command is answered with from now on.
    void AnswerCommandsWith(const grpc::Status& status) {
        Locked([&] { CommandStatus = status; });
    }
    Wire::Preset Stored(int pk) {
        return Locked([&] { return Presets.at(pk); });
    }
    std::vector<Wire::UpdatePresetRequest> Updates() {
        return Locked([&] { return Received; });
    }
    /// A frozen unit keeps its connections, sends nothing and answers nothing.
    std::atomic<bool> Frozen = false;
    /// Changes reach the streams only this much later than the reply of the command that made them.
    std::atomic<std::chrono::milliseconds> StreamDelay{};
    std::atomic<int> TakesStarted = 0;

private:
    template <typename Action>
    std::invoke_result_t<Action> Locked(const Action& action) {
        const std::scoped_lock lock(Lock);
        Changed.notify_all();
        return action();
    }
    grpc::Status Identify(grpc::ServerContext*, const Wire::IdentifyRequest*, Wire::Identity* reply) override;
    grpc::Status Watch(grpc::ServerContext* context, const Wire::WatchRequest*,
                       grpc::ServerWriter<Wire::Frame>* writer) override;
    grpc::Status UpdatePreset(grpc::ServerContext*, const Wire::UpdatePresetRequest*, Wire::CommandReply*) override;
    grpc::Status Take(grpc::ServerContext*, const Wire::PresetRequest*, Wire::CommandReply*) override;
    grpc::Status ListDirectory(grpc::ServerContext* context, const Wire::ListDirectoryRequest*,
                               Wire::ListDirectoryReply*) override;
    Wire::Frame Snapshot() const;
    void StoreLocked(const Wire::Preset& preset);
    void WaitWhileFrozen(const grpc::ServerContext& context, std::unique_lock<std::mutex>& lock);

    const std::string GUID;
    int Port = 0;
    std::mutex Lock;  // guards everything below but Server
    std::condition_variable Changed;
    std::map<int, Wire::Preset> Presets;
    std::vector<Wire::Frame> Sent;  // to every stream, which keeps its place in it
    std::uint64_t Revision = 1;
    bool Ending = false;
    grpc::Status CommandStatus;
    std::vector<Wire::UpdatePresetRequest> Received;
    std::unique_ptr<grpc::Server> Server;
};
