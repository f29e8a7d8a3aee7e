#pragma once

#include <array>
#include <chrono>
#include <cstddef>
#include <map>
#include <optional>
#include <string>

namespace ZorvicUnit {

/// What is known of a connection. Who stands lower gives up its place before the others.
enum class Standing { Arriving, Mute, Asks, Watches };

/// Why there is no place for one more.
enum class Shortage { TooManyArrive, HostHasItsShare, NoPlace };

/// Who holds which places, and who gives one up for whom. Consoles that watch are not counted against their host: by
/// the others it is measured what a host takes from the rest. Knows no sockets. One thread at a time.
class Guests {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    void Add(int number, const std::string& host, TimePoint now);
    void Remove(int number);
    void SetStanding(int number, Standing standing, TimePoint now);
    Standing StandingOf(int number) const { return All.at(number).Rank; }

    std::size_t Count() const { return All.size(); }
    std::size_t CountOf(Standing standing) const { return Ranks.at(static_cast<std::size_t>(standing)); }
    std::size_t CountOf(const std::string& host) const { return PlacesOf(host).All; }
    /// Those of the host that do not watch.
    std::size_t CountIdle(const std::string& host) const { return PlacesOf(host).Idle; }

    /// Who goes so that one more of the host finds a place: who stands lowest, of those the host that holds most, of
    /// its connections the one that has stood so for longest. Who asks goes for no host that has as many such itself,
    /// except its own. Consoles that watch go only when nobody else is there, for a host that has no place yet, and
    /// only from hosts that have more than one. Nothing when the newcomer must wait; an empty name is that of an
    /// unknown host.
    std::optional<int> WhoMakesRoom(const std::string& host, Shortage shortage, TimePoint now) const;
    /// Who goes so that one more of the host may wait for a place: of the host of which most wait, first who has said
    /// nothing. Nothing when it is the newcomer that must go.
    std::optional<int> WhoStopsWaiting(const std::string& host) const;

private:
    struct Places {
        std::size_t All = 0;
        std::size_t Idle = 0;
    };
    using Hosts = std::map<std::string, Places>;
    struct Guest {
        Hosts::value_type* Host = nullptr;
        TimePoint Since;  ///< it stands so
        Standing Rank = Standing::Arriving;
    };
    Places PlacesOf(const std::string& host) const;
    void Enlist(const Guest& guest, std::size_t one);
    std::optional<int> NewestToSpare() const;

    std::map<int, Guest> All;  ///< by the number that the owner gave
    Hosts ByHost;
    std::array<std::size_t, 4> Ranks{};
};

}  // namespace ZorvicUnit
