#include "store/sqlite_fault.h"

#include <spdlog/fmt/fmt.h>
#include <sqlite3.h>

#include <cerrno>

namespace ZorvicUnit {

namespace {

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

}  // namespace

void RaiseLast(sqlite3* handle, std::string_view what) {
    const int code = sqlite3_extended_errcode(handle);
    const int kind = code & 0xFF;
    const bool unreadable = code == SQLITE_IOERR_READ || code == SQLITE_IOERR_SHORT_READ;
    const std::string reason = fmt::format("{} ({})", sqlite3_errmsg(handle), code);
    // Our statements are right: what does not go with them is a schema that is not ours any more.
    if (kind == SQLITE_CORRUPT || kind == SQLITE_NOTADB || kind == SQLITE_ERROR || unreadable)
        throw StoreDamage(fmt::format("{}: {}", what, reason));
    if (IsFull(handle)) throw Fault(FaultKind::DiskFull, fmt::format("store: {}: {}, the disk is full", what, reason));
    throw Fault(FaultKind::Internal, fmt::format("store: {}: {}", what, reason));
}

}  // namespace ZorvicUnit
