#include "asrun_records.h"
#include "channel.h"
#include "diagnostics.h"
#include "hidden.h"
#include "server_stream.h"

#include <zorvic/asrun.h>

#include <algorithm>
#include <condition_variable>
#include <map>
#include <mutex>
#include <stop_token>
#include <thread>
#include <utility>

namespace Zorvic {

using std::chrono::milliseconds;

namespace {

using Stream = Internal::ServerStream<Internal::Wire::AsRunEntries>;

constexpr milliseconds ConnectLimit(2000);
// Something comes every second.
constexpr milliseconds Silence(3500);
constexpr milliseconds FirstPause(250);
constexpr milliseconds LongestPause(8000);
constexpr std::size_t MostPending = 10'000;

// The unit is there, and has no sheet for this program.
bool IsRefusal(const grpc::Status& outcome) {
    const auto code = outcome.error_code();
    return code == grpc::StatusCode::UNIMPLEMENTED || code == grpc::StatusCode::FAILED_PRECONDITION ||
           code == grpc::StatusCode::PERMISSION_DENIED;
}

std::string TextOf(const grpc::Status& outcome) {
    if (outcome.error_code() == grpc::StatusCode::UNIMPLEMENTED) return "this unit knows no as-run sheet";
    return outcome.error_message();
}

StatusCode ToStatusCode(const grpc::Status& outcome) {
    if (outcome.error_code() == grpc::StatusCode::UNIMPLEMENTED) return ZORVIC_STATUS_UNIMPLEMENTED;
    return IsRefusal(outcome) ? ZORVIC_STATUS_FAILED : ZORVIC_STATUS_NETWORKERROR;
}

}  // namespace

struct ZORVIC_HIDDEN AsRunSheet::Impl {
    Impl(std::string host, const Range& range)
        : Host(std::move(host)),
          Request(Internal::ToWire(range)),
          Thread([this](const std::stop_token& stop) { Run(stop); }) {}

    void Run(const std::stop_token& stop);
    void Follow(const std::stop_token& stop);
    void Accept(const Internal::Wire::AsRunEntries& message, const std::stop_token& stop);
    void Show(State state, const std::string& problem = {});

    const std::string Host;
    Internal::Wire::AsRunRequest Request;  ///< of the thread, as is the next
    milliseconds Pause = FirstPause;

    mutable std::mutex Lock;  ///< guards all below
    std::condition_variable_any Changed;
    News Pending;
    State Phase = State::Connecting;
    std::string Trouble;

    std::jthread Thread;  // last, it uses all of the above
};

void AsRunSheet::Impl::Run(const std::stop_token& stop) {
    Internal::NameThread("zorvic-asrun");
    Request.set_follow(true);
    while (!stop.stop_requested()) {
        try {
            Follow(stop);
        } catch (const Internal::StreamEnd& end) {
            const bool refused = IsRefusal(end.Outcome);
            if (refused) Pause = LongestPause;
            Show(refused ? State::Missing : State::Connecting, TextOf(end.Outcome));
        } catch (const std::exception& error) {
            Show(State::Connecting, error.what());
        }
        std::unique_lock lock(Lock);
        Changed.wait_for(lock, stop, Pause, [] { return false; });
        Pause = std::min(2 * Pause, LongestPause);
    }
}

void AsRunSheet::Impl::Follow(const std::stop_token& stop) {
    const auto stub = Internal::Wire::Unit::NewStub(Internal::OpenChannel(Host, ConnectLimit));
    Stream stream(
        [&](auto* context, auto* queue, void* tag) { return stub->AsyncReadAsRun(context, Request, queue, tag); });
    const std::stop_callback cancel(stop, [&stream] { stream.Cancel(); });
    stream.Start(ConnectLimit);
    while (!stop.stop_requested()) {
        Accept(stream.Read(Silence), stop);
        Pause = FirstPause;
    }
}

void AsRunSheet::Impl::Accept(const Internal::Wire::AsRunEntries& message, const std::stop_token& stop) {
    std::unique_lock lock(Lock);
    if (Request.sheet() != 0 && Request.sheet() != message.sheet()) Pending = {.Entries = {}, .Anew = true};
    Request.set_sheet(message.sheet());
    for (const auto& entry : message.entries()) {
        Pending.Entries.push_back(Internal::FromWire(entry));
        Request.set_after(entry.change());
    }
    Phase = message.caught_up() ? State::Live : State::Reading;
    Trouble.clear();
    Changed.wait(lock, stop, [this] { return Pending.Entries.size() < MostPending; });
}

void AsRunSheet::Impl::Show(State state, const std::string& problem) {
    const std::scoped_lock lock(Lock);
    Phase = state;
    Trouble = problem;
}

AsRunSheet::AsRunSheet(const std::string& host, const Range& range) : Pimpl(std::make_unique<Impl>(host, range)) {}

AsRunSheet::~AsRunSheet() = default;

AsRunSheet::News AsRunSheet::Take() {
    const std::scoped_lock lock(Pimpl->Lock);
    Pimpl->Changed.notify_all();
    return std::exchange(Pimpl->Pending, {});
}

AsRunSheet::State AsRunSheet::Now() const {
    const std::scoped_lock lock(Pimpl->Lock);
    return Pimpl->Phase;
}

std::string AsRunSheet::Problem() const {
    const std::scoped_lock lock(Pimpl->Lock);
    return Pimpl->Trouble;
}

StatusCode ReadAsRun(const std::string& host, const AsRunSheet::Range& range, std::vector<AsRunEntry>& entries,
                     std::string& problem, milliseconds silence) {
    entries.clear();
    problem.clear();
    try {
        const auto stub = Internal::Wire::Unit::NewStub(Internal::OpenChannel(host, ConnectLimit));
        const auto request = Internal::ToWire(range);
        Stream stream(
            [&](auto* context, auto* queue, void* tag) { return stub->AsyncReadAsRun(context, request, queue, tag); });
        stream.Start(ConnectLimit);
        std::map<std::uint64_t, AsRunEntry> byNumber;
        for (bool complete = false; !complete;) {
            const auto& message = stream.Read(silence);
            for (const auto& entry : message.entries())
                byNumber[entry.number()] = Internal::FromWire(entry);
            complete = message.caught_up();
        }
        for (auto& [number, entry] : byNumber)
            entries.push_back(std::move(entry));
        return ZORVIC_STATUS_OK;
    } catch (const Internal::StreamEnd& end) {
        problem = TextOf(end.Outcome);
        return ToStatusCode(end.Outcome);
    } catch (const std::exception& error) {
        problem = error.what();
        return ZORVIC_STATUS_NETWORKERROR;
    }
}

}  // namespace Zorvic
