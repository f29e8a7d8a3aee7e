#include "media/probe.h"

#include "fault.h"
#include "media/av_types.h"

extern "C" {
#include <libavutil/common.h>
#include <libavutil/display.h>
#include <libavutil/imgutils.h>
}

#include <algorithm>
#include <cmath>
#include <limits>
#include <string_view>

namespace ZorvicUnit {

namespace {

std::uint32_t ToUnsigned32(std::int64_t value) {
    return static_cast<std::uint32_t>(std::clamp<std::int64_t>(value, 0, std::numeric_limits<std::uint32_t>::max()));
}

std::int32_t ToMilliseconds(std::int64_t value, AVRational base) {
    const std::int64_t milliseconds = av_rescale_q(value, base, AVRational{1, 1000});
    return static_cast<std::int32_t>(
        std::clamp<std::int64_t>(milliseconds, 0, std::numeric_limits<std::int32_t>::max()));
}

bool LiesOnItsSide(const AVStream& stream) {
    const auto* matrix = av_stream_get_side_data(&stream, AV_PKT_DATA_DISPLAYMATRIX, nullptr);
    if (matrix == nullptr) return false;
    const double angle = std::abs(av_display_rotation_get(reinterpret_cast<const std::int32_t*>(matrix)));
    return angle > 45 && angle < 135;
}

// Formats that hold single pictures are read through demuxers of this family.
bool IsPictureFormat(std::string_view format) {
    return format.ends_with("_pipe");
}

struct Span {
    std::int64_t Packets = 0;
    std::int64_t End = 0;  ///< in units of the stream's time base
};

AVRational FrameRate(const AVStream& video) {
    return video.avg_frame_rate.num > 0 ? video.avg_frame_rate : video.r_frame_rate;
}

// For files that tell neither length nor number of pictures (raw streams, recordings that were cut off).
Span ReadThrough(MediaFile& media, const AVStream& stream, std::int64_t packetLimit) {
    media.ReadOnly(stream);
    const AvPacket packet(av_packet_alloc());
    const AVRational rate = FrameRate(stream);
    Span span;
    while (span.Packets < packetLimit && media.Read(*packet)) {
        ++span.Packets;
        const std::int64_t start = stream.start_time == AV_NOPTS_VALUE ? 0 : stream.start_time;
        if (packet->pts != AV_NOPTS_VALUE) {
            span.End = std::max(span.End, av_sat_add64(av_sat_sub64(packet->pts, start), packet->duration));
        } else if (packet->duration > 0) {
            span.End = av_sat_add64(span.End, packet->duration);
        } else if (rate.num > 0) {
            span.End = av_rescale_q(span.Packets, av_inv_q(rate), stream.time_base);
        }
        av_packet_unref(packet.get());
    }
    media.CheckLimit();
    return span;
}

bool IsStill(MediaFile& media, const AVStream& video) {
    if (IsPictureFormat(media.Context().iformat->name)) return true;
    if (video.nb_frames != 0) return video.nb_frames == 1;
    const bool mayBeOne = media.Context().duration == AV_NOPTS_VALUE || media.Context().duration < AV_TIME_BASE;
    return mayBeOne && ReadThrough(media, video, 2).Packets == 1;
}

std::int32_t LengthByReading(MediaFile& media) {
    const AVStream* stream = media.Video() != nullptr ? media.Video() : media.Audio();
    if (stream == nullptr) return 0;
    const Span span = ReadThrough(media, *stream, std::numeric_limits<std::int64_t>::max());
    return ToMilliseconds(span.End, stream->time_base);
}

// Coded sound comes in packets, and the last reaches beyond the picture: a loop would show a gap.
std::int64_t LengthToPlay(const MediaFile& media) {
    const AVFormatContext& format = media.Context();
    const AVStream* video = media.Video();
    const bool known = video != nullptr && media.Audio() != nullptr && video->duration != AV_NOPTS_VALUE;
    const AVRational rate = known ? FrameRate(*video) : AVRational{0, 1};
    if (rate.num <= 0 || rate.den <= 0) return format.duration;
    constexpr AVRational base = {1, AV_TIME_BASE};
    std::int64_t end = av_rescale_q(video->duration, video->time_base, base);
    if (video->start_time != AV_NOPTS_VALUE && format.start_time != AV_NOPTS_VALUE)
        end =
            av_sat_add64(end, av_sat_sub64(av_rescale_q(video->start_time, video->time_base, base), format.start_time));
    const std::int64_t frame = av_rescale_q(1, av_inv_q(rate), base);
    return end < format.duration && av_sat_sub64(format.duration, end) < frame ? end : format.duration;
}

std::int32_t Duration(MediaFile& media, const Descriptor& file, const std::string& name, const ReadLimit& limit) {
    if (media.Context().duration != AV_NOPTS_VALUE)
        return ToMilliseconds(LengthToPlay(media), AVRational{1, AV_TIME_BASE});
    // From the start: looking for a second picture has moved on.
    if (media.Rewind()) return LengthByReading(media);
    MediaFile again(file.Duplicate(), name, limit);
    return LengthByReading(again);
}

std::int64_t FileRate(const AVFormatContext& format, const zorvic::v1::AssetMetadata& metadata) {
    if (format.bit_rate > 0 || metadata.duration_ms() == 0) return format.bit_rate;
    constexpr std::int64_t BitsTimesMilliseconds = 8000;  // of a byte, of a second
    return av_rescale(static_cast<std::int64_t>(metadata.total_size()), BitsTimesMilliseconds, metadata.duration_ms());
}

// Many containers give only the sum: what the sound does not take is the picture's.
std::int64_t PictureRate(std::int64_t fileRate, const AVStream& video, const AVStream* audio) {
    if (video.codecpar->bit_rate > 0) return video.codecpar->bit_rate;
    if (audio == nullptr) return fileRate;
    return audio->codecpar->bit_rate > 0 ? fileRate - audio->codecpar->bit_rate : 0;
}

void DescribeVideo(const MediaFile& media, const AVStream& video, bool still, zorvic::v1::AssetMetadata& metadata) {
    const bool turned = LiesOnItsSide(video);
    metadata.set_video_format(avcodec_get_name(video.codecpar->codec_id));
    metadata.set_width(turned ? video.codecpar->height : video.codecpar->width);
    metadata.set_height(turned ? video.codecpar->width : video.codecpar->height);
    if (still) return;
    const AVRational rate = FrameRate(video);
    if (rate.num > 0 && rate.den > 0) metadata.set_fps(ToUnsigned32(std::llround(av_q2d(rate))));
    const std::int64_t fileRate = FileRate(media.Context(), metadata);
    metadata.set_video_bitrate(ToUnsigned32(PictureRate(fileRate, video, media.Audio())));
}

void DescribeAudio(const MediaFile& media, const AVStream& audio, zorvic::v1::AssetMetadata& metadata) {
    metadata.set_audio_format(avcodec_get_name(audio.codecpar->codec_id));
    metadata.set_sample_rate(ToUnsigned32(audio.codecpar->sample_rate));
    metadata.set_channels(ToUnsigned32(audio.codecpar->ch_layout.nb_channels));
    const bool alone = media.Video() == nullptr;
    const std::int64_t own = audio.codecpar->bit_rate;
    metadata.set_audio_bitrate(ToUnsigned32(own == 0 && alone ? FileRate(media.Context(), metadata) : own));
}

[[noreturn]] void RefuseForLackOfStreams(const AVFormatContext& format, const std::string& name) {
    // Beyond what can be decoded the library does not even tell a size.
    if (av_find_best_stream(const_cast<AVFormatContext*>(&format), AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0) >= 0)
        throw Fault(FaultKind::Refused, name + " holds a picture too large or too damaged to be read");
    throw Fault(FaultKind::Refused, name + " has neither picture nor sound");
}

// It could be listed, and never shown.
void RefuseLargePicture(const AVStream& video, const std::string& name) {
    const AVCodecParameters& picture = *video.codecpar;
    const auto format =
        picture.format == AV_PIX_FMT_NONE ? AV_PIX_FMT_RGBA : static_cast<AVPixelFormat>(picture.format);
    const int bytes = av_image_get_buffer_size(format, picture.width, picture.height, 1);
    if (bytes >= 0 && static_cast<std::size_t>(bytes) <= MostAllocated) return;
    throw Fault(FaultKind::Refused, name + ": a picture of " + std::to_string(picture.width) + " by " +
                                        std::to_string(picture.height) + " is too large");
}

}  // namespace

zorvic::v1::AssetMetadata Probe(const Descriptor& file, const std::string& name, const ReadLimit& limit) {
    MediaFile media(file.Duplicate(), name, limit);
    const AVStream* video = media.Video();
    const AVStream* audio = media.Audio();
    if (video == nullptr && audio == nullptr) RefuseForLackOfStreams(media.Context(), name);

    if (video != nullptr) RefuseLargePicture(*video, name);

    zorvic::v1::AssetMetadata metadata;
    metadata.set_container_format(media.Context().iformat->name);
    metadata.set_total_size(static_cast<std::uint64_t>(std::max<std::int64_t>(avio_size(media.Context().pb), 0)));
    const bool still = video != nullptr && audio == nullptr && IsStill(media, *video);
    metadata.set_duration_ms(still ? StillMS : Duration(media, file, name, limit));
    if (video != nullptr) DescribeVideo(media, *video, still, metadata);
    if (audio != nullptr) DescribeAudio(media, *audio, metadata);
    return metadata;
}

}  // namespace ZorvicUnit
