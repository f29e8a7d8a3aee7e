#pragma once

#include "asrun/sheet_file.h"
#include "clock.h"

#include <zorvic/v1/unit.pb.h>

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <filesystem>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

namespace ZorvicUnit {

/// The as-run sheet: what happened on this unit, when, and who asked for it. Nobody who has something to note waits for
/// a disk: entries are kept in memory, and one thread of normal priority ("zu-asrun") writes them, at most once a
/// second. Those that do not fit into memory are lost, and an entry says how many. Safe to use from several threads.
class Sheet {
public:
    static constexpr std::size_t MostWaiting = 10'000;

    /// Keeps no sheet when the limits say so.
    Sheet(std::filesystem::path file, SheetLimits limits);
    /// Closes.
    ~Sheet();
    Sheet(const Sheet&) = delete;
    Sheet& operator=(const Sheet&) = delete;

    /// Notes what happened at this time, now unless it is given. Fills in the times, and a number that names the entry
    /// until the end of the process; 0 when it is not kept.
    void Record(zorvic::v1::AsRunEntry& entry, std::optional<Clock::TimePoint> at = std::nullopt);
    /// Says more of an entry that was recorded.
    void Amend(const zorvic::v1::AsRunEntry& entry);

    class Reader;
    // Each holds one of the server's threads.
    static constexpr std::size_t MaxReaders = 32;

    /// Ends all reading, and lets none begin.
    void EndReading();
    /// Writes what waits. What is recorded later is lost.
    void Close();

private:
    void Push(const zorvic::v1::AsRunEntry& entry);
    void Add(zorvic::v1::AsRunEntry& entry, Clock::TimePoint at);
    void NoteClock();
    void Open();
    void Run();
    bool Write(const SheetFile::Batch& batch);
    void CloseFile();

    const bool Keeps;
    SheetFile File;
    const std::string Boot;
    std::string LastProblem;  ///< of the writer

    std::mutex Lock;  ///< guards all below; never held across a write
    std::condition_variable Wake;
    std::condition_variable Written;
    std::deque<zorvic::v1::AsRunEntry> Waiting;
    std::size_t BeingWritten = 0;
    std::uint64_t LastNumber = 1;                          ///< the first one is for a gap before the start
    std::uint64_t Lost = 0;                                ///< since the last entry that was not
    std::optional<std::chrono::microseconds> ClockOffset;  ///< of the wall clock from the monotonic one
    std::uint64_t Writes = 0;
    std::size_t Readers = 0;
    bool ReadingOver = false;
    bool Stop = false;

    std::thread Writer;
};

/// One who reads the sheet, on one thread. The sheet must outlive it.
class Sheet::Reader {
public:
    /// Throws Fault Refused when there is no sheet or too many read it.
    Reader(Sheet& sheet, const zorvic::v1::AsRunRequest& request);
    ~Reader();
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;

    /// The next entries. When there are no more, waits for some, no longer than the limit, and then gives an empty
    /// message; nothing when reading is over. Throws Fault.
    std::optional<zorvic::v1::AsRunEntries> Next(std::chrono::milliseconds limit);

private:
    Sheet& Source;
    SheetFile::Place Place;
    std::uint64_t Seen = 0;  ///< writes, when it read last
    bool CaughtUp = false;
};

}  // namespace ZorvicUnit
