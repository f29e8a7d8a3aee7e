#pragma once

#include "asrun/recorder.h"
#include "asrun/sheet.h"
#include "caller.h"
#include "rpc/call_clock.h"
#include "rpc/places.h"
#include "rpc/request_gate.h"
#include "rpc/request_log.h"
#include "rpc/write_limit.h"

#include <zorvic/v1/unit.grpc.pb.h>

#include <chrono>
#include <functional>
#include <string>
#include <utility>

namespace ZorvicUnit {

class AssetLink;
class AssetStore;
class Feed;
class Previews;
class UnitModel;

/// The protocol's server side: one short handler per request. Every Fault becomes the one wire status it maps to and a
/// line in the log; no other exception leaves a handler either. Handlers run on threads of the RPC library.
class UnitService final : public zorvic::v1::Unit::Service {
public:
    using PowerHandler = std::function<void(zorvic::v1::PowerAction)>;
    using FiguresReader = std::function<zorvic::v1::Figures()>;

    /// Why the holder of a certificate may not be here (any more); empty when it may.
    using Admission = std::function<std::string(const grpc::AuthContext&)>;

    /// Who takes longer to take what it asked for is let go.
    static constexpr std::chrono::milliseconds LongestWrite{10'000};

    /// All references must outlive the object. power is called from a handler's thread before the reply has left, so it
    /// must only take note.
    UnitService(zorvic::v1::Identity identity, UnitModel& model, AssetStore& assets, AssetLink& link, Feed& updates,
                Previews& pictures, PowerHandler power, std::chrono::milliseconds writeLimit = LongestWrite);

    /// Before the first request. Both must outlive the object; without them no sheet can be read.
    void KeepSheet(Sheet& sheet, Recorder& record);
    /// Asked again and again while a console watches: one call may last for weeks. To be set before the first request.
    void SetAdmission(Admission admission) { Admitted = std::move(admission); }

    /// Where the figures of what is shown come from; there are none without it. To be called before the first request.
    void SetFiguresReader(FiguresReader read) { ReadRenderer = std::move(read); }

    /// Turns further requests away and waits for those being carried out, no longer than the limit.
    void Drain(std::chrono::milliseconds limit) { Gate.Close(limit); }

    grpc::Status Watch(grpc::ServerContext* context, const zorvic::v1::WatchRequest* request,
                       grpc::ServerWriter<zorvic::v1::Frame>* writer) override;
    grpc::Status WatchPreview(grpc::ServerContext* context, const zorvic::v1::WatchPreviewRequest* request,
                              grpc::ServerWriter<zorvic::v1::PreviewFrame>* writer) override;
    grpc::Status ReadAsRun(grpc::ServerContext* context, const zorvic::v1::AsRunRequest* request,
                           grpc::ServerWriter<zorvic::v1::AsRunEntries>* writer) override;
    grpc::Status Identify(grpc::ServerContext* context, const zorvic::v1::IdentifyRequest* request,
                          zorvic::v1::Identity* reply) override;
    grpc::Status ReadFigures(grpc::ServerContext* context, const zorvic::v1::ReadFiguresRequest* request,
                             zorvic::v1::Figures* reply) override;

    grpc::Status CreatePreset(grpc::ServerContext* context, const zorvic::v1::CreatePresetRequest* request,
                              zorvic::v1::CommandReply* reply) override;
    grpc::Status UpdatePreset(grpc::ServerContext* context, const zorvic::v1::UpdatePresetRequest* request,
                              zorvic::v1::CommandReply* reply) override;
    grpc::Status DeletePreset(grpc::ServerContext* context, const zorvic::v1::PresetRequest* request,
                              zorvic::v1::CommandReply* reply) override;
    grpc::Status SelectPreset(grpc::ServerContext* context, const zorvic::v1::PresetRequest* request,
                              zorvic::v1::CommandReply* reply) override;
    grpc::Status Take(grpc::ServerContext* context, const zorvic::v1::PresetRequest* request,
                      zorvic::v1::CommandReply* reply) override;
    grpc::Status Pause(grpc::ServerContext* context, const zorvic::v1::PauseRequest* request,
                       zorvic::v1::CommandReply* reply) override;
    grpc::Status End(grpc::ServerContext* context, const zorvic::v1::PresetRequest* request,
                     zorvic::v1::CommandReply* reply) override;
    grpc::Status SeekTo(grpc::ServerContext* context, const zorvic::v1::SeekRequest* request,
                        zorvic::v1::CommandReply* reply) override;
    grpc::Status CreateMark(grpc::ServerContext* context, const zorvic::v1::MarkRequest* request,
                            zorvic::v1::CommandReply* reply) override;
    grpc::Status RenameMark(grpc::ServerContext* context, const zorvic::v1::MarkRequest* request,
                            zorvic::v1::CommandReply* reply) override;
    grpc::Status DeleteMark(grpc::ServerContext* context, const zorvic::v1::MarkRequest* request,
                            zorvic::v1::CommandReply* reply) override;
    grpc::Status DeleteAsset(grpc::ServerContext* context, const zorvic::v1::AssetRequest* request,
                             zorvic::v1::CommandReply* reply) override;
    grpc::Status InstallAsset(grpc::ServerContext* context, const zorvic::v1::AssetRequest* request,
                              zorvic::v1::CommandReply* reply) override;
    grpc::Status Power(grpc::ServerContext* context, const zorvic::v1::PowerRequest* request,
                       zorvic::v1::CommandReply* reply) override;
    grpc::Status ReadAssetMetadata(grpc::ServerContext* context, const zorvic::v1::AssetRequest* request,
                                   zorvic::v1::AssetMetadata* reply) override;
    grpc::Status ListDirectory(grpc::ServerContext* context, const zorvic::v1::ListDirectoryRequest* request,
                               zorvic::v1::ListDirectoryReply* reply) override;

private:
    std::function<void()> LeaveFor(grpc::ServerContext& context, const char* what);
    void CheckAdmission(const grpc::ServerContext& context) const;
    Caller CallerOf(const grpc::ServerContext& context, std::uint64_t requestKey = 0) const;
    template <typename Request, typename Action>
    grpc::Status Answer(const grpc::ServerContext& context, const Request& request, const std::string& what,
                        const Action& action);
    template <typename Request, typename Action>
    grpc::Status Command(const grpc::ServerContext& context, const Request& request, zorvic::v1::CommandReply& reply,
                         const std::string& what, const Action& action);

    const zorvic::v1::Identity Self;
    UnitModel& Model;
    AssetStore& Assets;  ///< for questions
    AssetLink& Link;     ///< for commands on assets
    Feed& Updates;
    Previews& Pictures;
    const CallClock CallTime;
    Sheet* Pages = nullptr;
    Recorder* Record = &Recorder::None();
    const PowerHandler OnPower;
    Admission Admitted;
    FiguresReader ReadRenderer;
    RequestGate Gate;
    RequestLog Log;
    Places Watching;  ///< the state
    Places Looking;   ///< at pictures
    Places Reading;   ///< the as-run sheet
    WriteLimit Writes;
};

}  // namespace ZorvicUnit
