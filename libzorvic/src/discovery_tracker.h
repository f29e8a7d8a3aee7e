#pragma once

#include "discovery_records.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

namespace Zorvic::Internal {

/// Decides which announced units are listed and whom to ask when. mDNS keeps a killed unit announced for over an hour,
/// so only answers count. Plain data without thread or clock.
class UnitTracker {
public:
    using TimePoint = std::chrono::steady_clock::time_point;
    struct Question {
        std::uint64_t ID;
        std::string Host;
    };

    /// A new unit is asked at once, a known one every two seconds. A listed unit that misses one answer gets a second
    /// chance at once, so that one lost packet does not make the list flicker.
    static constexpr std::chrono::seconds Interval{2};
    static constexpr int MostMisses = 2;
    /// Anybody on the network can announce anything: beyond these, announcements that were tried in vain make room, and
    /// questions wait for answers.
    static constexpr std::size_t MostEntries = 256;
    static constexpr std::size_t MostAsked = 16;

    void Announce(const AnnouncedUnit& announced, TimePoint now);
    void Withdraw(const std::string& key);
    void Clear() { Entries.clear(); }  // questions keep counting: answers may still come in

    /// Units to ask now. Each is asked again only after Answer() was told.
    std::vector<Question> TakeDue(TimePoint now);
    /// Without an answer the unit was silent. The answer to a question that nobody waits for any more does nothing.
    void Answer(std::uint64_t question, const std::optional<LANZorvic>& answer, TimePoint now);
    /// When TakeDue() has something next; nothing while nobody is due.
    std::optional<TimePoint> NextDue() const;

    /// Units that answer, ordered.
    std::vector<LANZorvic> Units() const;

private:
    struct Entry {
        AnnouncedUnit Announced;
        TimePoint Due;
        std::uint64_t Asked = 0;  ///< the question under way, or 0
        bool Tried = false;       ///< it has been asked and did, or did not, answer
        int Misses = 0;
        std::optional<LANZorvic> Identity;  ///< the last answer while the unit is listed
    };
    bool HasRoom(const std::string& key);
    std::size_t CountAsked() const;

    std::map<std::string, Entry> Entries;  ///< by announcement key
    std::uint64_t LastQuestion = 0;
};

}  // namespace Zorvic::Internal
