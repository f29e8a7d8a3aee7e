#include "render/kept_file.h"

#include "fault.h"
#include "files/regular_file.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>

namespace ZorvicRender {

ZorvicUnit::Descriptor KeptFile::Open() {
    const std::lock_guard guard(Lock);
    if (!Kept) Kept.emplace(ZorvicUnit::OpenRegularFile(File));
    ZorvicUnit::Descriptor copy(fcntl(Kept->Get(), F_DUPFD_CLOEXEC, 0));
    if (copy.IsOpen()) return copy;
    throw ZorvicUnit::Fault(ZorvicUnit::FaultKind::Internal, "cannot open " + Path + " again: " + std::strerror(errno));
}

bool KeptFile::IsCurrent() const {
    const std::lock_guard guard(Lock);
    struct stat kept {};
    struct stat named {};
    return !Kept || (fstat(Kept->Get(), &kept) == 0 && stat(File.c_str(), &named) == 0 && kept.st_dev == named.st_dev &&
                     kept.st_ino == named.st_ino);
}

}  // namespace ZorvicRender
