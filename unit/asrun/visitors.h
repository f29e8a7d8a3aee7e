#pragma once

#include "clock.h"

#include <cstddef>
#include <map>
#include <optional>
#include <string>

namespace ZorvicUnit {

/// How much of the coming and going of consoles is noted, so that no stranger fills the sheet with it: of each host 50
/// visits, and then one a minute; of all together ten times as much. One thread at a time.
class Visitors {
public:
    /// How many of its host were left out before this one; nothing when it is to be left out, too. `address` ends with
    /// a port.
    std::optional<std::size_t> Admit(const std::string& address, Clock::TimePoint now);

private:
    struct Share {
        double Room = 0;
        Clock::TimePoint At;
        std::size_t LeftOut = 0;
        /// What has become of it meanwhile.
        void Grow(double most, Clock::TimePoint now);
    };
    static constexpr double OfOne = 50;
    static constexpr double OfAll = 500;
    static constexpr std::size_t MostHosts = 1'000;

    Share All{.Room = OfAll, .At = {}, .LeftOut = 0};
    std::map<std::string, Share> Hosts;
};

}  // namespace ZorvicUnit
