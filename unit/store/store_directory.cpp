#include "store/store_directory.h"

#include "fault.h"
#include "files/file_copy.h"

#include <spdlog/fmt/fmt.h>

#include <fcntl.h>
#include <sys/file.h>

#include <cerrno>
#include <system_error>
#include <utility>

namespace ZorvicUnit {

namespace {

[[noreturn]] void Raise(const std::filesystem::path& path, const std::string& why) {
    throw Fault(FaultKind::Internal, fmt::format("store {}: {}", path.string(), why));
}

Descriptor Open(const std::filesystem::path& path, int flags) {
    Descriptor file(open(path.c_str(), flags | O_CLOEXEC, 0644));
    if (!file.IsOpen()) Raise(path, std::generic_category().message(errno));
    return file;
}

Descriptor OpenDirectory(const std::filesystem::path& root) {
    MakeDirectories(root);
    return Open(root, O_RDONLY | O_DIRECTORY);
}

bool Lock(const Descriptor& file) {
    return flock(file.Get(), LOCK_EX | LOCK_NB) == 0;
}

}  // namespace

StoreDirectory::StoreDirectory(std::filesystem::path path)
    : Root(std::move(path)), DirectoryLock(OpenDirectory(Root)), FileLock(Open(Root / "lock", O_RDWR | O_CREAT)) {
    // A file system that cannot lock a directory leaves it to the file.
    const bool taken = !Lock(DirectoryLock) && errno == EWOULDBLOCK;
    if (!taken && Lock(FileLock)) return;
    Raise(Root, taken || errno == EWOULDBLOCK ? "in use by another unit" : std::generic_category().message(errno));
}

}  // namespace ZorvicUnit
