#include "media/av_types.h"

#include "media/decoders.h"

extern "C" {
#include <libavutil/mem.h>
}

namespace ZorvicUnit {

AvDecoder OpenDecoder(const AVStream& stream, int threads) {
    const AVCodec* codec = avcodec_find_decoder(stream.codecpar->codec_id);
    AvDecoder decoder(codec == nullptr ? nullptr : avcodec_alloc_context3(codec));
    if (decoder == nullptr || avcodec_parameters_to_context(decoder.get(), stream.codecpar) < 0) return nullptr;
    decoder->thread_count = threads;
    decoder->codec_whitelist = av_strdup(TrustedDecoders());
    if (decoder->codec_whitelist == nullptr) return nullptr;
    decoder->pkt_timebase = stream.time_base;
    return avcodec_open2(decoder.get(), codec, nullptr) < 0 ? nullptr : std::move(decoder);
}

std::int64_t StartTime(const AVFormatContext& format, const AVStream& stream) {
    if (format.start_time == AV_NOPTS_VALUE) return stream.start_time == AV_NOPTS_VALUE ? 0 : stream.start_time;
    return av_rescale_q(format.start_time, AVRational{1, AV_TIME_BASE}, stream.time_base);
}

}  // namespace ZorvicUnit
