#include "rpc/call_clock.h"

#include <charconv>
#include <optional>
#include <string_view>

namespace ZorvicUnit {

namespace {

using std::chrono::milliseconds;

// What is left of a call's time must do for a write and for the way of the answer, too.
constexpr std::uint64_t AnswerMS = 100;

struct Moment {
    std::uint64_t Run = 0;
    std::uint64_t MS = 0;
};

// "RUN/MILLISECONDS"; anything else counts as nothing said, as from a console that does not know of it.
std::optional<Moment> EndNamed(const grpc::ServerContext& context) {
    const auto header = context.client_metadata().find("zorvic-until");
    if (header == context.client_metadata().end()) return std::nullopt;
    const char* const end = header->second.end();
    Moment moment;
    const auto run = std::from_chars(header->second.begin(), end, moment.Run);
    if (run.ec != std::errc() || run.ptr == end || *run.ptr != '/') return std::nullopt;
    const auto time = std::from_chars(run.ptr + 1, end, moment.MS);
    if (time.ec != std::errc() || time.ptr != end) return std::nullopt;
    return moment;
}

}  // namespace

std::uint64_t CallClock::Now() const {
    const auto age = std::chrono::floor<milliseconds>(std::chrono::steady_clock::now() - Begin);
    return static_cast<std::uint64_t>(age.count()) + 1;
}

bool CallClock::Waits(const grpc::ServerContext& context) const {
    if (context.IsCancelled() || std::chrono::system_clock::now() + milliseconds(AnswerMS) >= context.deadline())
        return false;
    const auto end = EndNamed(context);
    return !end || end->Run != Run || Now() + AnswerMS < end->MS;
}

}  // namespace ZorvicUnit
