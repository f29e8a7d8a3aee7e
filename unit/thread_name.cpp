#include "thread_name.h"

#include <pthread.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace ZorvicUnit {

namespace {

// ioprio_set(2) has no wrapper in the C library; values from its manual page.
constexpr int OneThread = 1;
constexpr int ClassShift = 13;
constexpr int LowestBestEffort = (2 << ClassShift) | 7;
constexpr int Idle = 3 << ClassShift;

}  // namespace

void NameThread(const std::string& name, Manners manners) {
    pthread_setname_np(pthread_self(), name.substr(0, 15).c_str());
    if (manners == Manners::Normal) return;
    // Both are courtesies: a kernel that refuses them costs no more than some smoothness.
    const bool last = manners == Manners::Last;
    const auto thread = static_cast<id_t>(syscall(SYS_gettid));
    setpriority(PRIO_PROCESS, thread, last ? 19 : 10);
    syscall(SYS_ioprio_set, OneThread, 0, last ? Idle : LowestBestEffort);
}

}  // namespace ZorvicUnit
