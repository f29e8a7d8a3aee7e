#include "outputs/renderer_process.h"

#include "fault.h"
#include "helper_program.h"

#include <spdlog/fmt/fmt.h>

#include <fcntl.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <utility>

namespace ZorvicUnit {

namespace {

constexpr int ChildSocket = 3;
// A renderer that reads nothing for so long is frozen.
constexpr timeval SendLimit{.tv_sec = 0, .tv_usec = 500'000};

// The unit blocks the signals that end it; its children must not inherit that.
void ClearSignals(posix_spawnattr_t& attributes) {
    sigset_t none;
    sigemptyset(&none);
    posix_spawnattr_setsigmask(&attributes, &none);
    posix_spawnattr_setflags(&attributes, POSIX_SPAWN_SETSIGMASK);
}

pid_t Spawn(const std::filesystem::path& program, int socket) {
    posix_spawn_file_actions_t actions;
    posix_spawnattr_t attributes;
    posix_spawn_file_actions_init(&actions);
    posix_spawnattr_init(&attributes);
    posix_spawn_file_actions_adddup2(&actions, socket, ChildSocket);
    posix_spawn_file_actions_addclosefrom_np(&actions, ChildSocket + 1);
    ClearSignals(attributes);
    std::string name = program.string();
    const std::array<char*, 2> arguments = {name.data(), nullptr};
    pid_t process = -1;
    const int error = posix_spawn(&process, name.c_str(), &actions, &attributes, arguments.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    posix_spawnattr_destroy(&attributes);
    if (error != 0) throw Fault(FaultKind::Internal, name + " can not be started: " + std::strerror(error));
    return process;
}

bool IsCrash(int signal) {
    return signal == SIGSEGV || signal == SIGABRT || signal == SIGBUS || signal == SIGILL || signal == SIGFPE;
}

std::string Describe(int status) {
    if (WIFSIGNALED(status)) return std::string("signal ") + strsignal(WTERMSIG(status));
    return "exit " + std::to_string(WEXITSTATUS(status));
}

}  // namespace

RendererProcess::RendererProcess() {
    std::array<int, 2> ends{};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0)
        throw Fault(FaultKind::Internal, std::string("no socket for the renderer: ") + std::strerror(errno));
    Descriptor own(ends[0]);
    // Above the number that it gets in the child, since dup2 to itself would keep close-on-exec.
    const Descriptor inherited(fcntl(ends[1], F_DUPFD_CLOEXEC, ChildSocket + 1));
    close(ends[1]);
    setsockopt(own.Get(), SOL_SOCKET, SO_SNDTIMEO, &SendLimit, sizeof SendLimit);
    Process = Spawn(HelperProgram("zorvic-render"), inherited.Get());
    Socket = std::make_unique<ZorvicRender::MessagePipe>(std::move(own));
}

RendererProcess::~RendererProcess() {
    End();
}

std::chrono::nanoseconds RendererProcess::Starved() const {
    std::chrono::nanoseconds starved{0};
    std::error_code gone;
    for (const auto& thread : std::filesystem::directory_iterator(fmt::format("/proc/{}/task", Process), gone)) {
        // Those that the renderer names itself work ahead of what is due; the others draw for its main thread.
        std::string name;
        std::getline(std::ifstream(thread.path() / "comm"), name);
        if (name.starts_with("zr-")) continue;
        std::int64_t ran = 0;
        std::int64_t waited = 0;
        std::ifstream(thread.path() / "schedstat") >> ran >> waited;
        starved += std::chrono::nanoseconds(waited);
    }
    return starved;
}

RendererProcess::Ending RendererProcess::End() {
    if (Process < 0) return {};
    Socket->Shutdown();
    int status = 0;
    if (waitpid(Process, &status, WNOHANG) != Process) {
        kill(Process, SIGKILL);
        while (waitpid(Process, &status, 0) < 0 && errno == EINTR) {
        }
    }
    Process = -1;
    return {Describe(status), WIFSIGNALED(status) && IsCrash(WTERMSIG(status))};
}

}  // namespace ZorvicUnit
