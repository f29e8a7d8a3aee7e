#pragma once

#include <cstdint>
#include <mutex>
#include <string>
#include <string_view>

struct sqlite3;
struct sqlite3_stmt;

namespace ZorvicUnit {

class Connection;

/// A database's lock. Held by a thread that means to write, it keeps all others from writing in between.
using DatabaseLock = std::unique_lock<std::recursive_timed_mutex>;

/// One SQL statement, bound and stepped by one thread. Holds the database's lock from preparation to destruction, so
/// that no other thread's statement lands in this thread's transaction: keep it short-lived and local.
/// Every failure is thrown as a Fault (StoreDamage, DiskFull or Internal) that names the statement.
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
    friend class Connection;
    Statement(Connection& connection, std::string_view sql);

    DatabaseLock Lock;
    sqlite3* Handle;
    sqlite3_stmt* Prepared = nullptr;
    int Bound = 0;
};

}  // namespace ZorvicUnit
