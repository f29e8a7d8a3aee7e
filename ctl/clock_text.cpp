#include "clock_text.h"

#include <array>
#include <charconv>
#include <cstdio>
#include <string_view>
#include <vector>

namespace ZorvicCtl {
namespace {

std::vector<std::string_view> Split(std::string_view text) {
    std::vector<std::string_view> fields;
    for (std::size_t start = 0;;) {
        const auto colon = text.find(':', start);
        fields.push_back(text.substr(start, colon - start));
        if (colon == std::string_view::npos) return fields;
        start = colon + 1;
    }
}

}  // namespace

std::string ClockText(std::int32_t timeMS) {
    constexpr std::int64_t Day = 86'400'000;
    const std::int64_t seconds = ((timeMS % Day + Day) % Day) / 1000;
    std::array<char, 16> text{};
    std::snprintf(text.data(), text.size(), "%02d:%02d:%02d", static_cast<int>(seconds / 3600),
                  static_cast<int>(seconds / 60 % 60), static_cast<int>(seconds % 60));
    return text.data();
}

std::optional<std::uint32_t> ParseClock(const std::string& text) {
    const auto fields = Split(text);
    if (fields.size() > 3) return std::nullopt;
    std::uint32_t seconds = 0;
    for (std::size_t i = 0; i < fields.size(); ++i) {
        const auto field = fields[i];
        const std::uint32_t end = fields.size() - i == 3 ? 24 : 60;  // a day has 24 hours
        std::uint32_t value = end;
        const auto [rest, error] = std::from_chars(field.data(), field.data() + field.size(), value);
        if (error != std::errc{} || rest != field.data() + field.size() || value >= end) return std::nullopt;
        seconds = seconds * 60 + value;
    }
    return seconds * 1000;
}

}  // namespace ZorvicCtl
