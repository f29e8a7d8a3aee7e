#pragma once

#include "render/scene.h"

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <vector>

namespace ZorvicRender {

struct PixelSize {
    int Width = 0;
    int Height = 0;
    bool operator==(const PixelSize&) const = default;
};

/// One decoded picture, ready to be drawn: 8-bit RGBA with straight alpha, rows from the top without padding.
struct Picture {
    PixelSize Size;
    int Turns = 0;  ///< quarter turns clockwise that are to be made when it is drawn
    bool Opaque = true;
    Nanoseconds From{0};   ///< position in the media from which it stands
    Nanoseconds Until{0};  ///< position from which the next one stands; the largest value for the last one
    std::vector<std::uint8_t> Pixels;
};
using PicturePtr = std::shared_ptr<const Picture>;

/// Pictures whose memory is used again: fresh memory costs a page fault per 4 KiB, which is more than the conversion.
class PicturePool : public std::enable_shared_from_this<PicturePool> {
public:
    /// The pixels hold whatever they held before.
    std::shared_ptr<Picture> Make(PixelSize size);

private:
    std::mutex Lock;
    std::vector<std::unique_ptr<Picture>> Free;
};

}  // namespace ZorvicRender
