#pragma once

#include <chrono>

namespace ZorvicUnit {

/// Source of time, passed in so that tests need no waiting.
class Clock {
public:
    using TimePoint = std::chrono::steady_clock::time_point;
    virtual ~Clock() = default;
    virtual TimePoint Now() const = 0;
};

class SteadyClock final : public Clock {
public:
    TimePoint Now() const override { return std::chrono::steady_clock::now(); }
};

}  // namespace ZorvicUnit
