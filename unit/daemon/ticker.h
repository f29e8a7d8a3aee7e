#pragma once

#include <thread>

namespace ZorvicUnit {

class UnitModel;

/// The thread "ticker": carries out what playback has due and publishes positions 20 times a second while anything
/// moves, and looks after it five times a second while nothing does: consoles take the unit for alive by that. Stopped
/// and joined by the destructor.
class Ticker {
public:
    /// The model must outlive the object.
    explicit Ticker(UnitModel& model);

private:
    std::jthread Thread;
};

}  // namespace ZorvicUnit
