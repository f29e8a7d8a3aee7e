#include "render/pictures/picture_decoder.h"

#include "fault.h"

extern "C" {
#include <libavutil/display.h>
}

#include <algorithm>
#include <cmath>
#include <utility>

namespace ZorvicRender {

using ZorvicUnit::Fault;
using ZorvicUnit::FaultKind;

namespace {

constexpr AVRational NanosecondBase{1, 1'000'000'000};
// More than one costs a picture of delay each, and a core that other layers need; only large pictures need two.
constexpr int LargeWidth = 2048;
constexpr int LargePictureThreads = 2;
// A format without an index may lead behind the position that was asked for.
constexpr Nanoseconds FirstStepBack = std::chrono::seconds(1);
// A picture may stand longer than its packet says.
constexpr Nanoseconds StandsAtMost = std::chrono::milliseconds(500);

int ThreadsFor(const AVStream& stream) {
    return stream.codecpar->width > LargeWidth ? LargePictureThreads : 1;
}

}  // namespace

PictureDecoder::PictureDecoder(ZorvicUnit::Descriptor file, const std::string& name, const std::atomic<bool>& stop)
    : Media(std::move(file), name, {.Stop = &stop}), Video(Media.Video()), Packet(av_packet_alloc()) {
    if (Video != nullptr) Decoder = ZorvicUnit::OpenDecoder(*Video, ThreadsFor(*Video));
    if (!Decoder || !Packet) throw Fault(FaultKind::Refused, name + " has no picture that can be decoded");
    Media.ReadOnly(*Video);
    Start = ZorvicUnit::StartTime(Media.Context(), *Video);
}

void PictureDecoder::SeekBefore(Nanoseconds position) {
    Ahead.reset();
    Target = position;
    const bool atStart = std::exchange(Fresh, false);
    if (atStart && position <= PositionTolerance) return;
    const Nanoseconds wanted = position + PositionTolerance;
    Nanoseconds step{0};
    for (;;) {
        const Nanoseconds target = std::max(wanted - step, Nanoseconds(0));
        if (!GoTo(target)) return;
        Ahead = Next();
        if (target == Nanoseconds(0) || (Ahead && PositionOf(*Ahead) <= wanted)) return;
        step = step == Nanoseconds(0) ? FirstStepBack : step * 4;
    }
}

bool PictureDecoder::GoTo(Nanoseconds target) {
    // Decoding order runs ahead of the pictures: the first packet may lie before the start.
    const Nanoseconds early = target == Nanoseconds(0) ? -FirstStepBack : target;
    const auto stamp = [this](Nanoseconds at) {
        return Start + av_rescale_q(at.count(), NanosecondBase, Video->time_base);
    };
    if (!Media.SeekBefore(*Video, stamp(early)) && !Media.SeekBefore(*Video, stamp(target)) && !Media.Rewind())
        return false;
    avcodec_flush_buffers(Decoder.get());
    Drained = false;
    return true;
}

ZorvicUnit::AvFrame PictureDecoder::Next() {
    Fresh = false;
    if (Ahead) return std::move(Ahead);
    ZorvicUnit::AvFrame frame(av_frame_alloc());
    for (;;) {
        const int result = avcodec_receive_frame(Decoder.get(), frame.get());
        if (result >= 0 && frame->width > 0 && frame->height > 0) return frame;
        if (result == AVERROR_EOF || (result < 0 && Drained)) return nullptr;
        if (result < 0 && !Feed()) return nullptr;
    }
}

// False when the decoder takes no more.
bool PictureDecoder::Feed() {
    if (!Media.Read(*Packet)) {
        Drained = true;
        return avcodec_send_packet(Decoder.get(), nullptr) >= 0;
    }
    Decoder->skip_frame = IsNeeded(*Packet) ? AVDISCARD_DEFAULT : AVDISCARD_NONREF;
    // What a damaged packet lacks is missing in the picture; the ones after it are not lost by it.
    avcodec_send_packet(Decoder.get(), Packet.get());
    av_packet_unref(Packet.get());
    return true;
}

bool PictureDecoder::IsNeeded(const AVPacket& packet) const {
    if (packet.pts == AV_NOPTS_VALUE) return true;
    const Nanoseconds from(av_rescale_q(packet.pts - Start, Video->time_base, NanosecondBase));
    return from + StandsAtMost > Target;
}

Nanoseconds PictureDecoder::PositionOf(const AVFrame& frame) const {
    if (frame.best_effort_timestamp == AV_NOPTS_VALUE) return Nanoseconds(0);
    return Nanoseconds(av_rescale_q(frame.best_effort_timestamp - Start, Video->time_base, NanosecondBase));
}

Nanoseconds PictureDecoder::LengthOf(const AVFrame& frame) const {
    if (frame.pkt_duration > 0) return Nanoseconds(av_rescale_q(frame.pkt_duration, Video->time_base, NanosecondBase));
    const AVRational rate = Video->avg_frame_rate.num > 0 ? Video->avg_frame_rate : Video->r_frame_rate;
    return rate.num > 0 ? Nanoseconds(av_rescale_q(1, av_inv_q(rate), NanosecondBase)) : std::chrono::milliseconds(40);
}

int PictureDecoder::Turns() const {
    const auto* matrix = av_stream_get_side_data(Video, AV_PKT_DATA_DISPLAYMATRIX, nullptr);
    if (matrix == nullptr) return 0;
    const double counterClockwise = av_display_rotation_get(reinterpret_cast<const std::int32_t*>(matrix));
    if (std::isnan(counterClockwise)) return 0;
    return (4 - static_cast<int>(std::lround(counterClockwise / 90)) % 4) % 4;
}

}  // namespace ZorvicRender
