#pragma once

#include "media/media_file.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/frame.h>
}

#include <cstdint>
#include <memory>

namespace ZorvicUnit {

using AvPacket = std::unique_ptr<AVPacket, AvFree<av_packet_free>>;
using AvFrame = std::unique_ptr<AVFrame, AvFree<av_frame_free>>;
using AvDecoder = std::unique_ptr<AVCodecContext, AvFree<avcodec_free_context>>;

/// A decoder of the stream; null when there is none for its format or it does not open.
AvDecoder OpenDecoder(const AVStream& stream, int threads = 1);

/// When the media begin, in units of the stream. Picture and sound may start apart; the first of them counts.
std::int64_t StartTime(const AVFormatContext& format, const AVStream& stream);

}  // namespace ZorvicUnit
