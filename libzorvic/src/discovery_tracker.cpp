#include "discovery_tracker.h"

#include <algorithm>
#include <utility>

namespace Zorvic::Internal {

void UnitTracker::Announce(const AnnouncedUnit& announced, TimePoint now) {
    if (!HasRoom(announced.Key)) return;
    Entry& entry = Entries[announced.Key];
    if (HostText(entry.Announced) != HostText(announced)) {
        entry = Entry{};  // what answered at the old place says nothing about the new one
    }
    entry.Announced = announced;
    entry.Due = now;
}

bool UnitTracker::HasRoom(const std::string& key) {
    if (Entries.size() < MostEntries || Entries.contains(key)) return true;
    const auto vain = [](const auto& item) {
        return item.second.Tried && item.second.Asked == 0 && !item.second.Identity;
    };
    const auto found = std::ranges::find_if(Entries, vain);
    if (found == Entries.end()) return false;
    Entries.erase(found);
    return true;
}

std::size_t UnitTracker::CountAsked() const {
    const auto count = std::ranges::count_if(Entries, [](const auto& item) { return item.second.Asked != 0; });
    return static_cast<std::size_t>(count);
}

void UnitTracker::Withdraw(const std::string& key) {
    Entries.erase(key);
}

std::vector<UnitTracker::Question> UnitTracker::TakeDue(TimePoint now) {
    std::vector<std::pair<TimePoint, Entry*>> due;
    for (auto& [key, entry] : Entries)
        if (entry.Asked == 0 && entry.Due <= now) due.emplace_back(entry.Due, &entry);
    std::ranges::stable_sort(due, {}, &std::pair<TimePoint, Entry*>::first);
    due.resize(std::min(due.size(), MostAsked - CountAsked()));
    std::vector<Question> questions;
    for (const auto& [since, entry] : due) {
        entry->Asked = ++LastQuestion;
        questions.push_back({entry->Asked, HostText(entry->Announced)});
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

std::optional<UnitTracker::TimePoint> UnitTracker::NextDue() const {
    std::optional<TimePoint> next;
    if (CountAsked() >= MostAsked) return next;  // the next answer makes room
    for (const auto& [key, entry] : Entries) {
        if (entry.Asked == 0 && (!next || entry.Due < *next)) next = entry.Due;
    }
    return next;
}

std::vector<LANZorvic> UnitTracker::Units() const {
    std::vector<LANZorvic> units;
    for (const auto& [key, entry] : Entries) {
        if (entry.Identity) units.push_back(Merge(entry.Announced, *entry.Identity));
    }
    SortAndUnite(units);
    return units;
}

}  // namespace Zorvic::Internal
