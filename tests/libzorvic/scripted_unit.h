#pragma once

#include "wire.h"

#include <grpcpp/server.h>

#include <condition_variable>
#include <deque>
#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace Wire = ::zorvic::v1;

/// Pieces and frames as a unit sends them.
Wire::Piece IdentityPiece(const std::string& guid);
Wire::Piece PresetPiece(const std::vector<Wire::Preset>& upserted, const std::vector<int>& removed = {});
Wire::Frame MakeFrame(std::uint64_t revision, const std::vector<Wire::Piece>& pieces, bool snapshot = false,
                      bool more = false);

/// A unit in the test's own process that does what the test says: it streams, lies, falls silent or hangs up on
/// command.
class ScriptedUnit final : public Wire::Unit::Service {
public:
    explicit ScriptedUnit(const std::string& guid = "unit-1");
    ~ScriptedUnit() override;

    std::string Host() const;

    /// Stores a preset and streams the change. Returns its revision.
    std::uint64_t Store(const Wire::Preset& preset);
    /// Puts one frame on every stream as it is.
    void Send(const Wire::Frame& frame);
    /// Streams a change made of these pieces, at a revision of its own.
    void SendPieces(const std::vector<Wire::Piece>& pieces);
    /// A frozen unit keeps its connections, sends nothing and answers nothing.
    void Freeze(bool frozen);
    /// Ends every stream.
    void HangUp();
    /// What every command is answered with from now on.
    void AnswerCommandsWith(const grpc::Status& status);
    /// Changes reach the streams only this much later than the reply of the command that made them.
    void DelayStream(std::chrono::milliseconds delay);

    Wire::Preset Stored(int pk) const;
    std::vector<Wire::UpdatePresetRequest> Updates() const;
    int TakesStarted() const;

private:
    grpc::Status Watch(grpc::ServerContext* context, const Wire::WatchRequest*,
                       grpc::ServerWriter<Wire::Frame>* writer) override;
    grpc::Status UpdatePreset(grpc::ServerContext*, const Wire::UpdatePresetRequest*, Wire::CommandReply*) override;
    grpc::Status Take(grpc::ServerContext*, const Wire::PresetRequest*, Wire::CommandReply*) override;
    grpc::Status ListDirectory(grpc::ServerContext*, const Wire::ListDirectoryRequest*,
                               Wire::ListDirectoryReply*) override;
    Wire::Frame Snapshot() const;
    std::uint64_t StoreLocked(const Wire::Preset& preset);
    void WaitWhileFrozen(const grpc::ServerContext& context, std::unique_lock<std::mutex>& lock);

    const std::string GUID;
    mutable std::mutex Lock;  // guards everything below but Server
    std::condition_variable Changed;
    std::map<int, Wire::Preset> Presets;
    std::vector<Wire::Frame> Sent;  // to every stream, which keeps its place in it
    std::uint64_t Revision = 1;
    int HangUps = 0;
    int Takes = 0;
    bool Frozen = false;
    grpc::Status CommandStatus;
    std::chrono::milliseconds StreamDelay{0};
    std::vector<Wire::UpdatePresetRequest> Received;
    int Port = 0;
    std::unique_ptr<grpc::Server> Server;
};
