#include <zorvic/extras.h>

#include "session_impl.h"

namespace Zorvic {
namespace {

using Stub = Internal::Wire::Unit::Stub;
using Clock = Internal::Connection::Clock;

OutputFigures FromWire(const Internal::Wire::OutputFigures& wire) {
    return {.Output = wire.output(),
            .Shown = wire.shown(),
            .Dropped = wire.dropped(),
            .Repeated = wire.repeated(),
            .Late = wire.late(),
            .FirstPicture = std::chrono::milliseconds(wire.first_frame_ms()),
            .Seek = std::chrono::milliseconds(wire.seek_ms())};
}

}  // namespace

std::string LastReason(const Session& session) {
    return ImplOf(session).Reason;
}

std::string LinkProblem(const Session& session) {
    return ImplOf(session).LinkProblem();
}

std::string LibraryVersion() {
    return ZORVIC_LIBRARY_VERSION;
}

std::int32_t LastCreatedPreset(const Session& session) {
    return ImplOf(session).Created;
}

StatusCode DescribeUnit(Session& session, LANZorvic& unit) {
    Internal::Wire::Identity reply;
    const StatusCode result = ImplOf(session).Ask(&Stub::Identify, Internal::Wire::IdentifyRequest(), reply);
    if (result != ZORVIC_STATUS_OK) return result;
    unit.APIVersion = reply.api_version();
    unit.CommunicatorVersion = reply.communicator_version();
    unit.GUID = reply.guid();
    unit.Nickname = reply.nickname();
    unit.IP = session.GetHost();
    unit.CurrentRole = static_cast<UnitRole>(reply.role());
    unit.Type = static_cast<UnitType>(reply.type());
    return ZORVIC_STATUS_OK;
}

StatusCode SetPaused(Session& session, std::int32_t pk, bool paused) {
    Internal::Wire::PauseRequest request;
    request.set_pk(pk);
    request.set_paused(paused);
    return ImplOf(session).Command(&Stub::Pause, request);
}

// The state is taken before the condition looks: what comes between both is new to the wait.
bool WaitUntil(Session& session, const std::function<bool()>& condition, std::chrono::milliseconds limit) {
    const auto deadline = Clock::now() + limit;
    for (;;) {
        const auto state = ImplOf(session).State();
        if (condition()) return true;
        if (!state || Clock::now() >= deadline) return false;
        ImplOf(session).Unit->AwaitEffect(state->Revision + 1, deadline);
    }
}

StatusCode GetFigures(Session& session, UnitFigures& figures) {
    Internal::Wire::Figures reply;
    const StatusCode result = ImplOf(session).Ask(&Stub::ReadFigures, Internal::Wire::ReadFiguresRequest(), reply);
    if (result != ZORVIC_STATUS_OK) return result;
    figures = {};
    for (const auto& output : reply.outputs())
        figures.Outputs.push_back(FromWire(output));
    figures.SoundUnderruns = reply.sound_underruns();
    figures.SoundOffset = std::chrono::microseconds(reply.sound_offset_us());
    figures.Memory = reply.memory();
    return ZORVIC_STATUS_OK;
}

}  // namespace Zorvic
