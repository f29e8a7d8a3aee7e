#include "door/guests.h"

#include <tuple>

namespace ZorvicUnit {

using std::chrono::milliseconds;

namespace {

// Who has been let in shows at once what it wants; before that nobody is judged by it. Who has asked may be about to
// watch; and when those who ask come back again and again, each of them costs the unit as much as a console does.
constexpr std::array Grace = {milliseconds(250), milliseconds(250), milliseconds(2'000)};

/// The entry that may go and comes first in that order.
template <typename Entries, typename May, typename Order>
std::optional<int> First(const Entries& all, const May& may, const Order& order) {
    const typename Entries::value_type* first = nullptr;
    for (const auto& entry : all)
        if (may(entry.second) && (!first || order(entry.second) < order(first->second))) first = &entry;
    return first ? std::optional(first->first) : std::nullopt;
}

std::ptrdiff_t MostFirst(std::size_t count) {
    return -static_cast<std::ptrdiff_t>(count);
}

}  // namespace

void Guests::Add(int number, const std::string& host, TimePoint now) {
    Remove(number);
    Guest& guest = All[number] = {.Host = &*ByHost.try_emplace(host).first, .Since = now};
    Enlist(guest, 1);
}

void Guests::Remove(int number) {
    const auto found = All.find(number);
    if (found == All.end()) return;
    const auto* host = found->second.Host;
    Enlist(found->second, std::size_t(-1));
    All.erase(found);
    if (host->second.All == 0) ByHost.erase(ByHost.find(host->first));
}

void Guests::SetStanding(int number, Standing standing, TimePoint now) {
    Guest& guest = All.at(number);
    if (guest.Rank == standing) return;
    Enlist(guest, std::size_t(-1));
    guest.Rank = standing;
    guest.Since = now;
    Enlist(guest, 1);
}

void Guests::Enlist(const Guest& guest, std::size_t one) {
    guest.Host->second.All += one;
    if (guest.Rank != Standing::Watches) guest.Host->second.Idle += one;
    Ranks.at(static_cast<std::size_t>(guest.Rank)) += one;
}

Guests::Places Guests::PlacesOf(const std::string& host) const {
    const auto found = ByHost.find(host);
    return found == ByHost.end() ? Places{} : found->second;
}

std::optional<int> Guests::WhoMakesRoom(const std::string& host, Shortage shortage, TimePoint now) const {
    if (shortage == Shortage::NoPlace && CountOf(Standing::Watches) == All.size())
        return host.empty() || CountOf(host) > 0 ? std::nullopt : NewestToSpare();
    const std::size_t own = CountIdle(host);
    const auto may = [&](const Guest& guest) {
        if (guest.Rank == Standing::Watches || now - guest.Since <= Grace.at(static_cast<std::size_t>(guest.Rank)))
            return false;
        if (shortage == Shortage::TooManyArrive) return guest.Rank == Standing::Arriving;
        if (guest.Host->first == host) return true;
        return shortage == Shortage::NoPlace && (guest.Rank != Standing::Asks || guest.Host->second.Idle > own);
    };
    const auto order = [&](const Guest& guest) {
        const std::size_t newcomer = guest.Host->first == host ? 1 : 0;
        return std::tuple(guest.Rank, MostFirst(guest.Host->second.Idle + newcomer), guest.Since);
    };
    return First(All, may, order);
}

// Who came last: a console that runs a show has been there for long.
std::optional<int> Guests::NewestToSpare() const {
    const auto may = [](const Guest& guest) { return guest.Host->second.All > 1; };
    const auto order = [](const Guest& guest) {
        return std::tuple(MostFirst(guest.Host->second.All), -guest.Since.time_since_epoch());
    };
    return First(All, may, order);
}

std::optional<int> Guests::WhoStopsWaiting(const std::string& host) const {
    const std::size_t own = CountOf(host);
    const auto may = [&](const Guest& guest) {
        const bool ready = guest.Rank != Standing::Arriving;
        if (guest.Host->first == host) return !ready;
        return guest.Host->second.All > own + (ready ? 1 : 0);
    };
    const auto order = [](const Guest& guest) {
        return std::tuple(MostFirst(guest.Host->second.All), guest.Rank, guest.Since);
    };
    return First(All, may, order);
}

}  // namespace ZorvicUnit
