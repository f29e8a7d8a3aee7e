#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "zorvic/export.h"

namespace Zorvic {

/// What one output of a unit showed last, small.
struct OutputPicture {
    std::uint32_t Output = 0;  ///< its number, from 1
    int Width = 0;             ///< pixels, at most 320
    int Height = 0;
    /// 3 bytes a pixel (red, green, blue), rows from the top, without padding; never null. Never changes: as long as
    /// the output shows the same, it is the same object.
    std::shared_ptr<const std::vector<std::uint8_t>> RGB;
    bool Signal = false;               ///< something runs on the output; otherwise it is black
    std::chrono::milliseconds Age{0};  ///< since the output showed it
};

/// An extension of the interface: small live pictures of a unit's outputs, up to 5 a second each, over a connection of
/// its own. The unit makes them only while somebody watches, so keep an object only while its pictures are looked at.
///
/// No operation waits for the network. A lost connection is taken up again quietly, after 0.25 s at first and 8 s at
/// most; until then the pictures that came last stay and grow old.
class ZORVIC_API OutputPreview {
public:
    /// Starts to watch and returns at once. `host` is the text that a Session takes; one that makes no sense, or is
    /// that of a unit without outputs or without this extension, never gives a picture.
    explicit OutputPreview(const std::string& host);
    /// Ends watching, within a few milliseconds.
    ~OutputPreview();
    OutputPreview(const OutputPreview&) = delete;
    OutputPreview& operator=(const OutputPreview&) = delete;

    /// The newest picture of each output, by number; empty until the first has come. Any thread.
    std::vector<OutputPicture> Latest() const;

private:
    struct Impl;
    std::unique_ptr<Impl> Pimpl;
};

}  // namespace Zorvic
