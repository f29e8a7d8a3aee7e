#pragma once

#include <algorithm>
#include <chrono>

namespace ZorvicUnit {

/// How much of something a stranger may still cause: grows evenly with time, up to a limit. One thread at a time.
class Allowance {
public:
    using TimePoint = std::chrono::steady_clock::time_point;

    Allowance(double perSecond, double most) : PerSecond(perSecond), Most(most), Left(most) {}

    bool Allows(TimePoint now, double amount = 1) {
        const std::chrono::duration<double> passed = now - Since;
        Left = std::min(Most, Left + passed.count() * PerSecond);
        Since = now;
        return Left >= amount;
    }
    /// False when there is not so much left; then nothing is taken.
    bool Take(TimePoint now, double amount = 1) {
        if (!Allows(now, amount)) return false;
        Left -= amount;
        return true;
    }

    /// As Take; less than nothing is given back.
    bool Settle(TimePoint now, double amount) {
        if (amount > 0) return Take(now, amount);
        Left = std::min(Most, Left - amount);
        return true;
    }

private:
    double PerSecond;
    double Most;
    double Left;
    TimePoint Since;
};

}  // namespace ZorvicUnit
