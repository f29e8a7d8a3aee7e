#pragma once

#include <zorvic/types.h>

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace Zorvic::Internal {

/// Asks units who they are. Any thread.
class UnitProber {
public:
    /// The unit's identity without IP, or nothing when it did not answer within a second.
    using Done = std::function<void(const std::optional<LANZorvic>&)>;

    virtual ~UnitProber() = default;
    /// Returns at once. `done` runs exactly once: on a thread of the prober, or inside this call.
    virtual void Ask(const std::string& host, Done done) = 0;
};

/// Asks over the network. Its destructor cancels what is under way and waits for the last `done`.
std::unique_ptr<UnitProber> MakeUnitProber();

}  // namespace Zorvic::Internal
