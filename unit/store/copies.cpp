#include "store/copies.h"

#include "fault.h"
#include "files/file_copy.h"
#include "store/connection.h"
#include "store/ledger.h"

#include <spdlog/fmt/fmt.h>
#include <sqlite3.h>

#include <memory>
#include <string>
#include <system_error>

namespace ZorvicUnit {

namespace {

struct EndBackup {
    void operator()(sqlite3_backup* backup) const { sqlite3_backup_finish(backup); }
};

/// For what has no statement.
class Raw : public Connection {
public:
    using Connection::Connection;
    sqlite3* Handle() const { return Opened(); }
};

// In one step, and so of one moment: a reader of the log, which no writer waits for.
void CopyPages(const std::filesystem::path& from, const std::filesystem::path& to) {
    const Raw source(from, Connection::Access::Read);
    Raw target(to, Connection::Access::Make);
    // Until it takes its place nobody needs it.
    target.Execute("PRAGMA synchronous = OFF");
    {
        const std::unique_ptr<sqlite3_backup, EndBackup> backup(
            sqlite3_backup_init(target.Handle(), "main", source.Handle(), "main"));
        const int result = backup ? sqlite3_backup_step(backup.get(), -1) : SQLITE_NOMEM;
        if (result != SQLITE_DONE)
            throw Fault(FaultKind::Internal, fmt::format("copy the database: {}", sqlite3_errstr(result)));
    }
    // The source's way of keeping a log came with its pages; a copy is one file.
    target.Execute("PRAGMA journal_mode = DELETE");
    CheckContent(target);
}

}  // namespace

std::filesystem::path Copies::Numbered(int number) const {
    return Database.string() + "-copy" + std::to_string(number);
}

void Copies::Make() const {
    const std::filesystem::path part = Database.string() + "-copy.part";
    std::filesystem::remove(part);
    CopyPages(Database, part);
    SyncFile(part);
    std::error_code missing;
    for (int number = Kept; number > 1; --number)
        std::filesystem::rename(Numbered(number - 1), Numbered(number), missing);
    std::filesystem::rename(part, Numbered(1));
    SyncDirectory(Database.parent_path());
}

std::int64_t Copies::Changes() const {
    const auto files = Files();
    if (files.empty()) return -1;
    try {
        Connection copy(files.front(), Connection::Access::Read);
        const auto ledger = ReadLedger(copy);
        return ledger ? ledger->Changes : -1;
    } catch (const Fault&) {
        return -1;
    }
}

std::vector<std::pair<std::filesystem::path, std::filesystem::path>> Copies::SetAside() const {
    std::vector<std::pair<std::filesystem::path, std::filesystem::path>> moved;
    int number = 1;
    for (const auto& copy : Files()) {
        std::filesystem::path kept;
        do
            kept = Database.string() + "-newer" + std::to_string(number++);
        while (std::filesystem::exists(kept));
        std::filesystem::rename(copy, kept);
        moved.emplace_back(copy, kept);
    }
    SyncDirectory(Database.parent_path());
    return moved;
}

std::vector<std::filesystem::path> Copies::Files() const {
    std::vector<std::filesystem::path> files;
    for (int number = 1; number <= Kept; ++number)
        if (std::filesystem::exists(Numbered(number))) files.push_back(Numbered(number));
    return files;
}

}  // namespace ZorvicUnit
