#include "files/regular_file.h"

#include "fault.h"

#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace ZorvicUnit {

namespace {

constexpr int Flags = O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY | O_NOFOLLOW;

int OpenWithoutLinks(const std::filesystem::path& file) {
    struct open_how how = {};
    how.flags = Flags;
    how.resolve = RESOLVE_NO_SYMLINKS;
    // Has no wrapper in the C library.
    const auto opened = static_cast<int>(syscall(SYS_openat2, AT_FDCWD, file.c_str(), &how, sizeof how));
    // Older kernels and some sandboxes do not know it; the last name is then the only one that is no link.
    const bool unknown = opened < 0 && (errno == ENOSYS || errno == EPERM);
    return unknown ? open(file.c_str(), Flags) : opened;
}

}  // namespace

Descriptor OpenRegularFile(const std::filesystem::path& file) {
    Descriptor opened(OpenWithoutLinks(file));
    if (!opened.IsOpen() && errno == ELOOP) throw Fault(FaultKind::Refused, file.string() + " leads through a link");
    if (!opened.IsOpen()) {
        // Too many open files, a disk that fails, missing rights: the file is there.
        const bool gone = errno == ENOENT || errno == ENOTDIR;
        throw Fault(gone ? FaultKind::NotFound : FaultKind::Internal,
                    "cannot open " + file.string() + ": " + std::strerror(errno));
    }
    struct stat status = {};
    if (fstat(opened.Get(), &status) == 0 && S_ISREG(status.st_mode)) return opened;
    throw Fault(FaultKind::Refused, file.string() + " is not a regular file");
}

}  // namespace ZorvicUnit
