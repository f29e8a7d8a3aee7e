#include "log_time.h"

#include "failure.h"
#include "printing.h"

#include <charconv>
#include <ctime>
#include <optional>
#include <string_view>

namespace ZorvicCtl {
namespace {

using std::chrono::system_clock;

std::optional<std::chrono::minutes> ParseAge(const std::string& text) {
    int count = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, count);
    if (error != std::errc{} || count < 0 || count > 1'000'000 || rest + 1 != end) return std::nullopt;
    if (*rest == 'm') return std::chrono::minutes(count);
    if (*rest == 'h') return std::chrono::hours(count);
    return *rest == 'd' ? std::optional<std::chrono::minutes>(std::chrono::days(count)) : std::nullopt;
}

// All that stands there, and nothing behind it. Fields that the format does not name stay.
bool Fits(const std::string& text, const char* format, std::tm& time) {
    const char* const rest = strptime(text.c_str(), format, &time);
    return rest != nullptr && *rest == '\0';
}

std::optional<std::time_t> ParseMoment(const std::string& text, std::time_t now) {
    std::tm today{};
    localtime_r(&now, &today);
    today.tm_hour = today.tm_min = today.tm_sec = 0;
    for (const char* format :
         {"%H:%M", "%H:%M:%S", "%Y-%m-%d", "%Y-%m-%d %H:%M", "%Y-%m-%d %H:%M:%S", "%Y-%m-%dT%H:%M:%S"}) {
        std::tm time = today;
        if (!Fits(text, format, time)) continue;
        time.tm_isdst = -1;
        return std::mktime(&time);
    }
    return std::nullopt;
}

}  // namespace

Zorvic::AsRunEntry::WallTime ParseSince(const std::string& text, system_clock::time_point now) {
    using std::chrono::time_point_cast;
    if (const auto age = ParseAge(text)) return time_point_cast<std::chrono::microseconds>(now - *age);
    if (const auto moment = ParseMoment(text, system_clock::to_time_t(now)))
        return time_point_cast<std::chrono::microseconds>(system_clock::from_time_t(*moment));
    throw Failure(
        ExitStatus::Usage,
        "\"" + OneLine(text) + "\" is no time: give 30m, 6h or 2d, 19:30, 2026-03-01 or \"2026-03-01 19:30\".");
}

}  // namespace ZorvicCtl
