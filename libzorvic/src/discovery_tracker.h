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
    /// Anybody on the network can announce anything. There is one entry for each address and port, whatever its names
    /// are. Beyond these, entries that were tried in vain make room, then those of the unit or machine that has most;
    /// and questions wait for answers, those to machines that are silent for longest.
    static constexpr std::size_t MostEntries = 256;
    static constexpr std::size_t MostNames = 16;  ///< kept of one entry
    static constexpr std::size_t MostAsked = 16;
    static constexpr std::size_t MostAskedOfOne = 2;

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
        std::vector<AnnouncedUnit> Names;  ///< in the order in which they came; one at least
        bool MoreNames = false;            ///< than are kept: it stays when those are withdrawn
        std::uint64_t Number = 0;          ///< grows from entry to entry
        TimePoint Due;
        std::uint64_t Asked = 0;  ///< the question under way, or 0
        bool Tried = false;       ///< it has been asked and did, or did not, answer
        int Misses = 0;
        std::optional<LANZorvic> Identity;  ///< the last answer while the unit is listed
    };
    using Counts = std::map<std::string, std::size_t>;
    static bool IsVain(const Entry& entry) { return entry.Tried && !entry.Identity; }
    static const std::string& MachineOf(const Entry& entry) { return entry.Names.front().Address; }
    void Leave(const std::string& key, const std::string& except);
    bool HasRoom(const AnnouncedUnit& announced);
    Counts CountAsked() const;

    std::map<std::string, Entry> Entries;  ///< by address and port
    std::uint64_t LastQuestion = 0;
    std::uint64_t LastEntry = 0;
};

}  // namespace Zorvic::Internal
