#include "unit_address.h"

#include "failure.h"

#include <zorvic/discovery.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <string_view>
#include <thread>
#include <vector>

namespace ZorvicCtl {
namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds LongestLook(3000);
// Units answer a search within moments of each other: so long another one of the same name may still come.
constexpr std::chrono::milliseconds NamesakeTime(600);
constexpr std::chrono::milliseconds LookPeriod(20);

bool MayBeHostName(const std::string& text) {
    return text.find_first_not_of("abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-_.:[]%") ==
           std::string::npos;
}

bool LooksLikeAddress(const std::string& text) {
    return text == "localhost" || (MayBeHostName(text) && text.find_first_of(".:") != std::string::npos);
}

std::vector<Zorvic::LANZorvic> UnitsCalled(const std::string& text) {
    std::vector<Zorvic::LANZorvic> found;
    for (const auto& unit : Zorvic::GetLANZorvics()) {
        if (unit.GUID == text) return {unit};
        if (unit.Nickname == text) found.push_back(unit);
    }
    return found;
}

std::vector<Zorvic::LANZorvic> LookFor(const std::string& text) {
    auto end = Clock::now() + LongestLook;
    std::vector<Zorvic::LANZorvic> found;
    for (bool shortened = false; Clock::now() < end; std::this_thread::sleep_for(LookPeriod)) {
        found = UnitsCalled(text);
        if (!found.empty() && found.front().GUID == text) break;
        if (found.empty() || shortened) continue;
        end = std::min(end, Clock::now() + NamesakeTime);
        shortened = true;
    }
    return found;
}

bool MaySearch() {
    const char* variable = std::getenv("ZORVIC_DISCOVERY");
    return !variable || std::string_view(variable) != "off";
}

std::string Ambiguous(const std::string& text, const std::vector<Zorvic::LANZorvic>& found) {
    std::string message = "Several units are called \"" + text + "\":";
    for (const auto& unit : found)
        message += "\n  " + unit.IP + "  " + unit.GUID;
    return message + "\nGive the address of the one you mean.";
}

}  // namespace

std::string FindUnit(const std::string& text) {
    if (LooksLikeAddress(text)) return text;
    const auto found = MaySearch() ? LookFor(text) : std::vector<Zorvic::LANZorvic>();
    if (found.size() == 1) return found.front().IP;
    if (found.size() > 1) throw Failure(ExitStatus::Refused, Ambiguous(text, found));
    if (!text.empty() && MayBeHostName(text)) return text;
    throw Failure(ExitStatus::NotReachable, "No unit called \"" + text + "\" answers on this network.");
}

}  // namespace ZorvicCtl
