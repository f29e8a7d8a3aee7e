#include "render/sound/sound_decoder.h"

#include "render/sound/samples.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace ZorvicRender {

using ZorvicUnit::MediaFile;

namespace {

// Decoders need what came before: overlapping windows, a reservoir of bits, a filter that settles.
constexpr std::int64_t PrerollFrames = SampleRate / 4;

// How much further before its place a second attempt begins where a format lands too late.
constexpr std::int64_t FurtherFrames = 5 * SampleRate;

// Without time stamps in the file, those after a seek are guessed from the bit rate.
bool HasTimeStamps(const AVFormatContext& format) {
    constexpr std::array<std::string_view, 9> Raw = {"mp3",   "aac",    "ac3", "eac3", "dts",
                                                     "dtshd", "truehd", "mlp", "loas"};
    return std::find(Raw.begin(), Raw.end(), format.iformat->name) == Raw.end();
}

// The index of such files often names pictures alone; a seek by sound would read the file from its start.
bool IsIndexedByPicture(const AVFormatContext& format) {
    return std::string_view(format.iformat->name).starts_with("matroska");
}

}  // namespace

SoundDecoder::SoundDecoder(KeptFile& file, const std::atomic<bool>& stop)
    : File(file), Stop(stop), Read(av_packet_alloc()), Decoded(av_frame_alloc()) {
    Open();
}

void SoundDecoder::Open() {
    Codec.reset();
    ZorvicUnit::ReadLimit limit;
    limit.Stop = &Stop;
    Media.emplace(File.Open(), File.Path, limit);
    Stream = Media->Audio();
    if (Stream == nullptr) return;
    Codec = ZorvicUnit::OpenDecoder(*Stream);
    Media->ReadOnly(*Stream);
    Start = ZorvicUnit::StartTime(Media->Context(), *Stream);
    av_packet_unref(Read.get());
    Media->Read(*Read);
    First = Read->pts == AV_NOPTS_VALUE ? Start : std::min(Read->pts, Start);
    Fresh = true;
}

void SoundDecoder::Seek(std::int64_t position) {
    if (Codec == nullptr) return;
    const AVRational frames{1, SampleRate};
    // What encoders put before the first sample has time stamps before position 0.
    const auto stampOf = [&](std::int64_t frame) {
        return frame <= 0 ? First : Start + av_rescale_q(frame, frames, Stream->time_base);
    };
    const std::int64_t early = position - PrerollFrames - Stream->codecpar->seek_preroll;
    NeededFrom = stampOf(early);
    const bool found = HasTimeStamps(Media->Context()) && !(Fresh && early <= 0) &&
                       (SeekTo(stampOf(early)) || SeekTo(stampOf(early - FurtherFrames)));
    if (!found) Rewind();
    Fresh = Draining = false;
}

// False when reading would go on too late.
bool SoundDecoder::SeekTo(std::int64_t timeStamp) {
    const AVStream* video = IsIndexedByPicture(Media->Context()) ? Media->Video() : nullptr;
    const AVStream& by = video == nullptr ? *Stream : *video;
    av_packet_unref(Read.get());
    avcodec_flush_buffers(Codec.get());
    Fresh = false;
    const std::int64_t stamp = av_rescale_q(timeStamp, Stream->time_base, by.time_base);
    if (!Media->SeekBefore(by, stamp) || !Media->Read(*Read)) return false;
    return Read->pts == AV_NOPTS_VALUE || Read->pts <= std::max(timeStamp, First);
}

void SoundDecoder::Rewind() {
    if (!Fresh) Open();
}

bool SoundDecoder::Needed(const AVPacket& packet) const {
    return packet.pts == AV_NOPTS_VALUE || packet.pts + packet.duration >= NeededFrom;
}

bool SoundDecoder::ReadPacket() {
    while (Read->data != nullptr || Media->Read(*Read)) {
        if (Needed(*Read)) return true;
        av_packet_unref(Read.get());
    }
    return false;
}

const AVFrame* SoundDecoder::Next() {
    if (Codec == nullptr) return nullptr;
    for (;;) {
        const int received = avcodec_receive_frame(Codec.get(), Decoded.get());
        if (received >= 0) return Decoded.get();
        if (received == AVERROR_EOF || Draining || Stop) return nullptr;
        Draining = !ReadPacket();
        avcodec_send_packet(Codec.get(), Draining ? nullptr : Read.get());
        av_packet_unref(Read.get());
    }
}

std::optional<std::int64_t> SoundDecoder::PositionOf(const AVFrame& frame) const {
    const std::int64_t stamp = frame.best_effort_timestamp;
    if (stamp == AV_NOPTS_VALUE || frame.sample_rate <= 0) return std::nullopt;
    return av_rescale_q(av_sat_sub64(stamp, Start), Stream->time_base, AVRational{1, frame.sample_rate});
}

}  // namespace ZorvicRender
