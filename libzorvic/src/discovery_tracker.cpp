#include "discovery_tracker.h"

#include <algorithm>
#include <numeric>
#include <tuple>
#include <utility>

namespace Zorvic::Internal {
namespace {

std::size_t SumOf(const std::map<std::string, std::size_t>& counts) {
    return std::transform_reduce(counts.begin(), counts.end(), std::size_t{0}, std::plus<>(),
                                 [](const auto& count) { return count.second; });
}

}  // namespace

void UnitTracker::Announce(const AnnouncedUnit& announced, TimePoint now) {
    const std::string host = HostText(announced);
    Leave(announced.Key, host);  // what answered at the old place says nothing about the new one
    if (!HasRoom(announced)) return;
    Entry& entry = Entries[host];
    if (entry.Number == 0) entry.Number = ++LastEntry;
    entry.Due = now;
    const auto known = std::ranges::find(entry.Names, announced.Key, &AnnouncedUnit::Key);
    if (known != entry.Names.end()) {
        *known = announced;
    } else if (entry.Names.size() < MostNames) {
        entry.Names.push_back(announced);
    } else {
        entry.MoreNames = true;
    }
}

void UnitTracker::Withdraw(const std::string& key) {
    Leave(key, {});
}

void UnitTracker::Leave(const std::string& key, const std::string& except) {
    for (auto item = Entries.begin(); item != Entries.end();) {
        auto& [host, entry] = *item;
        const auto found = std::ranges::find(entry.Names, key, &AnnouncedUnit::Key);
        const bool named = host != except && found != entry.Names.end();
        const bool last = entry.Names.size() == 1;
        if (named && !last) entry.Names.erase(found);
        item = named && last && !entry.MoreNames ? Entries.erase(item) : std::next(item);
    }
}

// The newest goes: a unit's first address stays.
bool UnitTracker::HasRoom(const AnnouncedUnit& announced) {
    if (Entries.size() < MostEntries || Entries.contains(HostText(announced))) return true;
    Counts machines;
    Counts units;
    for (const auto& [host, entry] : Entries) {
        ++machines[MachineOf(entry)];
        if (entry.Identity) ++units[entry.Identity->GUID];
    }
    const std::size_t own = machines[announced.Address];
    using Rank = std::tuple<bool, std::size_t, std::uint64_t>;
    Rank first(false, 1, 0);
    const std::string* leaves = nullptr;
    for (const auto& [host, entry] : Entries) {
        const std::size_t ofMachine = machines[MachineOf(entry)];
        const std::size_t ofUnit = entry.Identity ? units[entry.Identity->GUID] : 0;
        const Rank rank(IsVain(entry), std::max(ofMachine > own ? ofMachine : 1, ofUnit), entry.Number);
        const bool redundant = std::get<0>(rank) || std::get<1>(rank) > 1;
        if (entry.Asked != 0 || !redundant || rank < first) continue;
        first = rank;
        leaves = &host;
    }
    return leaves && Entries.erase(std::string(*leaves)) == 1;
}

UnitTracker::Counts UnitTracker::CountAsked() const {
    Counts asked;
    for (const auto& [host, entry] : Entries)
        if (entry.Asked != 0) ++asked[MachineOf(entry)];
    return asked;
}

// Who was tried in vain comes last: a unit that has just been announced must not wait behind hundreds of them.
std::vector<UnitTracker::Question> UnitTracker::TakeDue(TimePoint now) {
    std::vector<std::tuple<bool, TimePoint, Entry*>> due;
    for (auto& [host, entry] : Entries)
        if (entry.Asked == 0 && entry.Due <= now) due.emplace_back(IsVain(entry), entry.Due, &entry);
    std::ranges::stable_sort(due, {}, [](const auto& item) { return std::pair(std::get<0>(item), std::get<1>(item)); });
    Counts asked = CountAsked();
    std::size_t all = SumOf(asked);
    std::vector<Question> questions;
    for (const auto& [vain, since, entry] : due) {
        if (all >= MostAsked || asked[MachineOf(*entry)] >= MostAskedOfOne) continue;
        ++all;
        ++asked[MachineOf(*entry)];
        entry->Asked = ++LastQuestion;
        questions.push_back({entry->Asked, HostText(entry->Names.front())});
    }
    return questions;
}

void UnitTracker::Answer(std::uint64_t question, const std::optional<LANZorvic>& answer, TimePoint now) {
    const auto found = std::ranges::find_if(Entries, [&](const auto& item) { return item.second.Asked == question; });
    if (question == 0 || found == Entries.end()) return;
    Entry& entry = found->second;
    entry.Asked = 0;
    entry.Tried = true;
    entry.Due = now + Interval;
    if (answer) {
        entry.Misses = 0;
        entry.Identity = answer;
    } else if (entry.Identity && ++entry.Misses < MostMisses) {
        entry.Due = now;
    } else {
        entry.Identity.reset();
        entry.Misses = 0;
    }
}

// Where as many have been asked as may be, the next answer makes room.
std::optional<UnitTracker::TimePoint> UnitTracker::NextDue() const {
    std::optional<TimePoint> next;
    Counts asked = CountAsked();
    if (SumOf(asked) >= MostAsked) return next;
    for (const auto& [host, entry] : Entries) {
        const bool may = entry.Asked == 0 && asked[MachineOf(entry)] < MostAskedOfOne;
        if (may && (!next || entry.Due < *next)) next = entry.Due;
    }
    return next;
}

std::vector<LANZorvic> UnitTracker::Units() const {
    std::vector<LANZorvic> units;
    for (const auto& [key, entry] : Entries) {
        if (entry.Identity) units.push_back(Merge(entry.Names.front(), *entry.Identity));
    }
    SortAndUnite(units);
    return units;
}

}  // namespace Zorvic::Internal
