#include "media/sandbox.h"

#include "fault.h"
#include "files/descriptor.h"

#include <fcntl.h>
#include <sched.h>
#include <seccomp.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <memory>

namespace ZorvicUnit {

namespace {

// Instrumented programs map terabytes of address space, and tell of faults on standard error.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool IsInstrumented = true;
#else
constexpr bool IsInstrumented = false;
#endif

constexpr rlim_t MostMemory = 1024 * 1024 * 1024;
constexpr rlim_t MostDescriptors = 16;

// What a decoder on one thread does, and what keeps a thread of a library going. The files behind `read` and `write`
// are the socket, one or two media files opened for reading, and /dev/null.
constexpr std::array Allowed = {
    SCMP_SYS(read), SCMP_SYS(write), SCMP_SYS(pread64), SCMP_SYS(lseek), SCMP_SYS(fstat), SCMP_SYS(newfstatat),
    SCMP_SYS(close), SCMP_SYS(poll), SCMP_SYS(ppoll), SCMP_SYS(recvmsg), SCMP_SYS(sendmsg),
    // Memory.
    SCMP_SYS(brk), SCMP_SYS(munmap), SCMP_SYS(mremap), SCMP_SYS(madvise),
    // Time and chance.
    SCMP_SYS(clock_gettime), SCMP_SYS(clock_getres), SCMP_SYS(clock_nanosleep), SCMP_SYS(nanosleep),
    SCMP_SYS(gettimeofday), SCMP_SYS(time), SCMP_SYS(getrandom), SCMP_SYS(getrusage), SCMP_SYS(restart_syscall),
    // Threads and signals of the process itself.
    SCMP_SYS(futex), SCMP_SYS(set_robust_list), SCMP_SYS(rseq), SCMP_SYS(sched_yield), SCMP_SYS(sched_getaffinity),
    SCMP_SYS(gettid), SCMP_SYS(getpid), SCMP_SYS(rt_sigaction), SCMP_SYS(rt_sigprocmask), SCMP_SYS(rt_sigreturn),
    SCMP_SYS(sigaltstack), SCMP_SYS(exit), SCMP_SYS(exit_group)};

[[noreturn]] void Fail(const char* what, int error) {
    throw Fault(FaultKind::Internal, std::string("cannot lock itself up: ") + what + ": " + std::strerror(error));
}

void Limit(decltype(RLIMIT_CPU) resource, rlim_t soft, rlim_t hard) {
    const rlimit limit = {soft, hard};
    if (setrlimit(resource, &limit) != 0) Fail("limits", errno);
}

void SetLimits() {
    Limit(RLIMIT_CORE, 0, 0);
    Limit(RLIMIT_NOFILE, MostDescriptors, MostDescriptors);
    Limit(RLIMIT_CPU, ProcessorSeconds, ProcessorSeconds + 5);
    if (!IsInstrumented) Limit(RLIMIT_AS, MostMemory, MostMemory);
}

void CloseDescriptors() {
    close_range(3, ~0U, 0);
    const Descriptor null(open("/dev/null", O_RDWR | O_CLOEXEC));
    dup2(null.Get(), STDOUT_FILENO);
    if (!IsInstrumented) dup2(null.Get(), STDERR_FILENO);
}

// When memory is short it is this process that goes, and not what plays.
void OfferItself() {
    const Descriptor score(open("/proc/self/oom_score_adj", O_WRONLY | O_CLOEXEC));
    [[maybe_unused]] const auto written = write(score.Get(), "1000", 4);
}

void AddRules(scmp_filter_ctx filter) {
    const auto add = [filter](std::uint32_t action, int call, auto... conditions) {
        const int failed = seccomp_rule_add(filter, action, call, sizeof...(conditions), conditions...);
        if (failed != 0) Fail("rules", -failed);
    };
    for (const int call : Allowed)
        add(SCMP_ACT_ALLOW, call);
    // By a pipe to itself the instrumentation asks whether memory can be read.
    if (IsInstrumented) add(SCMP_ACT_ALLOW, SCMP_SYS(pipe2));
    for (const int call : {SCMP_SYS(mmap), SCMP_SYS(mprotect)})
        add(SCMP_ACT_ALLOW, call, SCMP_A2(SCMP_CMP_MASKED_EQ, PROT_EXEC, 0));
    add(SCMP_ACT_ALLOW, SCMP_SYS(fcntl), SCMP_A1(SCMP_CMP_EQ, F_DUPFD_CLOEXEC));
    add(SCMP_ACT_ALLOW, SCMP_SYS(fcntl), SCMP_A1(SCMP_CMP_EQ, F_GETFL));
    add(SCMP_ACT_ALLOW, SCMP_SYS(prlimit64), SCMP_A2(SCMP_CMP_EQ, 0));
    add(SCMP_ACT_ALLOW, SCMP_SYS(tgkill), SCMP_A0(SCMP_CMP_EQ, static_cast<scmp_datum_t>(getpid())));
    // Some decoders start threads whatever they are told. The newer call hides its flags from a filter; told that it is
    // unknown, the C library takes the older one.
    add(SCMP_ACT_ALLOW, SCMP_SYS(clone), SCMP_A0(SCMP_CMP_MASKED_EQ, CLONE_THREAD, CLONE_THREAD));
    add(SCMP_ACT_ERRNO(ENOSYS), SCMP_SYS(clone3));
}

// Refusing is enough: libraries ask for much that they can do without, and a file is no better known by a kill.
void Filter() {
    if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 || prctl(PR_SET_DUMPABLE, 0) != 0) Fail("privileges", errno);
    const std::unique_ptr<void, decltype(&seccomp_release)> filter(seccomp_init(SCMP_ACT_ERRNO(EPERM)),
                                                                   &seccomp_release);
    if (filter == nullptr) Fail("filter", ENOMEM);
    AddRules(filter.get());
    // Threads that libraries started while they were loaded are bound too.
    int failed = seccomp_attr_set(filter.get(), SCMP_FLTATR_CTL_TSYNC, 1);
    if (failed == 0) failed = seccomp_load(filter.get());
    if (failed != 0) Fail("filter", -failed);
}

}  // namespace

void EnterSandbox() {
    if (prctl(PR_SET_PDEATHSIG, SIGKILL) != 0) Fail("the end of the unit", errno);
    OfferItself();
    CloseDescriptors();
    SetLimits();
    Filter();
}

}  // namespace ZorvicUnit
