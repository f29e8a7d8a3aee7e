#include "store/store_directory.h"

#include "fault.h"

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

Descriptor OpenLockFile(const std::filesystem::path& root) {
    std::error_code error;
    std::filesystem::create_directories(root, error);
    if (error) Raise(root, error.message());
    Descriptor file(open((root / "lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644));
    if (!file.IsOpen()) Raise(root, std::generic_category().message(errno));
    return file;
}

}  // namespace

StoreDirectory::StoreDirectory(std::filesystem::path path) : Root(std::move(path)), LockFile(OpenLockFile(Root)) {
    if (flock(LockFile.Get(), LOCK_EX | LOCK_NB) == 0) return;
    Raise(Root, errno == EWOULDBLOCK ? "in use by another unit" : std::generic_category().message(errno));
}

}  // namespace ZorvicUnit
