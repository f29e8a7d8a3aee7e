#include "store/connection.h"

#include "store/row_hash.h"
#include "store/sqlite_fault.h"

#include <spdlog/spdlog.h>
#include <sqlite3.h>

#include <chrono>
#include <utility>

namespace ZorvicUnit {

namespace {

// Nothing wakes a thread that waits for a lock when its caller gives up.
constexpr std::chrono::milliseconds AskPeriod(20);

int FlagsOf(Connection::Access access) {
    switch (access) {
        case Connection::Access::Read:
            return SQLITE_OPEN_READONLY;
        case Connection::Access::Write:
            return SQLITE_OPEN_READWRITE;
        default:
            return SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE;
    }
}

}  // namespace

void Connection::Closer::operator()(sqlite3* handle) const {
    sqlite3_close_v2(handle);
}

Connection::Connection(std::filesystem::path file, Access access) : Name(std::move(file)) {
    sqlite3* handle = nullptr;
    const int result = sqlite3_open_v2(Name.c_str(), &handle, FlagsOf(access) | SQLITE_OPEN_FULLMUTEX, nullptr);
    Handle.reset(handle);
    if (result != SQLITE_OK) RaiseLast(handle, "open " + Name.string());
    AddRowHash(handle);
}

Connection::~Connection() = default;

sqlite3* Connection::Opened() const {
    if (!Handle) throw Fault(FaultKind::Internal, "store: it is closed");
    return Handle.get();
}

void Connection::Execute(const char* sql) {
    const std::scoped_lock lock(Mutex);
    if (sqlite3_exec(Opened(), sql, nullptr, nullptr, nullptr) != SQLITE_OK) RaiseLast(Opened(), sql);
}

std::int64_t Connection::LastInsertKey() {
    const std::scoped_lock lock(Mutex);
    return sqlite3_last_insert_rowid(Opened());
}

DatabaseLock Connection::WaitForTurn(const std::function<bool()>& wanted) {
    DatabaseLock lock(Mutex, std::defer_lock);
    bool taken = false;
    while (wanted()) {
        if (taken) return lock;
        // By the wall clock, because the thread sanitizer does not see a lock that is taken by the steady one. If it is
        // set back meanwhile, a caller that gives up is noticed late and no more.
        taken = lock.try_lock_until(std::chrono::system_clock::now() + AskPeriod);
    }
    throw Fault(FaultKind::TooLate, "the store was busy until the caller had given up; nothing was done");
}

std::int64_t Connection::Number(const char* sql) {
    auto statement = Prepare(sql);
    return statement.Step() ? statement.Integer(0) : 0;
}

void Connection::Migrate(std::span<const char* const> steps) {
    for (auto number = static_cast<std::size_t>(SchemaVersion()); number < steps.size(); ++number) {
        Transaction transaction(*this);
        Execute(steps[number]);
        Execute(fmt::format("PRAGMA user_version = {}", number + 1).c_str());
        transaction.Commit();
    }
}

void Connection::UseLog() {
    auto statement = Prepare("PRAGMA journal_mode = WAL");
    const std::string mode = statement.Step() ? statement.Text(0) : "none";
    if (mode != "wal")
        throw Fault(FaultKind::Internal, fmt::format("store: {} cannot have a write-ahead log (its journal is \"{}\"): "
                                                     "put the store on a local file system",
                                                     Name.string(), mode));
}

void Connection::KeepLogOnClose(bool keep) {
    sqlite3_db_config(Opened(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, keep ? 1 : 0, nullptr);
}

void Connection::Close() {
    const std::scoped_lock lock(Mutex);
    Handle.reset();
}

Transaction::Transaction(Connection& connection) : Target(connection), Lock(connection.Mutex) {
    Target.Execute("BEGIN IMMEDIATE");
}

Transaction::~Transaction() {
    // SQLite has rolled back by itself after some write errors; then there is nothing left to do.
    if (!Open || sqlite3_get_autocommit(Target.Handle.get()) != 0) return;
    if (sqlite3_exec(Target.Handle.get(), "ROLLBACK", nullptr, nullptr, nullptr) != SQLITE_OK)
        spdlog::error("store: rolling back failed: {}", sqlite3_errmsg(Target.Handle.get()));
}

void Transaction::Commit() {
    Target.Execute("COMMIT");
    Open = false;
}

}  // namespace ZorvicUnit
