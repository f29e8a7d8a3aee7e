#include "practice_unit.h"

#include "failure.h"
#include "practice_show.h"
#include "whole_file.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <thread>

namespace ZorvicCtl {
namespace {

using Clock = std::chrono::steady_clock;

constexpr auto Program = "zorvic-unit";
constexpr auto Ready = "listening on ";
constexpr std::chrono::seconds StartLimit(20);
constexpr std::chrono::seconds EndLimit(5);
constexpr std::chrono::milliseconds LookPeriod(20);

/// The unit beside this program, which is of the same version; else the one that is installed.
std::string UnitProgram() {
    std::error_code none;
    const auto beside = std::filesystem::read_symlink("/proc/self/exe", none).parent_path() / Program;
    return std::filesystem::exists(beside, none) ? beside.string() : Program;
}

/// Between fork and exec nothing may be called that takes a lock.
[[noreturn]] void BecomeUnit(char* const* arguments, int log, pid_t parent) {
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    prctl(PR_SET_PDEATHSIG, SIGTERM);
    if (getppid() != parent) _exit(1);  // it has ended already
    const int input = open("/dev/null", O_RDONLY);
    dup2(input, STDIN_FILENO);
    dup2(log, STDOUT_FILENO);
    dup2(log, STDERR_FILENO);
    setpgid(0, 0);  // the terminal's interrupt is for this program, which then ends its units in order
    execvp(arguments[0], arguments);
    _exit(127);
}

}  // namespace

PracticeUnit::PracticeUnit(const std::filesystem::path& store, const std::string& address,
                           const std::vector<std::string>& options)
    : Nickname(store.filename().string()), Log(store.string() + ".log") {
    std::vector<std::string> arguments = {UnitProgram(), "--store", store.string(), "--listen", address,
                                          "--nickname",  Nickname,  "--announce",   "lo"};
    arguments.insert(arguments.end(), options.begin(), options.end());
    Start(arguments);
    try {
        AwaitListening();
    } catch (...) {
        // The destructor does not run for an object that did not come to be.
        kill(Pid, SIGKILL);
        waitpid(Pid, nullptr, 0);
        throw;
    }
}

void PracticeUnit::Start(const std::vector<std::string>& arguments) {
    std::vector<char*> argv(arguments.size() + 1);
    std::ranges::transform(arguments, argv.begin(), [](const auto& text) { return const_cast<char*>(text.c_str()); });
    const int log = open(Log.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
    if (log < 0) throw Failure(ExitStatus::Refused, "Cannot write " + Log.string() + '.');
    const pid_t parent = getpid();
    Pid = fork();
    if (Pid == 0) BecomeUnit(argv.data(), log, parent);
    close(log);
    if (Pid < 0) throw Failure(ExitStatus::Refused, "Cannot start " + arguments.front() + '.');
}

void PracticeUnit::AwaitListening() {
    const auto end = Clock::now() + StartLimit;
    while (Clock::now() < end) {
        const bool running = Running();
        const std::string text = ReadWholeFile(Log.string());
        const auto start = text.find(Ready);
        const auto line = start == std::string::npos ? start : text.find('\n', start);
        if (line != std::string::npos) {
            const auto host = start + std::char_traits<char>::length(Ready);
            Listening = text.substr(host, line - host);
            return;
        }
        if (!running) break;
        std::this_thread::sleep_for(LookPeriod);
    }
    throw Failure(ExitStatus::Refused, "The unit \"" + Nickname + "\" did not start; see " + Log.string() + '.');
}

bool PracticeUnit::Running() {
    if (Pid > 0 && waitpid(Pid, nullptr, WNOHANG) == Pid) Pid = -1;
    return Pid > 0;
}

void PracticeUnit::AskToEnd() {
    if (Running()) kill(Pid, SIGTERM);
}

void PracticeUnit::Fill() const {
    FillWithPresets(Listening);
}

PracticeUnit::~PracticeUnit() {
    AskToEnd();
    const auto end = Clock::now() + EndLimit;
    while (Running()) {
        if (Clock::now() > end) kill(Pid, SIGKILL);
        std::this_thread::sleep_for(LookPeriod);
    }
}

}  // namespace ZorvicCtl
