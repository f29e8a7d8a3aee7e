#pragma once

#include <optional>

namespace ZorvicRender {

/// Keeps a device whose clock runs a little fast or slow on the steady clock: a slow, gentle change of speed that
/// nobody hears. Times in seconds.
class DriftControl {
public:
    static constexpr double MostSpeed = 0.001;
    static constexpr double MostError = 0.020;

    struct Steering {
        double Speed = 0;            ///< how much faster than the device's own rate to play
        std::optional<double> Leap;  ///< so far out that this much is to be left out (or put in, when negative)
    };

    /// Sound comes out this much later than it should; asked this long ago. Jitter of some milliseconds is no error.
    Steering Update(double error, double elapsed);
    /// Play-out has begun anew: what was learned of the device's clock stays.
    void Restart() { Smoothed = 0; }

    double Error() const { return Smoothed; }

private:
    double Smoothed = 0;
    double Drift = 0;
};

}  // namespace ZorvicRender
