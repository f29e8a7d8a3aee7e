#include "support/failingdisk.h"

#include <sqlite3.h>

#include <atomic>

namespace {

std::atomic<int> Countdown = 0;
std::atomic<bool> HasFailed = false;

bool FailsNow() {
    if (Countdown == 0 || --Countdown > 0) return false;
    HasFailed = true;
    return true;
}

/// What SQLite sees of a file; the system's own follows it in memory.
struct File {
    sqlite3_file Base;
    sqlite3_file* Real() { return reinterpret_cast<sqlite3_file*>(this + 1); }
};

sqlite3_file* RealOf(sqlite3_file* file) {
    return reinterpret_cast<File*>(file)->Real();
}

// Hands a call on to the method of the same name.
template <auto Method>
struct Forward;
template <typename... Arguments, int (*sqlite3_io_methods::*Method)(sqlite3_file*, Arguments...)>
struct Forward<Method> {
    static int Call(sqlite3_file* file, Arguments... arguments) {
        sqlite3_file* real = RealOf(file);
        return (real->pMethods->*Method)(real, arguments...);
    }
    template <int Failure>
    static int OrFail(sqlite3_file* file, Arguments... arguments) {
        return FailsNow() ? Failure : Call(file, arguments...);
    }
};

void Barrier(sqlite3_file* file) {
    RealOf(file)->pMethods->xShmBarrier(RealOf(file));
}

using Io = sqlite3_io_methods;
const Io Methods = {2,
                    &Forward<&Io::xClose>::Call,
                    &Forward<&Io::xRead>::Call,
                    &Forward<&Io::xWrite>::OrFail<SQLITE_IOERR_WRITE>,
                    &Forward<&Io::xTruncate>::OrFail<SQLITE_IOERR_TRUNCATE>,
                    &Forward<&Io::xSync>::OrFail<SQLITE_IOERR_FSYNC>,
                    &Forward<&Io::xFileSize>::Call,
                    &Forward<&Io::xLock>::Call,
                    &Forward<&Io::xUnlock>::Call,
                    &Forward<&Io::xCheckReservedLock>::Call,
                    &Forward<&Io::xFileControl>::Call,
                    &Forward<&Io::xSectorSize>::Call,
                    &Forward<&Io::xDeviceCharacteristics>::Call,
                    &Forward<&Io::xShmMap>::Call,
                    &Forward<&Io::xShmLock>::Call,
                    &Barrier,
                    &Forward<&Io::xShmUnmap>::Call,
                    nullptr,
                    nullptr};

sqlite3_vfs* System = nullptr;
sqlite3_vfs Shim;

int Open(sqlite3_vfs* /*vfs*/, const char* name, sqlite3_file* file, int flags, int* outFlags) {
    const int result = System->xOpen(System, name, RealOf(file), flags, outFlags);
    file->pMethods = RealOf(file)->pMethods != nullptr ? &Methods : nullptr;
    return result;
}

}  // namespace

FailingDisk::FailingDisk() {
    System = sqlite3_vfs_find(nullptr);
    Shim = *System;
    Shim.zName = "failing";
    Shim.szOsFile += static_cast<int>(sizeof(File));
    Shim.xOpen = &Open;
    FailAt(0);
    sqlite3_vfs_register(&Shim, 1);
}

FailingDisk::~FailingDisk() {
    sqlite3_vfs_unregister(&Shim);
    sqlite3_vfs_register(System, 1);
}

void FailingDisk::FailAt(int number) {
    HasFailed = false;
    Countdown = number;
}

bool FailingDisk::Failed() const {
    return HasFailed;
}
