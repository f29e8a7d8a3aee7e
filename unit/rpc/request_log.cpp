#include "rpc/request_log.h"

#include "files/names.h"

#include <spdlog/spdlog.h>

#include <utility>

namespace ZorvicUnit {

std::string Cut(std::string_view text, std::size_t most) {
    constexpr std::string_view Mark = " [...]";
    if (text.size() <= most) return std::string(text);
    std::size_t end = most - Mark.size();
    const auto isWithin = [&](std::size_t place) { return (static_cast<unsigned char>(text[place]) & 0xC0U) == 0x80U; };
    while (end > 0 && isWithin(end))
        --end;
    return std::string(text.substr(0, end)).append(Mark);
}

void RequestLog::Write(spdlog::level::level_enum level, std::string_view what, std::string_view why, TimePoint now) {
    std::size_t leftOut = 0;
    {
        const std::scoped_lock lock(Lock);
        if (!Lines.Take(now)) {
            ++LeftOut;
            return;
        }
        leftOut = std::exchange(LeftOut, 0);
    }
    // Both quote the console: a line break in a path must not forge a line.
    const std::string line = ForLog(Cut(what)) + ": " + ForLog(Cut(why));
    if (leftOut == 0) {
        spdlog::log(level, "{}", line);
    } else {
        spdlog::log(level, "{} (and {} more refusals that are not listed)", line, leftOut);
    }
}

}  // namespace ZorvicUnit
