#include "support/childprocess.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <fstream>
#include <sstream>
#include <system_error>
#include <thread>

ChildProcess::ChildProcess(const std::vector<std::string>& arguments, const std::string& outputFile) {
    std::vector<char*> argv(arguments.size() + 1);
    std::ranges::transform(arguments, argv.begin(), [](const auto& text) { return const_cast<char*>(text.c_str()); });
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, outputFile.c_str(), O_WRONLY | O_CREAT | O_APPEND, 0600);
    posix_spawn_file_actions_adddup2(&actions, STDOUT_FILENO, STDERR_FILENO);
    const int error = posix_spawnp(&Pid, argv[0], &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0) throw std::system_error(error, std::generic_category(), arguments.front());
}

ChildProcess::~ChildProcess() {
    if (!Running()) return;
    Signal(SIGCONT);
    Signal(SIGKILL);
    Wait(std::chrono::seconds(10));
}

void ChildProcess::Signal(int signal) const {
    if (!Status) kill(Pid, signal);
}

std::optional<int> ChildProcess::Wait(std::chrono::milliseconds limit) {
    WaitUntil(
        [this] {
            int raw = 0;
            if (!Status && waitpid(Pid, &raw, WNOHANG) == Pid)
                Status = WIFEXITED(raw) ? WEXITSTATUS(raw) : 128 + WTERMSIG(raw);
            return Status.has_value();
        },
        limit);
    return Status;
}

void SleepBriefly() {
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
}

std::string ReadFile(const std::filesystem::path& file) {
    std::ostringstream bytes;
    bytes << std::ifstream(file, std::ios::binary).rdbuf();
    return bytes.str();
}

TemporaryDirectory::TemporaryDirectory() {
    std::string pattern = (std::filesystem::temp_directory_path() / "zorvic-test-XXXXXX").string();
    if (!mkdtemp(pattern.data())) throw std::system_error(errno, std::generic_category(), pattern);
    Directory = pattern;
}

TemporaryDirectory::~TemporaryDirectory() {
    std::error_code ignored;
    std::filesystem::remove_all(Directory, ignored);
}
