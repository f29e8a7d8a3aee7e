#include "daemon/power_switch.h"

#include <pthread.h>
#include <unistd.h>

#include <csignal>
#include <ctime>

namespace ZorvicUnit {

namespace {

// Real-time signals queue and carry a value, so that a request needs neither lock nor pipe.
int RequestSignal() {
    return SIGRTMIN;
}

sigset_t Signals() {
    sigset_t set{};
    sigemptyset(&set);
    for (const int signal : {SIGTERM, SIGINT, RequestSignal()})
        sigaddset(&set, signal);
    return set;
}

}  // namespace

PowerSwitch::PowerSwitch() {
    const sigset_t set = Signals();
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
    // A second console's request to reboot outlives the reboot that it asked for.
    sigset_t requests{};
    sigemptyset(&requests);
    sigaddset(&requests, RequestSignal());
    const timespec atOnce{};
    while (sigtimedwait(&requests, nullptr, &atOnce) >= 0) {
    }
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
}

void PowerSwitch::Request(zorvic::v1::PowerAction action) {
    sigval value{};
    value.sival_int = action;
    sigqueue(getpid(), RequestSignal(), value);
}

zorvic::v1::PowerAction PowerSwitch::Wait() {
    const sigset_t set = Signals();
    siginfo_t info{};
    int signal = -1;
    while (signal < 0)
        signal = sigwaitinfo(&set, &info);
    if (signal != RequestSignal()) return zorvic::v1::POWER_ACTION_SHUTDOWN;
    return static_cast<zorvic::v1::PowerAction>(info.si_value.sival_int);
}

}  // namespace ZorvicUnit
