#include "render/stage/picture_controls.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace ZorvicRender {

namespace {

using Matrix = std::array<std::array<double, 3>, 3>;  // rows

Matrix operator*(const Matrix& a, const Matrix& b) {
    Matrix product{};
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t column = 0; column < 3; ++column) {
            for (std::size_t i = 0; i < 3; ++i)
                product[row][column] += a[row][i] * b[i][column];
        }
    }
    return product;
}

// Kr and Kb of ITU-R BT.709-6.
constexpr double Red = 0.2126;
constexpr double Blue = 0.0722;
constexpr double Green = 1 - Red - Blue;
constexpr double BlueRange = 2 * (1 - Blue);
constexpr double RedRange = 2 * (1 - Red);

constexpr Matrix ToChroma = {{{Red, Green, Blue},
                              {-Red / BlueRange, -Green / BlueRange, (1 - Blue) / BlueRange},
                              {(1 - Red) / RedRange, -Green / RedRange, -Blue / RedRange}}};
constexpr Matrix FromChroma = {
    {{1, 0, RedRange}, {1, -BlueRange* Blue / Green, -RedRange* Red / Green}, {1, BlueRange, 0}}};

// A stored value may be anything; the sliders give -1 to 1.
double Control(float value) {
    return std::isfinite(value) ? std::clamp(static_cast<double>(value), -1.0, 1.0) : 0;
}

}  // namespace

ColourMap ControlsOf(const zorvic::v1::PinnedAsset& asset) {
    const double contrast = 1 + Control(asset.contrast());
    const double chroma = 1 + Control(asset.saturation());
    const double angle = Control(asset.hue()) * std::numbers::pi;
    const double along = chroma * std::cos(angle);
    const double across = chroma * std::sin(angle);
    const Matrix turn = {{{1, 0, 0}, {0, along, -across}, {0, across, along}}};
    const Matrix mixed = FromChroma * turn * ToChroma;
    ColourMap map;
    for (std::size_t row = 0; row < 3; ++row) {
        for (std::size_t column = 0; column < 3; ++column)
            map.Matrix[column * 3 + row] = static_cast<float>(contrast * mixed[row][column]);
        map.Offset[row] = static_cast<float>(0.5 - 0.5 * contrast + Control(asset.brightness()) / 2);
    }
    return map;
}

}  // namespace ZorvicRender
