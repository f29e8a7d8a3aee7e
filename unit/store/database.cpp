#include "store/database.h"

#include "fault.h"
#include "store/migrations.h"

#include <spdlog/spdlog.h>
#include <sqlite3.h>

#include <cerrno>
#include <chrono>
#include <utility>

namespace ZorvicUnit {

namespace {

// Nothing wakes a thread that waits for a lock when its caller gives up.
constexpr std::chrono::milliseconds AskPeriod(20);

// The system's own reason for the last failure on one of the database's two files.
int LastErrno(sqlite3* handle, int whichFile) {
    sqlite3_file* file = nullptr;
    int reason = 0;
    sqlite3_file_control(handle, "main", whichFile, &file);
    if (file && file->pMethods) file->pMethods->xFileControl(file, SQLITE_FCNTL_LAST_ERRNO, &reason);
    return reason;
}

// A quota and the file size limit are reported as plain write errors; to the operator all are a full disk.
bool IsFull(sqlite3* handle) {
    const int code = sqlite3_extended_errcode(handle);
    if (code == SQLITE_FULL) return true;
    if (code != SQLITE_IOERR_WRITE) return false;
    for (const int file : {SQLITE_FCNTL_JOURNAL_POINTER, SQLITE_FCNTL_FILE_POINTER}) {
        const int reason = LastErrno(handle, file);
        if (reason == ENOSPC || reason == EFBIG || reason == EDQUOT) return true;
    }
    return false;
}

[[noreturn]] void Raise(sqlite3* handle, std::string_view what) {
    const FaultKind kind = IsFull(handle) ? FaultKind::DiskFull : FaultKind::Internal;
    const char* remark = kind == FaultKind::DiskFull ? ", the disk is full" : "";
    throw Fault(kind, fmt::format("store: {}: {} ({}){}", what, sqlite3_errmsg(handle),
                                  sqlite3_extended_errcode(handle), remark));
}

}  // namespace

Statement::Statement(Database& database, std::string_view sql) : Lock(database.Mutex), Handle(database.Handle.get()) {
    if (sqlite3_prepare_v2(Handle, sql.data(), static_cast<int>(sql.size()), &Prepared, nullptr) != SQLITE_OK)
        Raise(Handle, sql);
}

Statement::~Statement() {
    sqlite3_finalize(Prepared);
}

Statement& Statement::Bind(std::int64_t value) {
    if (sqlite3_bind_int64(Prepared, ++Bound, value) != SQLITE_OK) Raise(Handle, sqlite3_sql(Prepared));
    return *this;
}

Statement& Statement::Bind(std::string_view text) {
    if (sqlite3_bind_text64(Prepared, ++Bound, text.data(), text.size(), SQLITE_TRANSIENT, SQLITE_UTF8) != SQLITE_OK)
        Raise(Handle, sqlite3_sql(Prepared));
    return *this;
}

Statement& Statement::BindBlob(std::string_view bytes) {
    // A null pointer would bind NULL where an empty blob is meant.
    const void* data = bytes.empty() ? "" : bytes.data();
    if (sqlite3_bind_blob64(Prepared, ++Bound, data, bytes.size(), SQLITE_TRANSIENT) != SQLITE_OK)
        Raise(Handle, sqlite3_sql(Prepared));
    return *this;
}

bool Statement::Step() {
    const int result = sqlite3_step(Prepared);
    if (result != SQLITE_ROW && result != SQLITE_DONE) Raise(Handle, sqlite3_sql(Prepared));
    return result == SQLITE_ROW;
}

void Statement::Run() {
    while (Step()) {
    }
}

std::int64_t Statement::Integer(int column) const {
    return sqlite3_column_int64(Prepared, column);
}

std::string Statement::Text(int column) const {
    return Blob(column);
}

std::string Statement::Blob(int column) const {
    const auto* data = static_cast<const char*>(sqlite3_column_blob(Prepared, column));
    return data ? std::string(data, static_cast<std::size_t>(sqlite3_column_bytes(Prepared, column))) : std::string();
}

void Database::Closer::operator()(sqlite3* handle) const {
    sqlite3_close_v2(handle);
}

Database::Database(const std::filesystem::path& file) {
    sqlite3* handle = nullptr;
    const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_FULLMUTEX;
    const int result = sqlite3_open_v2(file.c_str(), &handle, flags, nullptr);
    Handle.reset(handle);
    if (result != SQLITE_OK) Raise(handle, "open " + file.string());
    Execute("PRAGMA journal_mode = WAL");
    Execute("PRAGMA synchronous = FULL");
    Check();
    Migrate();
}

Database::~Database() = default;

void Database::Execute(const char* sql) {
    const std::scoped_lock lock(Mutex);
    if (sqlite3_exec(Handle.get(), sql, nullptr, nullptr, nullptr) != SQLITE_OK) Raise(Handle.get(), sql);
}

std::int64_t Database::LastInsertKey() {
    const std::scoped_lock lock(Mutex);
    return sqlite3_last_insert_rowid(Handle.get());
}

DatabaseLock Database::WaitForTurn(const std::function<bool()>& wanted) {
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

std::int64_t Database::SchemaVersion() {
    auto statement = Prepare("PRAGMA user_version");
    return statement.Step() ? statement.Integer(0) : 0;
}

// Looks at every page once, so that damage is said at the start and not in the middle of a show.
void Database::Check() {
    auto statement = Prepare("PRAGMA quick_check(1)");
    const std::string answer = statement.Step() ? statement.Text(0) : "no answer";
    if (answer != "ok") throw Fault(FaultKind::Internal, "store: the database is damaged: " + answer);
}

void Database::Migrate() {
    const auto steps = Migrations();
    const std::int64_t version = SchemaVersion();
    if (version < 0 || std::cmp_greater(version, steps.size())) {
        throw Fault(FaultKind::Internal, fmt::format("store: schema {} was written by a newer version of this program "
                                                     "(this one knows up to {})",
                                                     version, steps.size()));
    }
    for (auto number = static_cast<std::size_t>(version); number < steps.size(); ++number) {
        Transaction transaction(*this);
        Execute(steps[number]);
        Execute(fmt::format("PRAGMA user_version = {}", number + 1).c_str());
        transaction.Commit();
    }
}

Transaction::Transaction(Database& database) : Target(database), Lock(database.Mutex) {
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
