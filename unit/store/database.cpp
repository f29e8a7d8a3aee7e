#include "store/database.h"

#include "files/give_way.h"
#include "store/examination.h"
#include "store/log_frames.h"
#include "store/migrations.h"
#include "store/sqlite_fault.h"

#include <spdlog/spdlog.h>
#include <sqlite3.h>
#include <sys/stat.h>

#include <algorithm>
#include <utility>

namespace ZorvicUnit {

namespace {

// A copy reads and writes everything once more.
constexpr std::chrono::seconds CopyPeriod(60);
constexpr int CopyCostShare = 100;
// What the end of the program has time for.
constexpr std::uintmax_t LargestAtEnd = std::uintmax_t{16} << 20U;
constexpr std::int64_t MostFreePages = 4096;

const std::filesystem::path& Fit(const std::filesystem::path& file,
                                 const std::function<void(const std::string&)>& tell) {
    MakeFit(file, tell);
    return file;
}

void WarnOfLog(const Fault& fault) {
    spdlog::warn("{}; the log keeps what it holds", fault.what());
}

// 0 when it is not there.
std::uint64_t NumberOf(const std::filesystem::path& file) {
    struct stat status = {};
    return stat(file.c_str(), &status) == 0 ? status.st_ino : 0;
}

}  // namespace

Database::Database(const std::filesystem::path& file, const std::function<void(const std::string&)>& mended)
    : Connection(Fit(file, mended), Access::Make),
      Acknowledged(file.string() + "-seal"),
      Kept(file),
      Place(NumberOf(file)),
      ChangesInCopy(Kept.Changes()) {
    KeepLogOnClose(true);
    UseLog();
    Execute("PRAGMA synchronous = FULL");
    ReportUnreadableLog();
    Migrate(Migrations());
    Shrink();
    Second.emplace(file, Access::Write);
    Second->KeepLogOnClose(true);
    // Opens the log.
    Second->SchemaVersion();
    Checkpoint();
    KeepLogOnClose(false);
}

// Each copy would hold the room that nothing needs any more.
void Database::Shrink() {
    if (Number("PRAGMA freelist_count") <= MostFreePages) return;
    try {
        Execute("VACUUM");
    } catch (const Fault& fault) {
        spdlog::warn("{}", fault.what());
    }
}

Database::~Database() {
    Close();
}

void Database::Close() {
    const std::scoped_lock housekeeping(Housekeeping);
    const std::scoped_lock lock(Mutex);
    if (!IsOpen()) return;
    Checkpoint();
    std::error_code error;
    if (std::filesystem::file_size(File(), error) <= LargestAtEnd && !error) MakeCopy();
    Second.reset();
    Connection::Close();
}

// What SQLite cannot read any more it leaves out without a word: the end of a commit that was being written when the
// power went, or commits behind a damaged place.
void Database::ReportUnreadableLog() {
    const std::string log = File().string() + "-wal";
    const std::int64_t frames = FramesInLog(log);
    int readable = 0;
    if (sqlite3_wal_checkpoint_v2(Opened(), "main", SQLITE_CHECKPOINT_PASSIVE, &readable, nullptr) != SQLITE_OK) return;
    if (frames > readable)
        spdlog::warn(
            "store: {} of the {} pages in {} cannot be read: a commit was cut off, or the latest changes are lost",
            frames - readable, frames, log);
}

void Database::Write(const std::function<void()>& change) {
    NoteSave();
    const std::scoped_lock lock(Mutex);
    CheckPlace();
    try {
        Transaction transaction(*this);
        const std::int64_t before = Changes();
        change();
        // What no trigger counts is acknowledged all the same.
        if (Changes() == before) CountChange();
        transaction.Commit();
    } catch (...) {
        OverwriteFailure();
        throw;
    }
    CheckPlace();
    Acknowledged.Note(Changes());
}

// A commit that failed when it was synchronised stands in the log all the same, and would count after a kill. The next
// one takes its place.
void Database::OverwriteFailure() noexcept {
    try {
        CountChange();
    } catch (const Fault& fault) {
        // What found no room is not in the log.
        if (fault.Kind != FaultKind::DiskFull) spdlog::error("{}", fault.what());
    }
}

// SQLite goes on writing into a file that has been removed.
void Database::CheckPlace() const {
    if (NumberOf(File()) == Place) return;
    throw Fault(FaultKind::Internal, fmt::format("store: {} was removed or replaced while the unit runs: nothing can "
                                                 "be stored until it is started again",
                                                 File().string()));
}

void Database::CheckpointWhenIdle() {
    const std::scoped_lock housekeeping(Housekeeping);
    if (!IsIdle()) return;
    try {
        BringLogIntoFile();
    } catch (const Fault& fault) {
        WarnOfLog(fault);
    }
    if (std::chrono::steady_clock::now() >= NextCopy) MakeCopy();
}

bool Database::IsIdle() {
    const std::scoped_lock lock(Mutex);
    if (!IsOpen()) return false;
    const std::int64_t changes = sqlite3_total_changes64(Opened());
    return std::exchange(ChangesAtLastLook, changes) == changes;
}

// Who writes meanwhile does not wait for the disk: all that is synchronised here is so without the lock.
void Database::BringLogIntoFile() {
    std::int64_t changes = 0;
    {
        const std::scoped_lock lock(Mutex);
        changes = sqlite3_total_changes64(Opened());
        if (std::exchange(ChangesInFile, changes) == changes) return;
        if (!Acknowledged.Changes()) Acknowledged.Keep(Changes());
        Acknowledged.Note(Changes());
    }
    Acknowledged.Sync();
    Second->Execute("PRAGMA wal_checkpoint(PASSIVE)");
    const std::scoped_lock lock(Mutex);
    if (sqlite3_total_changes64(Opened()) == changes) EmptyLog();
}

void Database::EmptyLog() {
    if (sqlite3_wal_checkpoint_v2(Opened(), "main", SQLITE_CHECKPOINT_TRUNCATE, nullptr, nullptr) != SQLITE_OK)
        RaiseLast(Opened(), "bring the log into the file");
}

void Database::Checkpoint() {
    // Also after a failure, which is not to be repeated until something changes.
    ChangesInFile = sqlite3_total_changes64(Opened());
    try {
        Acknowledged.Keep(Changes());
        EmptyLog();
    } catch (const Fault& fault) {
        WarnOfLog(fault);
    }
}

// Not under the lock: nobody has to wait for it.
void Database::MakeCopy() {
    const auto began = std::chrono::steady_clock::now();
    try {
        const std::int64_t changes = Changes();
        if (ChangesInCopy == changes) return;
        CheckPlace();
        Kept.Make();
        ChangesInCopy = changes;
    } catch (const std::exception& error) {
        spdlog::error("store: no copy could be made: {}", error.what());
    }
    const auto cost = std::chrono::steady_clock::now() - began;
    NextCopy = began + std::max<std::chrono::steady_clock::duration>(CopyPeriod, cost * CopyCostShare);
}

}  // namespace ZorvicUnit
