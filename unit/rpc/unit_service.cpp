#include "rpc/unit_service.h"

#include "assets/asset_store.h"
#include "caller.h"
#include "door/conduct.h"
#include "door/peer.h"
#include "fault.h"
#include "feed/feed.h"
#include "feed/frames.h"
#include "model/asset_link.h"
#include "model/unit_model.h"
#include "outputs/previews.h"
#include "rpc/asker.h"
#include "rpc/request_log.h"

#include <spdlog/spdlog.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <exception>
#include <optional>
#include <utility>
#include <vector>

namespace ZorvicUnit {

using grpc::ServerContext;
using grpc::Status;
using grpc::StatusCode;
using zorvic::v1::CommandReply;

namespace {

// Below the promised 250 ms, so that a heartbeat is in time also on a busy machine.
constexpr std::chrono::milliseconds HeartbeatPeriod(150);
constexpr std::chrono::milliseconds PreviewHeartbeatPeriod(1000);
constexpr std::chrono::milliseconds SheetHeartbeatPeriod(1000);

// The longest path or name is far below, and a newer console finds room for what it has to say beside it.
template <typename Request>
constexpr std::size_t MostBytes = 16UL * 1024;
template <>
constexpr std::size_t MostBytes<zorvic::v1::CreatePresetRequest> = MaxRequestBytes;
template <>
constexpr std::size_t MostBytes<zorvic::v1::UpdatePresetRequest> = MaxRequestBytes;

using zorvic::v1::RefusalReason;

std::pair<StatusCode, RefusalReason> OnTheWire(FaultKind kind) {
    switch (kind) {
        case FaultKind::Misused:
            return {StatusCode::INVALID_ARGUMENT, RefusalReason::REFUSAL_REASON_MISUSED};
        case FaultKind::NotFound:
            return {StatusCode::NOT_FOUND, RefusalReason::REFUSAL_REASON_NOT_FOUND};
        case FaultKind::Refused:
            return {StatusCode::FAILED_PRECONDITION, RefusalReason::REFUSAL_REASON_NOT_NOW};
        case FaultKind::DiskFull:
            return {StatusCode::RESOURCE_EXHAUSTED, RefusalReason::REFUSAL_REASON_DISK_FULL};
        case FaultKind::Slow:
            return {StatusCode::DEADLINE_EXCEEDED, RefusalReason::REFUSAL_REASON_SLOW};
        case FaultKind::TooLate:
            return {StatusCode::DEADLINE_EXCEEDED, RefusalReason::REFUSAL_REASON_TOO_LATE};
        case FaultKind::Internal:
            break;
    }
    return {StatusCode::INTERNAL, RefusalReason::REFUSAL_REASON_INTERNAL};
}

Status ToStatus(FaultKind kind, const std::string& why) {
    const auto [code, reason] = OnTheWire(kind);
    zorvic::v1::Refusal refusal;
    refusal.set_reason(reason);
    return {code, Cut(why), refusal.SerializeAsString()};
}

// A console that says nothing is one of the first, which spoke this major version.
void CheckVersion(const std::string& unit, const std::string& console) {
    const auto major = [](const std::string& version) { return version.substr(0, version.find('.')); };
    if (console.empty() || unit.empty() || major(unit) == major(console)) return;
    throw Fault(
        FaultKind::Refused,
        fmt::format("this unit speaks version {} of the protocol and the console version {}: update the older one",
                    unit, console));
}

Feed::Subscription::Wishes WishesOf(const zorvic::v1::WatchRequest& request, const std::string& address) {
    const auto understands = [&](zorvic::v1::Feature feature) {
        return std::ranges::find(request.features(), feature) != request.features().end();
    };
    Feed::Subscription::Wishes wishes{.StateChanges = understands(zorvic::v1::FEATURE_STATE_CHANGES),
                                      .Address = address};
    if (understands(zorvic::v1::FEATURE_RESUME)) {
        wishes.KnownRun = request.known().run();
        wishes.KnownRevision = request.known().revision();
    }
    return wishes;
}

// Turns what the action throws into its status; what says what was tried on what, for the log.
template <typename Action>
Status Attempt(RequestLog& log, const std::string& what, const Action& action) {
    const auto refuse = [&](FaultKind kind, auto level, const std::exception& error) {
        log.Write(level, what, error.what(), std::chrono::steady_clock::now());
        return ToStatus(kind, error.what());
    };
    try {
        action();
        spdlog::debug("{}: done", what);
        return Status::OK;
    } catch (const Fault& fault) {
        return refuse(fault.Kind, spdlog::level::warn, fault);
    } catch (const std::exception& error) {
        return refuse(FaultKind::Internal, spdlog::level::err, error);
    }
}

/// A console that watches, in the as-run sheet.
class Visit {
public:
    Visit(Recorder& record, const ServerContext& context)
        : Record(record), Who(AskerOf(context)), Noted(Record.Comes(Who)) {}
    ~Visit() {
        if (Noted) Record.Note(Zorvic::ZORVIC_ASRUN_LEAVE, "", Who);
    }
    Visit(const Visit&) = delete;
    Visit& operator=(const Visit&) = delete;

private:
    Recorder& Record;
    const Asker Who;
    const bool Noted;
};

zorvic::v1::PreviewFrame ToFrame(const Previews::Picture& picture) {
    zorvic::v1::PreviewFrame frame;
    frame.set_output(picture.Output);
    const auto age = std::chrono::steady_clock::now() - picture.At;
    // A picture is on its way before its output lights up.
    frame.set_age_ms(static_cast<std::uint32_t>(
        std::max<std::int64_t>(0, std::chrono::duration_cast<std::chrono::milliseconds>(age).count())));
    frame.set_unchanged(picture.Unchanged);
    if (picture.Unchanged) return frame;
    frame.set_width(picture.Width);
    frame.set_height(picture.Height);
    frame.set_rgb(*picture.RGB);
    frame.set_signal(picture.Signal);
    return frame;
}

// A frame without an output when there is none to send. False when nobody listens any more.
bool WritePictures(const std::vector<Previews::Picture>& pictures,
                   grpc::ServerWriter<zorvic::v1::PreviewFrame>& writer) {
    if (pictures.empty()) return writer.Write({});
    return std::ranges::all_of(pictures, [&](const auto& picture) { return writer.Write(ToFrame(picture)); });
}

std::string PowerText(zorvic::v1::PowerAction action) {
    if (action == zorvic::v1::POWER_ACTION_SOFT_REBOOT) return "soft reboot";
    return action == zorvic::v1::POWER_ACTION_REBOOT ? "reboot" : "shutdown";
}

std::string OnPreset(const char* what, std::int32_t pk) {
    return fmt::format("{} preset {}", what, pk);
}

std::string OnMark(const char* what, const zorvic::v1::MarkRequest& request) {
    return fmt::format("{} mark of preset {} at {} ms", what, request.pk(), request.time_ms());
}

}  // namespace

UnitService::UnitService(zorvic::v1::Identity identity, UnitModel& model, AssetStore& assets, AssetLink& link,
                         Feed& updates, Previews& pictures, PowerHandler power, std::chrono::milliseconds writeLimit)
    : Self(std::move(identity)),
      Model(model),
      Assets(assets),
      Link(link),
      Updates(updates),
      Pictures(pictures),
      CallTime(updates.Run()),
      OnPower(std::move(power)),
      Watching(Feed::Subscription::MaxSubscribers, "too many consoles"),
      Looking(Previews::MaxWatchers, "too many watch the outputs"),
      Reading(Sheet::MaxReaders, "too many read the as-run sheet"),
      Writes(writeLimit) {}

void UnitService::KeepSheet(Sheet& sheet, Recorder& record) {
    Pages = &sheet;
    Record = &record;
}

Caller UnitService::CallerOf(const ServerContext& context, std::uint64_t requestKey) const {
    return {.Waits = [&context, this] { return CallTime.Waits(context); },
            .RequestKey = requestKey,
            .Who = AskerOf(context)};
}

// Carries out one request, unless the unit is ending. A command whose console has given up is not carried out late.
template <typename Request, typename Action>
Status UnitService::Answer(const ServerContext& context, const Request& request, const std::string& what,
                           const Action& action) {
    const RequestGate::Pass pass(Gate);
    if (!pass.Granted()) return {StatusCode::UNAVAILABLE, "the unit is ending"};
    if (context.IsCancelled()) return {StatusCode::CANCELLED, "given up by the caller"};
    const Status status = Attempt(Log, what, [&] {
        if (request.ByteSizeLong() > MostBytes<Request>)
            throw Fault(FaultKind::Misused,
                        fmt::format("a request of this kind is not larger than {} bytes", MostBytes<Request>));
        action();
    });
    if (status.error_code() == StatusCode::RESOURCE_EXHAUSTED) Record->Fault(what + ": " + status.error_message());
    return status;
}

// The same for a command, which gives the revision that shows its effect.
template <typename Request, typename Action>
Status UnitService::Command(const ServerContext& context, const Request& request, CommandReply& reply,
                            const std::string& what, const Action& action) {
    return Answer(context, request, what, [&] {
        const std::uint64_t revision = action();
        reply.set_revision(revision);
        Updates.Expect(context.peer(), revision);
    });
}

void UnitService::CheckAdmission(const ServerContext& context) const {
    if (!Admitted) return;
    const std::string refusal = Admitted(*context.auth_context());
    if (!refusal.empty()) throw Fault(FaultKind::Refused, refusal);
}

// What ends a stream whose place is needed for another host.
std::function<void()> UnitService::LeaveFor(ServerContext& context, const char* what) {
    return [this, &context, what] {
        Log.Write(spdlog::level::warn, fmt::format("{} of {}", what, context.peer()),
                  "makes room for a host that has no place", std::chrono::steady_clock::now());
        context.TryCancel();
    };
}

// Holds its thread for as long as the console watches. A console that does not read blocks the write, and with it only
// this thread, until the limit for writes ends it.
Status UnitService::Watch(ServerContext* context, const zorvic::v1::WatchRequest* request,
                          grpc::ServerWriter<zorvic::v1::Frame>* writer) {
    bool over = false;
    const Status status = Attempt(Log, "watch", [&] {
        CheckVersion(Self.api_version(), request->api_version());
        const Places::Place place(Watching, PeerFromName(context->peer()), LeaveFor(*context, "watch"));
        Feed::Subscription subscription(Updates, WishesOf(*request, context->peer()));
        const Visit visit(*Record, *context);
        const auto write = [&](zorvic::v1::Frame& frame) {
            frame.set_clock_ms(CallTime.Now());
            const WriteLimit::Pending pending(Writes, *context);
            return writer->Write(frame);
        };
        while (!context->IsCancelled()) {
            CheckAdmission(*context);
            auto batch = subscription.Next(HeartbeatPeriod);
            over = !batch;
            // A heartbeat says that playback moves, not that this thread does.
            if (batch && batch->Pieces.empty() && !batch->AllStates && !Updates.Beats()) continue;
            if (over || !WriteFrames(std::move(*batch), write)) return;
        }
    });
    return over && status.ok() ? Status(StatusCode::UNAVAILABLE, "the unit ends the session") : status;
}

// Holds its thread, as Watch does.
Status UnitService::WatchPreview(ServerContext* context, const zorvic::v1::WatchPreviewRequest* /*request*/,
                                 grpc::ServerWriter<zorvic::v1::PreviewFrame>* writer) {
    try {
        const Places::Place place(Looking, PeerFromName(context->peer()), LeaveFor(*context, "watch preview"));
        Previews::Watcher watcher(Pictures);
        while (!context->IsCancelled()) {
            CheckAdmission(*context);
            const auto pictures = watcher.Next(PreviewHeartbeatPeriod);
            if (!pictures) return {StatusCode::UNAVAILABLE, "the unit is ending"};
            const WriteLimit::Pending pending(Writes, *context);
            if (!WritePictures(*pictures, *writer)) break;
        }
        return Status::OK;
    } catch (const Fault& fault) {  // nothing for the log: a unit without outputs is asked again and again
        return ToStatus(fault.Kind, fault.what());
    } catch (const std::exception& error) {
        spdlog::error("watch preview: {}", error.what());
        return ToStatus(FaultKind::Internal, error.what());
    }
}

// Holds its thread, as Watch does.
Status UnitService::ReadAsRun(ServerContext* context, const zorvic::v1::AsRunRequest* request,
                              grpc::ServerWriter<zorvic::v1::AsRunEntries>* writer) {
    bool over = false;
    const Status status = Attempt(Log, "read the as-run sheet", [&] {
        if (Pages == nullptr) throw Fault(FaultKind::Refused, "this unit keeps no as-run sheet");
        const Places::Place place(Reading, PeerFromName(context->peer()), LeaveFor(*context, "read the as-run sheet"));
        Sheet::Reader reader(*Pages, *request);
        while (!context->IsCancelled()) {
            CheckAdmission(*context);
            const auto entries = reader.Next(SheetHeartbeatPeriod);
            over = !entries;
            if (over) return;
            const WriteLimit::Pending pending(Writes, *context);
            if (!writer->Write(*entries) || (entries->caught_up() && !request->follow())) return;
        }
    });
    return over && status.ok() ? Status(StatusCode::UNAVAILABLE, "the unit is ending") : status;
}

Status UnitService::Identify(ServerContext* /*context*/, const zorvic::v1::IdentifyRequest* /*request*/,
                             zorvic::v1::Identity* reply) {
    *reply = Self;
    return Status::OK;
}

Status UnitService::ReadFigures(ServerContext* /*context*/, const zorvic::v1::ReadFiguresRequest* /*request*/,
                                zorvic::v1::Figures* reply) {
    if (ReadRenderer) *reply = ReadRenderer();
    return Status::OK;
}

Status UnitService::CreatePreset(ServerContext* context, const zorvic::v1::CreatePresetRequest* request,
                                 CommandReply* reply) {
    const Caller caller = CallerOf(*context, request->request_key());
    return Command(*context, *request, *reply, "create preset", [&] {
        std::int32_t made = 0;
        const std::uint64_t revision = Model.CreatePreset(request->preset(), caller, &made);
        reply->set_pk(made);
        return revision;
    });
}

Status UnitService::UpdatePreset(ServerContext* context, const zorvic::v1::UpdatePresetRequest* request,
                                 CommandReply* reply) {
    const Caller caller = CallerOf(*context);
    return Command(*context, *request, *reply, OnPreset("update", request->preset().pk()),
                   [&] { return Model.UpdatePreset(request->preset(), request->fields(), caller); });
}

Status UnitService::DeletePreset(ServerContext* context, const zorvic::v1::PresetRequest* request,
                                 CommandReply* reply) {
    return Command(*context, *request, *reply, OnPreset("delete", request->pk()),
                   [&] { return Model.DeletePreset(request->pk(), CallerOf(*context)); });
}

Status UnitService::SelectPreset(ServerContext* context, const zorvic::v1::PresetRequest* request,
                                 CommandReply* reply) {
    return Command(*context, *request, *reply, OnPreset("select", request->pk()),
                   [&] { return Model.SelectPreset(request->pk(), CallerOf(*context)); });
}

Status UnitService::Take(ServerContext* context, const zorvic::v1::PresetRequest* request, CommandReply* reply) {
    return Command(*context, *request, *reply, OnPreset("take", request->pk()),
                   [&] { return Model.Take(request->pk(), CallerOf(*context)); });
}

Status UnitService::Pause(ServerContext* context, const zorvic::v1::PauseRequest* request, CommandReply* reply) {
    const auto wanted = request->has_paused() ? std::optional(request->paused()) : std::nullopt;
    return Command(*context, *request, *reply, OnPreset("pause", request->pk()),
                   [&] { return Model.Pause(request->pk(), wanted, CallerOf(*context)); });
}

Status UnitService::End(ServerContext* context, const zorvic::v1::PresetRequest* request, CommandReply* reply) {
    return Command(*context, *request, *reply, OnPreset("end", request->pk()),
                   [&] { return Model.End(request->pk(), CallerOf(*context)); });
}

Status UnitService::SeekTo(ServerContext* context, const zorvic::v1::SeekRequest* request, CommandReply* reply) {
    return Command(*context, *request, *reply, OnPreset("seek", request->pk()),
                   [&] { return Model.SeekTo(request->pk(), request->time_ms(), CallerOf(*context)); });
}

Status UnitService::CreateMark(ServerContext* context, const zorvic::v1::MarkRequest* request, CommandReply* reply) {
    const Caller caller = CallerOf(*context, request->request_key());
    return Command(*context, *request, *reply, OnMark("create", *request),
                   [&] { return Model.CreateMark(*request, caller); });
}

Status UnitService::RenameMark(ServerContext* context, const zorvic::v1::MarkRequest* request, CommandReply* reply) {
    return Command(*context, *request, *reply, OnMark("rename", *request),
                   [&] { return Model.RenameMark(*request, CallerOf(*context)); });
}

Status UnitService::DeleteMark(ServerContext* context, const zorvic::v1::MarkRequest* request, CommandReply* reply) {
    return Command(*context, *request, *reply, OnMark("delete", *request),
                   [&] { return Model.DeleteMark(*request, CallerOf(*context)); });
}

Status UnitService::DeleteAsset(ServerContext* context, const zorvic::v1::AssetRequest* request, CommandReply* reply) {
    return Command(*context, *request, *reply, "delete asset " + request->path(),
                   [&] { return Link.Delete(request->path(), CallerOf(*context)); });
}

Status UnitService::InstallAsset(ServerContext* context, const zorvic::v1::AssetRequest* request, CommandReply* reply) {
    return Command(*context, *request, *reply, "install asset " + request->path(),
                   [&] { return Link.Install(request->path(), CallerOf(*context)); });
}

Status UnitService::Power(ServerContext* context, const zorvic::v1::PowerRequest* request, CommandReply* reply) {
    return Answer(*context, *request, fmt::format("power action {}", static_cast<int>(request->action())), [&] {
        if (!zorvic::v1::PowerAction_IsValid(request->action()) ||
            request->action() == zorvic::v1::POWER_ACTION_UNSPECIFIED)
            throw Fault(FaultKind::Misused, "no such power action");
        const Caller caller = CallerOf(*context);
        caller.CheckWaits();
        reply->set_revision(Model.Revision());
        Record->Note(Zorvic::ZORVIC_ASRUN_POWER, PowerText(request->action()), caller.Who);
        OnPower(request->action());
    });
}

Status UnitService::ReadAssetMetadata(ServerContext* context, const zorvic::v1::AssetRequest* request,
                                      zorvic::v1::AssetMetadata* reply) {
    return Answer(*context, *request, "read metadata of " + request->path(),
                  [&] { *reply = Assets.ReadMetadata(request->path()); });
}

Status UnitService::ListDirectory(ServerContext* context, const zorvic::v1::ListDirectoryRequest* request,
                                  zorvic::v1::ListDirectoryReply* reply) {
    return Answer(*context, *request, fmt::format("list {} of drive {}", request->path(), request->drive()), [&] {
        const auto entries = Assets.ListDirectory(request->drive(), request->path());
        reply->mutable_entries()->Assign(entries.begin(), entries.end());
    });
}

}  // namespace ZorvicUnit
