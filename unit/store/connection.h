#pragma once

#include "store/statement.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <memory>
#include <mutex>
#include <span>
#include <string_view>

struct sqlite3;

namespace ZorvicUnit {

/// One open SQLite file, shared by the classes that keep one table each. May be used from several threads: a Statement
/// or a Transaction holds the lock for as long as it lives, others wait. Failures are thrown as Fault.
class Connection {
public:
    enum class Access { Read, Write, Make };

    Connection(std::filesystem::path file, Access access);
    ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    const std::filesystem::path& File() const { return Name; }
    /// Where all statements come from. The result must not outlive the connection.
    Statement Prepare(std::string_view sql) { return Statement(*this, sql); }
    /// Runs statements that take no parameters and give no rows.
    void Execute(const char* sql);
    /// Key that the last INSERT of this thread made; call it inside the transaction of that INSERT.
    std::int64_t LastInsertKey();
    /// Waits for the lock while `wanted` says so: another thread may hold it for as long as the disk takes. `wanted` is
    /// asked once more with the lock held. Throws Fault TooLate when it says no.
    DatabaseLock WaitForTurn(const std::function<bool()>& wanted);
    /// The first column of the first row; 0 when there is none.
    std::int64_t Number(const char* sql);

    /// Runs those of the steps that the file has not seen, each in a transaction of its own, and counts them in it.
    void Migrate(std::span<const char* const> steps);
    std::int64_t SchemaVersion() { return Number("PRAGMA user_version"); }
    /// Write-ahead log. Throws Fault when the file system does not allow it: without it, what this program promises
    /// does not hold.
    void UseLog();
    /// What is to be done with the log when the connection is closed.
    void KeepLogOnClose(bool keep);
    /// Every later use throws Fault. Does nothing the second time.
    void Close();
    bool IsOpen() const { return Handle != nullptr; }

protected:
    sqlite3* Opened() const;

    std::recursive_timed_mutex Mutex;  ///< guards the rest, and a transaction from its begin to its end

private:
    friend class Statement;
    friend class Transaction;
    struct Closer {
        void operator()(sqlite3* handle) const;
    };

    const std::filesystem::path Name;
    std::unique_ptr<sqlite3, Closer> Handle;
};

/// Begins at once; rolls back when it is destroyed without a commit. Everything between is on disk when Commit returns
/// and not there at all when it throws. Transactions do not nest.
class Transaction {
public:
    explicit Transaction(Connection& connection);
    ~Transaction();
    Transaction(const Transaction&) = delete;
    Transaction& operator=(const Transaction&) = delete;
    void Commit();

private:
    Connection& Target;
    DatabaseLock Lock;
    bool Open = true;
};

}  // namespace ZorvicUnit
