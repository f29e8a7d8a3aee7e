#pragma once

#include "assets/worker.h"
#include "files/descriptor.h"
#include "thread_name.h"

#include <chrono>
#include <filesystem>
#include <memory>
#include <optional>

namespace ZorvicUnit {

/// zorvic-media, as it came with the running program.
std::filesystem::path MediaProgram();

/// Runs a program with a socket as its standard input, one process at a time. For one thread at a time.
class MediaProcess {
public:
    /// The process gets the manners of a thread.
    MediaProcess(std::filesystem::path program, Manners manners);
    /// Kills what runs, and waits for its end.
    ~MediaProcess();

    /// Kills what runs, and starts anew. Throws Fault Internal.
    void Start();
    /// The way to the process; -1 before the first start and after End().
    int Socket() const { return Link ? Link->Get() : -1; }

    /// Waits for the end of what runs, kills it when it has not come within `grace`, and gives its wait status. Nothing
    /// when it hangs in the system.
    std::optional<int> End(std::chrono::milliseconds grace);

private:
    struct Run;
    void Keep(const std::shared_ptr<Run>& run) const;

    const std::filesystem::path Program;
    std::optional<Descriptor> Link;
    std::shared_ptr<Run> Current;
    // Starts processes and waits for their ends. Not the caller: a process goes with the thread that has started it,
    // and inherits its manners.
    Worker Keeper;
};

}  // namespace ZorvicUnit
