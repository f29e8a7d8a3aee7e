#include "render/pictures/picture_converter.h"

extern "C" {
#include <libavutil/pixdesc.h>
#include <libswscale/swscale.h>
}

#include <array>

namespace ZorvicRender {

namespace {

constexpr int HighDefinitionLines = 720;
constexpr int Neutral = 1 << 16;

const int* CoefficientsOf(const AVFrame& frame) {
    switch (frame.colorspace) {
        case AVCOL_SPC_BT709:
            return sws_getCoefficients(SWS_CS_ITU709);
        case AVCOL_SPC_BT470BG:
        case AVCOL_SPC_SMPTE170M:
            return sws_getCoefficients(SWS_CS_ITU601);
        case AVCOL_SPC_BT2020_NCL:
        case AVCOL_SPC_BT2020_CL:
            return sws_getCoefficients(SWS_CS_BT2020);
        default:
            return sws_getCoefficients(frame.height >= HighDefinitionLines ? SWS_CS_ITU709 : SWS_CS_ITU601);
    }
}

// The scaler knows the full range of these only by their old names.
bool IsFullRange(const AVFrame& frame) {
    switch (frame.format) {
        case AV_PIX_FMT_YUVJ420P:
        case AV_PIX_FMT_YUVJ422P:
        case AV_PIX_FMT_YUVJ444P:
        case AV_PIX_FMT_YUVJ440P:
        case AV_PIX_FMT_YUVJ411P:
            return true;
        default:
            return frame.color_range == AVCOL_RANGE_JPEG;
    }
}

bool HasAlpha(int format) {
    const auto* description = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(format));
    return description != nullptr && (description->flags & (AV_PIX_FMT_FLAG_ALPHA | AV_PIX_FMT_FLAG_PAL)) != 0;
}

bool IsDeep(int format) {
    const auto* description = av_pix_fmt_desc_get(static_cast<AVPixelFormat>(format));
    return description != nullptr && description->comp[0].depth > 8;
}

// Deep pictures would lose more than a step of colour on the fast way, which takes a third of the time.
int FlagsFor(const AVFrame& frame, PixelSize size) {
    const bool shrinks = size.Width < frame.width || size.Height < frame.height;
    const int chroma = IsDeep(frame.format) ? SWS_FULL_CHR_H_INT : 0;
    return (shrinks ? SWS_AREA : SWS_BILINEAR) | SWS_ACCURATE_RND | chroma;
}

}  // namespace

PictureConverter::~PictureConverter() {
    sws_freeContext(Scaler);
}

std::shared_ptr<Picture> PictureConverter::Convert(const AVFrame& frame, PixelSize size) {
    Scaler =
        sws_getCachedContext(Scaler, frame.width, frame.height, static_cast<AVPixelFormat>(frame.format), size.Width,
                             size.Height, AV_PIX_FMT_RGBA, FlagsFor(frame, size), nullptr, nullptr, nullptr);
    if (Scaler == nullptr) return nullptr;
    sws_setColorspaceDetails(Scaler, CoefficientsOf(frame), IsFullRange(frame) ? 1 : 0,
                             sws_getCoefficients(SWS_CS_DEFAULT), 1, 0, Neutral, Neutral);
    auto picture = Pool->Make(size);
    picture->Opaque = !HasAlpha(frame.format);
    const std::array<std::uint8_t*, 4> planes = {picture->Pixels.data()};
    const std::array<int, 4> strides = {size.Width * 4};
    sws_scale(Scaler, frame.data, frame.linesize, 0, frame.height, planes.data(), strides.data());
    return picture;
}

}  // namespace ZorvicRender
