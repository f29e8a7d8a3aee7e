#pragma once

#include "connection.h"
#include "events.h"
#include "hidden.h"
#include "preset_edits.h"
#include "request_keys.h"
#include "wire.h"

#include <zorvic/session.h>

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <thread>

namespace Zorvic {

/// What a session is made of. Its members belong to the caller's thread; the parts that other threads reach lock
/// themselves.
struct ZORVIC_HIDDEN Session::Impl {
    explicit Impl(const std::string& host);

    bool Connected() const { return Unit->Up(); }
    StatusCode Reconnect(const std::string& host);
    /// Of the latest try that has ended; empty when it was a link that lasts.
    std::string LinkProblem() const { return Unit->Connecting() ? Trouble : Unit->Problem(); }
    StatusCode UpdatePreset(const Preset& preset);
    /// Null without a link.
    std::shared_ptr<const Internal::UnitState> State() const { return Unit->State(); }

    /// A command whose effect shows in the mirror when it returns.
    template <class Request>
    StatusCode Command(Internal::Connection::Method<Request, Internal::Wire::CommandReply> method,
                       const Request& request);
    /// A command that makes something new: when it is repeated because it got no answer, it takes effect once.
    template <class Request>
    StatusCode Create(Internal::Connection::Method<Request, Internal::Wire::CommandReply> method, Request request);
    /// A question to the unit, or a command without an effect to wait for.
    template <class Request, class Reply>
    StatusCode Ask(Internal::Connection::Method<Request, Reply> method, const Request& request, Reply& reply,
                   std::chrono::milliseconds limit = Internal::Connection::CallLimit);
    StatusCode Power(Internal::Wire::PowerAction action);
    // The given header has no room for what extensions of the interface need, so they come in by this door: ImplOf().
    static Impl& Of(const Session& session) { return *session.Pimpl; }
    friend auto& ImplOf(const Session& session) { return Of(session); }
    /// Passes the result of a command on. After a refusal the caller's display may show what it tried to do instead of
    /// the unit's truth, so this session is told to look again.
    StatusCode Settle(StatusCode result);

    const std::string Host;  // as the session was opened
    std::string Target;      // of the latest try
    // The latest state of the first unit reached, the only one this session ever talks to; null before.
    std::shared_ptr<const Internal::UnitState> Known;
    std::string Reason;        // of the latest refusal; empty when the command after it succeeded
    std::int32_t Created = 0;  // the preset that the latest command made
    Internal::PresetEdits Edits;
    Internal::RequestKeys Keys;
    Internal::EventThread Events;
    std::unique_ptr<Internal::Connection> Unit;  // after Events: it stops first and so never raises into a dead thread

private:
    void Connect(std::chrono::milliseconds limit, std::chrono::milliseconds wait);

    std::string Trouble;  // of the try before the one under way
    std::jthread Burial;  // of the connection before
};

auto& ImplOf(const Session& session);

template <class Request, class Reply>
StatusCode Session::Impl::Ask(Internal::Connection::Method<Request, Reply> method, const Request& request, Reply& reply,
                              std::chrono::milliseconds limit) {
    Reason.clear();
    if (!Connected()) return ZORVIC_STATUS_NETWORKERROR;
    if (request.ByteSizeLong() > Internal::MaxRequestBytes || !Internal::HasValidText(request)) {
        Reason = "the text is too long, or not UTF-8";
        return ZORVIC_STATUS_MISUSED;
    }
    const grpc::Status outcome = Unit->Call(method, request, reply, limit);
    const StatusCode result = Unit->Outcome(outcome);
    // What broke the link is no word of the unit's.
    if (result != ZORVIC_STATUS_NETWORKERROR) Reason = outcome.error_message();
    return result;
}

template <class Request>
StatusCode Session::Impl::Command(Internal::Connection::Method<Request, Internal::Wire::CommandReply> method,
                                  const Request& request) {
    const auto deadline = Internal::Connection::Clock::now() + Internal::Connection::CallLimit;
    Internal::Wire::CommandReply reply;
    StatusCode result = Ask(method, request, reply);
    Created = reply.pk();
    if (result == ZORVIC_STATUS_OK) result = Unit->AwaitEffect(reply.revision(), deadline);
    return Settle(result);
}

template <class Request>
StatusCode Session::Impl::Create(Internal::Connection::Method<Request, Internal::Wire::CommandReply> method,
                                 Request request) {
    const std::string content = request.GetTypeName() + request.SerializePartialAsString();
    const std::uint64_t key = Keys.KeyOf(content, Internal::Connection::Clock::now());
    request.set_request_key(key);
    const StatusCode result = Command(method, request);
    if (result == ZORVIC_STATUS_NETWORKERROR) {
        Keys.Unanswered(content, key, Internal::Connection::Clock::now());
    } else {
        Keys.Answered(key);
    }
    return result;
}

}  // namespace Zorvic
