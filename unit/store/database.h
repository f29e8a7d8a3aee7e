#pragma once

#include "store/connection.h"
#include "store/copies.h"
#include "store/seal.h"

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <mutex>
#include <optional>
#include <string>

namespace ZorvicUnit {

/// The unit's store: what operators have made, and what was promised to them. May be used from several threads.
class Database : public Connection {
public:
    /// Opens the file (write-ahead log, every commit synchronised to disk), brings its schema up to date and the log's
    /// content into it. Makes a file only for a store that has never been used. A damaged one is mended as far as that
    /// loses nothing without naming it, and `mended` hears of it. Throws Fault, with the files as they were, when it is
    /// gone, not ours, written by a newer version, or older than what was acknowledged.
    explicit Database(const std::filesystem::path& file, const std::function<void(const std::string&)>& mended = {});
    /// Closes.
    ~Database();

    /// Carries out one change in a transaction. It is on disk when this returns, and from then on a database without it
    /// is not taken for a complete one. When it throws a Fault, the change is not there, and does not come back either:
    /// the disk fails, or the store has been removed while the unit runs, and nobody would find it again.
    void Write(const std::function<void()>& change);
    /// Brings the log's content into the file when nothing has changed since the last call, and makes a copy of the
    /// file now and then. A failure, as on a full disk, is logged: the log keeps everything.
    void CheckpointWhenIdle();
    /// Leaves one complete file. Every later use throws Fault. For any thread; does nothing the second time.
    void Close();

private:
    void CheckPlace() const;
    void OverwriteFailure() noexcept;
    void ReportUnreadableLog();
    void Shrink();
    std::int64_t Changes() { return Number("SELECT changes FROM ledger"); }
    void CountChange() { Execute("UPDATE ledger SET changes = changes + 1"); }
    void Checkpoint();
    bool IsIdle();
    void BringLogIntoFile();
    void EmptyLog();
    void MakeCopy();

    std::mutex Housekeeping;  ///< taken before the connection's lock; guards the last two and what `Second` does
    // The others are guarded by the connection's lock.
    Seal Acknowledged;
    const Copies Kept;
    const std::uint64_t Place;           ///< the file's number in its file system
    std::int64_t ChangesAtLastLook = 0;  ///< of this connection, for telling whether it is idle
    std::int64_t ChangesInFile = 0;      ///< the same, when the log was last brought into the file
    std::int64_t ChangesInCopy = -1;     ///< those of the ledger
    /// Opened with the first one, so that it has the same files whatever becomes of their names.
    std::optional<Connection> Second;
    std::chrono::steady_clock::time_point NextCopy;
};

}  // namespace ZorvicUnit
