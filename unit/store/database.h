#pragma once

#include "store/connection.h"
#include "store/copies.h"
#include "store/seal.h"

#include <chrono>
#include <cstdint>
#include <filesystem>

namespace ZorvicUnit {

/// The unit's store: what operators have made, and what was promised to them. May be used from several threads.
class Database : public Connection {
public:
    /// Opens the file (write-ahead log, every commit synchronised to disk), brings its schema up to date and the log's
    /// content into it. Makes a file only for a store that has never been used. A damaged one is mended as far as that
    /// loses nothing without naming it. Throws Fault, with the files as they were, when it is gone, not ours, written
    /// by a newer version, or older than what was acknowledged.
    explicit Database(const std::filesystem::path& file);
    /// Closes.
    ~Database();

    /// Call it after the commit of a change and before that is acknowledged: from then on a database without the change
    /// is not taken for a complete one. Does not wait for the disk. Throws Fault when the store has been removed while
    /// the unit runs: the change is in a file that nobody will find.
    void NoteChanges();
    /// Brings the log's content into the file when nothing has changed since the last call, and makes a copy of the
    /// file now and then. A failure, as on a full disk, is logged: the log keeps everything.
    void CheckpointWhenIdle();
    /// Leaves one complete file. Every later use throws Fault. For any thread; does nothing the second time.
    void Close();

private:
    void CheckPlace() const;
    void ReportUnreadableLog();
    void Shrink();
    std::int64_t Changes() { return Number("SELECT changes FROM ledger"); }
    void Checkpoint();
    void MakeCopy();

    // The last two are the housekeeper's; the others are guarded by the connection's lock.
    Seal Acknowledged;
    const Copies Kept;
    const std::uint64_t Place;           ///< the file's number in its file system
    std::int64_t ChangesAtLastLook = 0;  ///< of this connection, for telling whether it is idle
    std::int64_t ChangesInFile = 0;      ///< the same, when the log was last brought into the file
    std::int64_t ChangesInCopy = -1;     ///< those of the ledger
    std::chrono::steady_clock::time_point NextCopy;
};

}  // namespace ZorvicUnit
