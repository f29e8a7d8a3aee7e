#include "discovery_records.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <set>
#include <string_view>
#include <tuple>

namespace Zorvic::Internal {
namespace {

constexpr std::uint16_t DefaultPort = 9477;

char ToLower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

/// Keys are ASCII and without regard to case.
bool IsKey(std::string_view text, std::string_view key) {
    return std::ranges::equal(text, key, {}, ToLower);
}

std::optional<std::string> Find(const std::vector<std::string>& text, std::string_view key) {
    for (const std::string_view entry : text) {
        const auto equals = entry.find('=');
        if (equals != std::string_view::npos && IsKey(entry.substr(0, equals), key)) {
            return std::string(entry.substr(equals + 1));
        }
    }
    return std::nullopt;
}

/// 0, the invalid value of both enumerations, for what is no number.
std::int32_t FindNumber(const std::vector<std::string>& text, std::string_view key) {
    const std::string value = Find(text, key).value_or("");
    std::int32_t number = 0;
    const auto [end, error] = std::from_chars(value.data(), value.data() + value.size(), number);
    return error == std::errc{} && end == value.data() + value.size() ? number : 0;
}

void FillIfEmpty(std::string& text, const std::string& other) {
    if (text.empty()) text = other;
}

}  // namespace

std::string HostText(const AnnouncedUnit& announced) {
    return announced.Port == DefaultPort ? announced.Address : announced.Address + ':' + std::to_string(announced.Port);
}

LANZorvic FromAnnouncement(const AnnouncedUnit& announced) {
    LANZorvic unit;
    unit.GUID = Find(announced.Text, "guid").value_or("");
    unit.Nickname = Find(announced.Text, "nickname").value_or("");
    unit.APIVersion = Find(announced.Text, "api").value_or("");
    unit.CommunicatorVersion = Find(announced.Text, "version").value_or("");
    unit.CurrentRole = static_cast<UnitRole>(FindNumber(announced.Text, "role"));
    unit.Type = static_cast<UnitType>(FindNumber(announced.Text, "type"));
    unit.IP = HostText(announced);
    return unit;
}

LANZorvic Merge(const AnnouncedUnit& announced, const LANZorvic& answer) {
    const LANZorvic told = FromAnnouncement(announced);
    LANZorvic unit = answer;
    FillIfEmpty(unit.GUID, told.GUID);
    FillIfEmpty(unit.Nickname, told.Nickname);
    FillIfEmpty(unit.APIVersion, told.APIVersion);
    FillIfEmpty(unit.CommunicatorVersion, told.CommunicatorVersion);
    unit.CurrentRole = unit.CurrentRole == ZORVIC_ROLE_INVALID ? told.CurrentRole : unit.CurrentRole;
    unit.Type = unit.Type == ZORVIC_UTYPE_INVALID ? told.Type : unit.Type;
    unit.IP = told.IP;
    return unit;
}

void SortAndUnite(std::vector<LANZorvic>& units) {
    const auto order = [](const LANZorvic& unit) { return std::tie(unit.Nickname, unit.GUID, unit.IP); };
    std::ranges::sort(units, {}, order);
    std::set<std::string> seen;
    std::erase_if(units, [&](const LANZorvic& unit) { return unit.GUID.empty() || !seen.insert(unit.GUID).second; });
}

}  // namespace Zorvic::Internal
