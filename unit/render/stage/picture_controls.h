#pragma once

#include <zorvic/v1/unit.pb.h>

#include <array>

namespace ZorvicRender {

/// An affine map of RGB, each 0 to 1: out = Matrix * in + Offset. The matrix is stored column by column.
struct ColourMap {
    std::array<float, 9> Matrix{1, 0, 0, 0, 1, 0, 0, 0, 1};
    std::array<float, 3> Offset{0, 0, 0};
    bool operator==(const ColourMap&) const = default;
};

/// What the picture controls of a pinned asset do: contrast c scales around mid grey by (1 + c), brightness b adds b/2
/// of full scale, saturation s scales chroma by (1 + s), hue h turns it by h * 180 degrees. Chroma is that of BT.709.
ColourMap ControlsOf(const zorvic::v1::PinnedAsset& asset);

}  // namespace ZorvicRender
