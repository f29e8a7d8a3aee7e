// TXT records of units on the network, an entry a line and a unit behind every empty one.

#include "discovery_records.h"
#include "fuzz/fuzz.h"

#include <algorithm>
#include <set>
#include <sstream>

using namespace Zorvic::Internal;

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::istringstream lines{std::string(TextOf(data, size))};
    std::vector<AnnouncedUnit> announced(1);
    for (std::string line; std::getline(lines, line);) {
        if (line.empty())
            announced.emplace_back().Port = static_cast<std::uint16_t>(size);
        else
            announced.back().Text.push_back(line);
    }
    std::vector<Zorvic::LANZorvic> units;
    for (const AnnouncedUnit& unit : announced) {
        units.push_back(FromAnnouncement(unit));
        const Zorvic::LANZorvic merged = Merge(announced.front(), units.back());
        Require(units.back().GUID.empty() || merged.GUID == units.back().GUID);
    }
    SortAndUnite(units);
    std::set<std::string> seen;
    for (const Zorvic::LANZorvic& unit : units)
        Require(!unit.GUID.empty() && seen.insert(unit.GUID).second);
    Require(std::is_sorted(units.begin(), units.end(),
                           [](const auto& a, const auto& b) { return a.Nickname < b.Nickname; }));
    return 0;
}
