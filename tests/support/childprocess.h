#pragma once

#include <sys/types.h>

#include <chrono>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

/// A program started by a test, ended with it. Its standard output and error go to one file.
class ChildProcess {
public:
    /// Starts arguments[0], which may be "env", with the rest.
    explicit ChildProcess(const std::vector<std::string>& arguments, const std::string& outputFile = "/dev/null");
    /// Kills the program when it still runs.
    ~ChildProcess();
    ChildProcess(const ChildProcess&) = delete;
    ChildProcess& operator=(const ChildProcess&) = delete;

    void Signal(int signal) const;
    pid_t Id() const { return Pid; }
    bool Running() { return !Wait(std::chrono::milliseconds(0)); }
    /// Exit status, 128 + signal when a signal ended it, nothing when it still runs after the limit.
    std::optional<int> Wait(std::chrono::milliseconds limit);

private:
    pid_t Pid = -1;
    std::optional<int> Status;
};

void SleepBriefly();

/// Asks every 10 ms until the condition holds or the limit is over; returns whether it held.
template <typename Condition>
bool WaitUntil(Condition condition, std::chrono::milliseconds limit = std::chrono::seconds(20)) {
    const auto end = std::chrono::steady_clock::now() + limit;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end) return false;
        SleepBriefly();
    }
    return true;
}

/// Empty for a file that cannot be read.
std::string ReadFile(const std::filesystem::path& file);

/// A directory below the system's temporary one, removed with everything in it.
class TemporaryDirectory {
public:
    TemporaryDirectory();
    ~TemporaryDirectory();
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
    const std::string& Path() const { return Directory; }
    std::filesystem::path operator/(const std::string& name) const { return std::filesystem::path(Directory) / name; }

private:
    std::string Directory;
};
