#pragma once

#include "files/descriptor.h"

#include <filesystem>

namespace ZorvicUnit {

/// The directory that holds all of the unit's data, for this process alone for as long as the object lives: the lock
/// goes with the process, also when it is killed.
class StoreDirectory {
public:
    /// Makes the directory when it is not there. Throws Fault when it cannot be used or another unit uses it.
    explicit StoreDirectory(std::filesystem::path path);

    const std::filesystem::path& Path() const { return Root; }
    std::filesystem::path DatabaseFile() const { return Root / "zorvic.db"; }

private:
    const std::filesystem::path Root;
    const Descriptor DirectoryLock;  ///< holds even when somebody removes the lock file
    const Descriptor FileLock;
};

}  // namespace ZorvicUnit
