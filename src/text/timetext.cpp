#include "text/timetext.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <limits>

namespace {

/// As atoi reads it, but without its undefined result for a number that does not fit.
int Number(const std::string& text) {
    const long value = std::strtol(text.c_str(), nullptr, 10);
    return static_cast<int>(std::clamp<long>(value, std::numeric_limits<int>::min(), std::numeric_limits<int>::max()));
}

/// The run of digits at `position`, which moves behind the character that ended it.
int NextField(const std::string& text, std::size_t& position) {
    const auto start = std::min(position, text.size());
    const auto end = std::min(text.find_first_not_of("0123456789", start), text.size());
    position = end + 1;
    return Number(text.substr(start, end - start));
}

}  // namespace

QString ClockText(int timeMS) {
    return QTime(0, 0).addMSecs(timeMS).toString(Qt::TextDate);
}

QString RemainingTimeColor(int remainingMS) {
    if (remainingMS >= 21000) return QStringLiteral("white");
    if (remainingMS > 11000) return QStringLiteral("yellow");
    return QStringLiteral("red");
}

QTime ParseSeekTime(const std::string& text) {
    if (text.empty()) return {0, 0};
    const auto colons = std::count(text.begin(), text.end(), ':');
    if (colons == 0) return {0, 0, Number(text)};
    if (colons > 2) return {0, 0};
    std::array<int, 3> fields{};  // hours, minutes, seconds
    std::size_t position = 0;
    for (auto field = static_cast<std::size_t>(2 - colons); field < fields.size(); ++field) {
        fields.at(field) = NextField(text, position);
    }
    return {fields[0], fields[1], fields[2]};
}
