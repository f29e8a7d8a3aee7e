#include "door/conduct.h"

#include <utility>

namespace ZorvicUnit {

const char* Conduct::Judge(const Traffic& traffic, TimePoint now) {
    const Traffic before = std::exchange(Last, traffic);
    const auto since = [&](std::uint64_t Traffic::*counter) {
        return static_cast<double>(traffic.*counter - before.*counter);
    };
    const double answered = since(&Traffic::Succeeded);
    if (since(&Traffic::MessagesSent) > answered) LastHeard = now;
    if (!GivenUp.Settle(now, since(&Traffic::Started) - answered)) return "it gives up too many requests";
    if (!Bytes.Settle(now, since(&Traffic::BytesReceived) - answered * MaxRequestBytes))
        return "it sends more than its requests may hold";
    const bool quiet = traffic.Open() > 0 && before.Open() > 0 && traffic.MessagesSent == before.MessagesSent;
    if (!quiet) LastWord = now;
    return now - LastWord > MostSilence ? "its requests do not come to an end" : nullptr;
}

}  // namespace ZorvicUnit
