#include "store/store_directory.h"

#include "fault.h"

#include <spdlog/fmt/fmt.h>

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

namespace ZorvicUnit {

namespace {

[[noreturn]] void Raise(const std::filesystem::path& path, const std::string& why) {
    throw Fault(FaultKind::Internal, fmt::format("store {}: {}", path.string(), why));
}

}  // namespace

StoreDirectory::StoreDirectory(std::filesystem::path path) : Root(std::move(path)) {
    std::error_code error;
    std::filesystem::create_directories(Root, error);
    if (error) Raise(Root, error.message());
    const auto lockPath = Root / "lock";
    LockFile = open(lockPath.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0644);
    if (LockFile < 0) Raise(Root, std::generic_category().message(errno));
    if (flock(LockFile, LOCK_EX | LOCK_NB) == 0) return;
    const int reason = errno;
    close(LockFile);
    Raise(Root, reason == EWOULDBLOCK ? "in use by another unit" : std::generic_category().message(reason));
}

StoreDirectory::~StoreDirectory() {
    close(LockFile);
}

}  // namespace ZorvicUnit
