#pragma once

#include <cstdint>

namespace ZorvicUnit {

struct Shape {
    std::uint32_t Width = 0;
    std::uint32_t Height = 0;
};

struct Fraction {
    std::uint32_t Numerator = 0;
    std::uint32_t Denominator = 1;
};

/// Pixels of a video mode (ResolutionMode); those of 1080p when it is off.
Shape ShapeOf(std::int32_t resolution);
/// Pictures per second of a refresh rate (RefreshMode).
Fraction RefreshOf(std::int32_t refresh);

}  // namespace ZorvicUnit
