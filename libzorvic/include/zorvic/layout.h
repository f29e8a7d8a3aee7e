#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "zorvic/export.h"
#include "zorvic/types.h"

namespace Zorvic {

/// First and last player number in a bit set, newly allocated and owned by the caller; null for an empty set.
ZORVIC_API std::array<std::uint32_t, 2>* GetPlayerRange(Player players);

/// Pins an asset of the given pixel size onto the canvas and appends it to the canvas's assets. The native alignments
/// keep the pixel size and may hang over the edges; the scaled ones scale uniformly to fit; STRETCHED fills the canvas.
/// An asset of 0x0 has no picture: it gets an empty rectangle at the canvas's origin and only sounds.
/// ZORVIC_STATUS_MISUSED, canvas unchanged, for an unknown alignment, an empty path, a negative size or one with
/// exactly one side 0.
ZORVIC_API StatusCode AttachAssetToCanvas(EasyCanvasAlignment alignment, const std::string& path, const Size2D& size,
                                          CanvasInfo& canvas);

}  // namespace Zorvic
