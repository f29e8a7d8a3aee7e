#include "render/kept_file.h"

#include "fault.h"
#include "files/regular_file.h"

#include <fcntl.h>

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

}  // namespace ZorvicRender
