#pragma once

#include <zorvic/v1/unit.pb.h>

#include <cstdint>
#include <optional>

namespace ZorvicRender {

/// A rectangle; its unit is said where it is used.
struct Area {
    double X = 0;
    double Y = 0;
    double Width = 0;
    double Height = 0;
    bool operator==(const Area&) const = default;
};

/// The part of a canvas that an output shows, in the canvas's pixels.
struct CanvasView {
    const zorvic::v1::Canvas* Canvas = nullptr;
    Area Part;

    /// Where a pinned asset lies on the output: the output is 1 wide and 1 high.
    Area Place(const zorvic::v1::PinnedAsset& asset) const;
};

/// What this output (from 1) shows of the preset; nothing when no canvas reaches it. Canvases take outputs in order of
/// their index; Landscape cuts a canvas in columns, Portrait in rows, all others show the whole of it on each output. A
/// canvas without size has the output's.
std::optional<CanvasView> ViewOf(const zorvic::v1::Preset& preset, std::uint32_t output, double outputWidth,
                                 double outputHeight);

}  // namespace ZorvicRender
