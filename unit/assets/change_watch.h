#pragma once

#include "files/descriptor.h"

#include <chrono>
#include <filesystem>

namespace ZorvicUnit {

/// Wakes a thread when something in the watched directories changes. Where the kernel cannot tell (too many watches, a
/// network file system) the caller has to look by itself.
class ChangeWatch {
public:
    ChangeWatch();

    /// Watches a directory (not what is below it); again for a known one does nothing. A directory that goes is
    /// forgotten by itself.
    void Add(const std::filesystem::path& directory);

    /// Waits for a change, for WakeUp() or for the time to pass.
    void Wait(std::chrono::milliseconds limit);

    /// Waits for WakeUp() or for the time to pass, whatever changes.
    void Pause(std::chrono::milliseconds limit);

    /// Ends a wait or a pause; from any thread.
    void WakeUp() const;

    /// Whether every directory given is watched.
    bool IsComplete() const { return Complete; }

private:
    const Descriptor Notify;
    const Descriptor Alarm;
    bool Complete = true;
};

}  // namespace ZorvicUnit
