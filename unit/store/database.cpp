#include "store/database.h"

#include "fault.h"
#include "store/log_frames.h"
#include "store/migrations.h"

#include <spdlog/spdlog.h>
#include <sqlite3.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <system_error>
#include <utility>

namespace ZorvicUnit {

namespace {

// Nothing wakes a thread that waits for a lock when its caller gives up.
constexpr std::chrono::milliseconds AskPeriod(20);
// The schema that brought the ledger.
constexpr std::int64_t LedgerVersion = 2;

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

[[noreturn]] void RaiseClosed() {
    throw Fault(FaultKind::Internal, "store: it is closed");
}

[[noreturn]] void RaiseDamage(std::string_view what) {
    throw Fault(FaultKind::Internal, fmt::format("store: the database is damaged: {}", what));
}

std::filesystem::path LogOf(const std::filesystem::path& file) {
    return file.string() + "-wal";
}

bool HoldsSomething(const std::filesystem::path& file) {
    std::error_code error;
    const auto size = std::filesystem::file_size(file, error);
    return !error && size > 0;
}

}  // namespace

Statement::Statement(Database& database, std::string_view sql) : Lock(database.Mutex), Handle(database.Handle.get()) {
    if (!Handle) RaiseClosed();
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

Database::Database(const std::filesystem::path& file) : File(file), Acknowledged(file.string() + "-seal") {
    RefuseLostFile();
    Open();
    Check();
    Execute("PRAGMA journal_mode = WAL");
    Execute("PRAGMA synchronous = FULL");
    ReportUnreadableLog();
    Migrate();
    Checkpoint();
    sqlite3_db_config(Handle.get(), SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 0, nullptr);
}

Database::~Database() {
    Close();
}

void Database::Close() {
    const std::scoped_lock lock(Mutex);
    if (!Handle) return;
    Checkpoint();
    Handle.reset();
}

void Database::Execute(const char* sql) {
    const std::scoped_lock lock(Mutex);
    if (!Handle) RaiseClosed();
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

// SQLite would make an empty database in the place of the lost one, and remove its log.
void Database::RefuseLostFile() const {
    if (HoldsSomething(File)) return;
    const auto log = LogOf(File);
    if (!Acknowledged.Exists() && !HoldsSomething(log)) return;
    throw Fault(FaultKind::Internal,
                fmt::format("store: {} is {}, and {} says that the store has been used: put the database back, or "
                            "remove that file too for a new store",
                            File.string(), std::filesystem::exists(File) ? "empty" : "missing",
                            (Acknowledged.Exists() ? Acknowledged.File() : log).string()));
}

void Database::Open() {
    sqlite3* handle = nullptr;
    const int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_CREATE | SQLITE_OPEN_FULLMUTEX;
    const int result = sqlite3_open_v2(File.c_str(), &handle, flags, nullptr);
    Handle.reset(handle);
    if (result != SQLITE_OK) Raise(handle, "open " + File.string());
    // Until it is known to be whole, closing must not bring a log into it that may be the only way to mend it.
    sqlite3_db_config(handle, SQLITE_DBCONFIG_NO_CKPT_ON_CLOSE, 1, nullptr);
}

// Looks at every page once, so that damage is said at the start and not in the middle of a show.
void Database::Check() {
    const std::int64_t version = SchemaVersion();
    if (version < 0 || std::cmp_greater(version, Migrations().size())) {
        throw Fault(FaultKind::Internal, fmt::format("store: schema {} was written by a newer version of this program "
                                                     "(this one knows up to {})",
                                                     version, Migrations().size()));
    }
    auto statement = Prepare("PRAGMA quick_check(1)");
    const std::string answer = statement.Step() ? statement.Text(0) : "no answer";
    if (answer != "ok") RaiseDamage(answer);
    CheckLedger();
}

void Database::CheckLedger() {
    const auto acknowledged = Acknowledged.Changes();
    const std::int64_t version = SchemaVersion();
    const std::int64_t changes = version < LedgerVersion ? -1 : Changes();
    if (acknowledged && *acknowledged > changes) {
        throw Fault(
            FaultKind::Internal,
            fmt::format("store: the end of what was stored is lost: {} has {} changes and {} were acknowledged. "
                        "Put the files back, or remove {} to go on with what is there",
                        File.string(), std::max<std::int64_t>(changes, 0), *acknowledged,
                        Acknowledged.File().string()));
    }
    if (version < LedgerVersion) return;
    auto statement = Prepare(
        "SELECT presets, marks, (SELECT count(*) FROM presets), "
        "(SELECT coalesce(sum(mark), 0) FROM presets) FROM ledger");
    if (!statement.Step()) RaiseDamage("its ledger is gone");
    if (statement.Integer(0) != statement.Integer(2) || statement.Integer(1) != statement.Integer(3))
        RaiseDamage(fmt::format("it should hold {} presets and holds {}, or others", statement.Integer(0),
                                statement.Integer(2)));
    if (!acknowledged)
        spdlog::warn("store: {} is {}: nothing tells whether the latest changes are there",
                     Acknowledged.File().string(), Acknowledged.Exists() ? "damaged" : "missing");
}

// What SQLite cannot read any more it leaves out without a word: the end of a commit that was being written when the
// power went, or commits behind a damaged place.
void Database::ReportUnreadableLog() {
    const std::int64_t frames = FramesInLog(LogOf(File));
    int readable = 0;
    if (sqlite3_wal_checkpoint_v2(Handle.get(), "main", SQLITE_CHECKPOINT_PASSIVE, &readable, nullptr) != SQLITE_OK)
        return;
    if (frames > readable)
        spdlog::warn(
            "store: {} of the {} pages in {} cannot be read: a commit was cut off, or the latest changes are "
            "lost",
            frames - readable, frames, LogOf(File).string());
}

void Database::Migrate() {
    const auto steps = Migrations();
    for (auto number = static_cast<std::size_t>(SchemaVersion()); number < steps.size(); ++number) {
        Transaction transaction(*this);
        Execute(steps[number]);
        Execute(fmt::format("PRAGMA user_version = {}", number + 1).c_str());
        transaction.Commit();
    }
}

std::int64_t Database::Changes() {
    auto statement = Prepare("SELECT changes FROM ledger");
    return statement.Step() ? statement.Integer(0) : -1;
}

void Database::NoteChanges() noexcept {
    try {
        const std::scoped_lock lock(Mutex);
        Acknowledged.Note(Changes());
    } catch (const std::exception& error) {
        // The change itself is on disk.
        spdlog::warn("{}", error.what());
    }
}

void Database::CheckpointWhenIdle() {
    const std::scoped_lock lock(Mutex);
    if (!Handle) return;
    const std::int64_t changes = sqlite3_total_changes64(Handle.get());
    const bool idle = std::exchange(ChangesAtLastLook, changes) == changes;
    if (idle && changes != ChangesInFile) Checkpoint();
}

void Database::Checkpoint() {
    // Also after a failure, which is not to be repeated until something changes.
    ChangesInFile = sqlite3_total_changes64(Handle.get());
    try {
        Acknowledged.Keep(Changes());
        if (sqlite3_wal_checkpoint_v2(Handle.get(), "main", SQLITE_CHECKPOINT_TRUNCATE, nullptr, nullptr) != SQLITE_OK)
            Raise(Handle.get(), "bring the log into the file");
    } catch (const Fault& fault) {
        spdlog::warn("{}; the log keeps what it holds", fault.what());
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
