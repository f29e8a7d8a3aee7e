#pragma once

#include "render/pictures/picture.h"

extern "C" {
#include <libavutil/frame.h>
}

#include <memory>

struct SwsContext;

namespace ZorvicRender {

/// Turns decoded pictures of any format into RGBA of the size at which they are drawn. Colours: BT.601 or 709 as
/// tagged, untagged 709 from 720 lines; limited range unless tagged full.
class PictureConverter {
public:
    PictureConverter() : Pool(std::make_shared<PicturePool>()) {}
    ~PictureConverter();
    PictureConverter(const PictureConverter&) = delete;
    PictureConverter& operator=(const PictureConverter&) = delete;

    /// Null when the format is not known to the scaler.
    std::shared_ptr<Picture> Convert(const AVFrame& frame, PixelSize size);

private:
    std::shared_ptr<PicturePool> Pool;
    SwsContext* Scaler = nullptr;
};

}  // namespace ZorvicRender
