#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "zorvic/enums.h"
#include "zorvic/export.h"

namespace Zorvic {

/// What an entry of the as-run sheet is about. A newer unit may send others.
enum AsRunKind : int {
    ZORVIC_ASRUN_STARTED = 1,  ///< the unit
    ZORVIC_ASRUN_STOPPED = 2,  ///< the unit, in order
    ZORVIC_ASRUN_GAP = 3,      ///< the unit was ended without closing: what came last before it may be missing
    ZORVIC_ASRUN_LOST = 4,     ///< entries that could not be written
    ZORVIC_ASRUN_CLOCK = 5,    ///< the wall clock was set
    ZORVIC_ASRUN_TAKE = 10,    ///< a run begins
    ZORVIC_ASRUN_PAUSE = 11,
    ZORVIC_ASRUN_RESUME = 12,
    ZORVIC_ASRUN_END = 13,
    ZORVIC_ASRUN_SEEK = 14,
    ZORVIC_ASRUN_GOTO = 15,  ///< a seek to the time of a goto mark
    ZORVIC_ASRUN_LINK = 16,  ///< a run begins behind another preset
    ZORVIC_ASRUN_LOOP = 17,  ///< a pass is over and another begins
    ZORVIC_ASRUN_HOLD = 18,  ///< at its end
    ZORVIC_ASRUN_EDIT = 20,
    ZORVIC_ASRUN_DELETE = 21,  ///< of a preset or an asset
    ZORVIC_ASRUN_IMPORT = 22,
    ZORVIC_ASRUN_CONNECT = 30,  ///< a console begins to watch
    ZORVIC_ASRUN_LEAVE = 31,
    ZORVIC_ASRUN_FAULT = 40,
    ZORVIC_ASRUN_POWER = 41,  ///< a reboot or shutdown was asked for
};

/// Whether the outputs really showed a run.
enum AsRunShown : int {
    ZORVIC_SHOWN_NONE = 0,     ///< the entry begins no run
    ZORVIC_SHOWN_UNKNOWN = 1,  ///< not known, or not yet
    ZORVIC_SHOWN_LIT = 2,
    ZORVIC_SHOWN_NOT = 3,    ///< no output did, or none runs
    ZORVIC_SHOWN_SOUND = 4,  ///< it has no pictures on these outputs
};

/// What happened on a unit, once.
struct AsRunEntry {
    /// A time of the unit's wall clock, in UTC.
    using WallTime = std::chrono::sys_time<std::chrono::microseconds>;

    std::uint64_t Number = 0;  ///< in the order in which things were noted; missing ones were lost or are too old
    AsRunKind Kind = ZORVIC_ASRUN_FAULT;
    WallTime Wall{};                         ///< by the unit's clock
    std::chrono::microseconds Monotonic{0};  ///< since the unit's machine started: knows no setting of the clock
    std::string Boot;                        ///< names that start of the machine
    std::int32_t PK = 0;                     ///< 0: concerns no preset
    std::string Preset;                      ///< its name as it was
    std::optional<std::int32_t> RemainingMS;
    std::string Address;     ///< of the console that asked; empty: it happened by itself
    std::string Client;      ///< name of that console, when it gave one
    bool Certified = false;  ///< the name is that of its certificate
    std::string Text;        ///< what else there is to say, in English
    AsRunShown Shown = ZORVIC_SHOWN_NONE;
    std::vector<std::uint32_t> Outputs;     ///< that have lit up with a picture of the run
    std::chrono::microseconds LitAfter{0};  ///< from the take to the first picture
    std::uint64_t Dropped = 0;              ///< pictures of the run that no output showed
    std::optional<WallTime> From;           ///< beginning of what took its time (a gap)
};

/// How this program calls itself to units from its next connection on, for their as-run sheets. Of a name that is no
/// ASCII, or too long, what can be sent is sent. Any thread; best before the first Session.
ZORVIC_API void SetClientName(const std::string& name);

/// An extension of the interface: a unit's as-run sheet as it grows, over a connection of its own. Entries come a
/// second or two after what they tell of.
///
/// No operation waits for the network. A lost connection is taken up again quietly, where it broke off, after 0.25 s at
/// first and 8 s at most.
class ZORVIC_API AsRunSheet {
public:
    /// Which entries are wanted.
    struct Range {
        AsRunEntry::WallTime Since{};  ///< by the unit's clock
        std::uint32_t Limit = 0;       ///< the newest so many; 0: all
    };
    /// How the reading goes.
    enum class State {
        Connecting,  ///< or lost
        Reading,     ///< older entries are still to come
        Live,
        Missing,  ///< the unit knows or keeps no such sheet, or lets nobody more read it; tried again now and then
    };
    /// What Take() hands over.
    struct News {
        /// In no particular order. One whose number came before takes its place.
        std::vector<AsRunEntry> Entries;
        bool Anew = false;  ///< forget all that came before: another sheet takes its place
    };

    /// Starts to read and returns at once. `host` is the text that a Session takes.
    AsRunSheet(const std::string& host, const Range& range);
    /// Ends within a few milliseconds.
    ~AsRunSheet();
    AsRunSheet(const AsRunSheet&) = delete;
    AsRunSheet& operator=(const AsRunSheet&) = delete;

    /// What came since the last call. As long as nobody takes it, no more than some ten thousand entries are fetched.
    /// Any thread.
    News Take();
    /// Any thread.
    State Now() const;
    /// Why it is missing or lost; empty when it is neither.
    std::string Problem() const;

private:
    struct Impl;
    std::unique_ptr<Impl> Pimpl;
};

/// Reads what the sheet holds, by number, and waits for it: `silence` is the longest time without an answer.
/// UNIMPLEMENTED from a unit without sheets, FAILED from one that does not let it be read, NETWORKERROR; `entries` is
/// empty then, and `problem` says why.
ZORVIC_API StatusCode ReadAsRun(const std::string& host, const AsRunSheet::Range& range,
                                std::vector<AsRunEntry>& entries, std::string& problem,
                                std::chrono::milliseconds silence = std::chrono::milliseconds(5000));

// Entries as text, for files and other programs. No network, no state; any thread.

/// "take", "loop"; "kind 77" for one that is not known.
ZORVIC_API std::string AsRunKindText(AsRunKind kind);
/// "1, 2 after 43 ms, 2 dropped", "not shown"; empty for an entry that begins no run.
ZORVIC_API std::string AsRunShownText(const AsRunEntry& entry);
/// "2026-03-01T19:30:00.250Z".
ZORVIC_API std::string AsRunTimeText(AsRunEntry::WallTime time);
/// The names of the columns, as AsRunCSV() fills them, without the end of the line.
ZORVIC_API std::string AsRunCSVHeader();
/// One line (without its end) of RFC 4180. A text that a spreadsheet would take for a formula gets an apostrophe.
ZORVIC_API std::string AsRunCSV(const AsRunEntry& entry);
/// One object, on one line. What is not known is left out.
ZORVIC_API std::string AsRunJSON(const AsRunEntry& entry);

}  // namespace Zorvic
