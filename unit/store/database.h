#pragma once

#include "store/seal.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace ZorvicUnit {

class Database;

/// The database's lock. Held by a thread that means to write, it keeps all others from writing in between.
using DatabaseLock = std::unique_lock<std::recursive_timed_mutex>;

/// One SQL statement, bound and stepped by one thread. Holds the database's lock from preparation to destruction, so
/// that no other thread's statement lands in this thread's transaction: keep it short-lived and local.
/// Every failure is thrown as a Fault (DiskFull or Internal) that names the statement.
class Statement {
public:
    ~Statement();
    Statement(const Statement&) = delete;
    Statement& operator=(const Statement&) = delete;

    /// Binds the next parameter, in the order of the question marks.
    Statement& Bind(std::int64_t value);
    Statement& Bind(std::string_view text);
    Statement& BindBlob(std::string_view bytes);

    /// True when a row is there to be read, false when there are no more.
    bool Step();
    /// Steps to the end; for statements whose rows do not matter.
    void Run();

    /// Columns of the current row, counted from 0. A NULL reads as 0 or as empty.
    std::int64_t Integer(int column) const;
    std::string Text(int column) const;
    std::string Blob(int column) const;

private:
    friend class Database;
    Statement(Database& database, std::string_view sql);

    DatabaseLock Lock;
    sqlite3* Handle;
    sqlite3_stmt* Prepared = nullptr;
    int Bound = 0;
};

/// The unit's one SQLite file, shared by the classes that keep one table each. May be used from several threads: a
/// Statement or a Transaction holds the lock for as long as it lives, others wait.
class Database {
public:
    /// Opens the file (write-ahead log, every commit synchronised to disk), brings its schema up to date and the log's
    /// content into it. Makes a file only for a store that has never been used. Throws Fault, with the files as they
    /// were, when it is damaged, gone, not ours, written by a newer version, or older than what was acknowledged.
    explicit Database(const std::filesystem::path& file);
    /// Closes.
    ~Database();
    Database(const Database&) = delete;
    Database& operator=(const Database&) = delete;

    /// Where all statements come from. The result must not outlive the database.
    Statement Prepare(std::string_view sql) { return Statement(*this, sql); }
    /// Runs statements that take no parameters and give no rows.
    void Execute(const char* sql);
    /// Key that the last INSERT of this thread made; call it inside the transaction of that INSERT.
    std::int64_t LastInsertKey();
    /// Waits for the lock while `wanted` says so: another thread may hold it for as long as the disk takes. `wanted` is
    /// asked once more with the lock held. Throws Fault TooLate when it says no.
    DatabaseLock WaitForTurn(const std::function<bool()>& wanted);

    /// Call it after the commit of a change and before that is acknowledged: from then on a database without the change
    /// is not taken for a complete one. Does not wait for the disk.
    void NoteChanges() noexcept;
    /// Brings the log's content into the file when nothing has changed since the last call. A failure, as on a full
    /// disk, is logged: the log keeps everything.
    void CheckpointWhenIdle();
    /// Leaves one complete file. Every later use throws Fault. For any thread; does nothing the second time.
    void Close();

private:
    friend class Statement;
    friend class Transaction;
    void RefuseLostFile() const;
    void Open();
    std::int64_t SchemaVersion();
    void Check();
    void CheckLedger();
    void ReportUnreadableLog();
    void Migrate();
    std::int64_t Changes();
    void Checkpoint();

    const std::filesystem::path File;
    std::recursive_timed_mutex Mutex;  ///< guards all below, and a transaction from its begin to its end
    Seal Acknowledged;
    std::int64_t ChangesAtLastLook = 0;  ///< of this connection, for telling whether it is idle
    std::int64_t ChangesInFile = 0;      ///< the same, when the log was last brought into the file
    struct Closer {
        void operator()(sqlite3* handle) const;
    };
    std::unique_ptr<sqlite3, Closer> Handle;
};

/// Begins at once; rolls back when it is destroyed without a commit. Everything between is on disk when Commit returns
/// and not there at all when it throws. Transactions do not nest.
class Transaction {
public:
    explicit Transaction(Database& database);
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    void Commit();

private:
    Database& Target;
    DatabaseLock Lock;
    bool Open = true;
};

}  // namespace ZorvicUnit
