#include "session_impl.h"

#include <utility>

namespace Zorvic {
namespace {

using std::chrono::milliseconds;

constexpr milliseconds OpenLimit{2000};
constexpr milliseconds ReconnectLimit{9000};
// Callers are promised 20 ms: the rest is for letting the old link go and starting the new one.
constexpr milliseconds ReconnectWait{17};

}  // namespace

Session::Impl::Impl(const std::string& host) : Host(host), Target(host) {
    Connect(OpenLimit, OpenLimit);
}

void Session::Impl::Connect(milliseconds limit, milliseconds wait) {
    if (auto state = Unit ? Unit->LastState() : nullptr) Known = std::move(state);
    if (Unit) {
        Trouble = Unit->Problem();
        Unit->Stop();  // the earlier one must not raise events any more
        // A mirror of thousands of presets takes longer to free than the caller may wait.
        Burial = std::jthread([old = std::move(Unit)]() mutable { old.reset(); });
    }
    Unit = std::make_unique<Internal::Connection>(Target, Known, limit, Events);
    Unit->WaitWhileConnecting(wait);
}

StatusCode Session::Impl::Reconnect(const std::string& host) {
    const bool elsewhere = !host.empty() && host != Target;
    if (Connected() && !elsewhere) return ZORVIC_STATUS_OK;
    if (Unit->Connecting()) {
        Unit->WaitWhileConnecting(ReconnectWait);
    } else {
        if (elsewhere) Target = host;
        Connect(ReconnectLimit, ReconnectWait);
    }
    return Connected() ? ZORVIC_STATUS_OK : ZORVIC_STATUS_NETWORKERROR;
}

StatusCode Session::Impl::UpdatePreset(const Preset& preset) {
    const auto state = State();
    if (!state) return ZORVIC_STATUS_NETWORKERROR;
    auto request = Edits.Request(preset, Internal::Connection::Clock::now());
    if (request.fields().paths().empty()) {
        return Settle(Internal::FindPreset(*state->Presets, preset.PK) ? ZORVIC_STATUS_OK : ZORVIC_STATUS_FAILED);
    }
    const auto unknown = state->Unknown->find(preset.PK);
    if (unknown != state->Unknown->end()) Internal::KeepUnknownFields(*unknown->second, *request.mutable_preset());
    const StatusCode result = Command(&Internal::Wire::Unit::Stub::UpdatePreset, request);
    if (result == ZORVIC_STATUS_OK) Edits.Written(preset);
    return result;
}

StatusCode Session::Impl::Power(Internal::Wire::PowerAction action) {
    Internal::Wire::PowerRequest request;
    request.set_action(action);
    Internal::Wire::CommandReply reply;
    // The unit may be gone before its next frame, so there is no effect to wait for.
    return Settle(Ask(&Internal::Wire::Unit::Stub::Power, request, reply));
}

StatusCode Session::Impl::Settle(StatusCode result) {
    using Internal::EventBit;
    if (result != ZORVIC_STATUS_OK && Connected()) {
        Events.Raise(EventBit(ZORVIC_STATE_PRESETS) | EventBit(ZORVIC_STATE_PRESETSTATES));
    }
    return result;
}

}  // namespace Zorvic
