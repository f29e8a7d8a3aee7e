#include "assets/media_process.h"

#include "fault.h"
#include "helper_program.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <condition_variable>
#include <csignal>
#include <cstring>
#include <mutex>
#include <utility>

namespace ZorvicUnit {

namespace {

// One that hangs in a disk does not even end when it is killed.
constexpr std::chrono::seconds Patience{1};

[[noreturn]] void Fail(const std::filesystem::path& program, int error) {
    throw Fault(FaultKind::Internal, "cannot start " + program.string() + ": " + std::strerror(error));
}

class SpawnSettings {
public:
    explicit SpawnSettings(int socket) {
        posix_spawn_file_actions_init(&Files);
        posix_spawn_file_actions_adddup2(&Files, socket, STDIN_FILENO);
        posix_spawn_file_actions_addopen(&Files, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
        posix_spawn_file_actions_addclosefrom_np(&Files, STDERR_FILENO + 1);
        // Whoever ends the unit in good order ends it alone: what reaches its group must not look like a crash.
        sigset_t all{};
        sigset_t toTheUnit{};
        sigfillset(&all);
        sigemptyset(&toTheUnit);
        for (const int signal : {SIGTERM, SIGINT, SIGHUP, SIGQUIT})
            sigaddset(&toTheUnit, signal);
        posix_spawnattr_init(&Attributes);
        posix_spawnattr_setflags(&Attributes, POSIX_SPAWN_SETPGROUP | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
        posix_spawnattr_setsigmask(&Attributes, &toTheUnit);
        posix_spawnattr_setsigdefault(&Attributes, &all);
    }
    ~SpawnSettings() {
        posix_spawnattr_destroy(&Attributes);
        posix_spawn_file_actions_destroy(&Files);
    }
    SpawnSettings(const SpawnSettings&) = delete;
    SpawnSettings& operator=(const SpawnSettings&) = delete;

    posix_spawn_file_actions_t Files{};
    posix_spawnattr_t Attributes{};
};

}  // namespace

struct MediaProcess::Run {
    enum class State { Wanted, Dropped, Running, Failed, Ended };

    explicit Run(int socket) : FarEnd(socket) {}
    /// False when it is still `state` after the time.
    bool WaitWhile(State state, std::chrono::milliseconds limit) {
        std::unique_lock lock(Lock);
        return Changed.wait_for(lock, limit, [&] { return At != state; });
    }
    void Enter(State state) {
        At = state;
        Changed.notify_all();
    }

    Descriptor FarEnd;  ///< of the keeper
    std::mutex Lock;    ///< guards all below; no signal is sent to a process that is not there any more
    std::condition_variable Changed;
    State At = State::Wanted;
    pid_t Process = 0;
    int Result = 0;  ///< an error number, or a wait status
};

std::filesystem::path MediaProgram() {
    return HelperProgram("zorvic-media");
}

MediaProcess::MediaProcess(std::filesystem::path program, Manners manners)
    : Program(std::move(program)), Keeper("zu-media", manners) {}

MediaProcess::~MediaProcess() {
    End({});
}

void MediaProcess::Start() {
    End({});
    std::array<int, 2> ends = {};
    if (socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) Fail(Program, errno);
    Link.emplace(ends[0]);
    Current = std::make_shared<Run>(ends[1]);
    Keeper.Post(0, [this, run = Current] { Keep(run); });
    // The one before may not have ended yet.
    Current->WaitWhile(Run::State::Wanted, Patience);
    const std::scoped_lock lock(Current->Lock);
    if (Current->At == Run::State::Wanted) Current->At = Run::State::Dropped;
    if (Current->At == Run::State::Dropped) Fail(Program, EBUSY);
    if (Current->At == Run::State::Failed) Fail(Program, Current->Result);
}

void MediaProcess::Keep(const std::shared_ptr<Run>& run) const {
    {
        const std::scoped_lock lock(run->Lock);
        if (run->At == Run::State::Dropped) return;
        const SpawnSettings settings(run->FarEnd.Get());
        std::string name = Program.string();
        std::array<char*, 2> arguments = {name.data(), nullptr};
        run->Result =
            posix_spawn(&run->Process, name.c_str(), &settings.Files, &settings.Attributes, arguments.data(), environ);
        run->FarEnd.Close();
        run->Enter(run->Result == 0 ? Run::State::Running : Run::State::Failed);
        if (run->Result != 0) return;
    }
    siginfo_t end{};
    while (waitid(P_PID, static_cast<id_t>(run->Process), &end, WEXITED | WNOWAIT) != 0 && errno == EINTR) {
    }
    const std::scoped_lock lock(run->Lock);
    waitpid(run->Process, &run->Result, 0);
    run->Enter(Run::State::Ended);
}

std::optional<int> MediaProcess::End(std::chrono::milliseconds grace) {
    Link.reset();
    const auto run = std::exchange(Current, nullptr);
    if (run == nullptr) return std::nullopt;
    if (!run->WaitWhile(Run::State::Running, grace)) {
        const std::scoped_lock lock(run->Lock);
        if (run->At == Run::State::Running) kill(run->Process, SIGKILL);
    }
    run->WaitWhile(Run::State::Running, Patience);
    const std::scoped_lock lock(run->Lock);
    return run->At == Run::State::Ended ? std::optional(run->Result) : std::nullopt;
}

}  // namespace ZorvicUnit
