#include "media/envelope.h"

#include "media/av_types.h"

extern "C" {
#include <libavutil/common.h>
#include <libswresample/swresample.h>
}

#include <algorithm>
#include <array>
#include <cmath>

namespace ZorvicUnit {

namespace {

constexpr std::int64_t MostSeconds = 86'400;
constexpr std::size_t MostSteps = std::size_t{MostSeconds} * 1000 / Envelope::StepMS;

using Resampler = std::unique_ptr<SwrContext, AvFree<swr_free>>;

/// Collects peaks of decoded frames, whatever their sample format.
class PeakMeter {
public:
    PeakMeter(AVRational timeBase, std::int64_t startTime) : TimeBase(timeBase), StartTime(startTime) {}

    void Add(const AVFrame& frame) {
        if (frame.nb_samples <= 0 || frame.sample_rate <= 0 || !ToPlanes(frame)) return;
        if (frame.pts != AV_NOPTS_VALUE)
            Position = av_rescale_q(av_sat_sub64(frame.pts, StartTime), TimeBase, AVRational{1, frame.sample_rate});
        // A damaged time stamp may lie anywhere.
        const std::int64_t last = std::int64_t{frame.sample_rate} * MostSeconds;
        if (Position < -last || Position > last) return;
        const int right = Planes->ch_layout.nb_channels > 1 ? 1 : 0;
        for (int i = 0; i < Planes->nb_samples; ++i) {
            const std::int64_t step = (Position + i) * 1000 / frame.sample_rate / Envelope::StepMS;
            Note(step, std::abs(Sample(0, i)), std::abs(Sample(right, i)));
        }
        Position += frame.nb_samples;
    }

    Envelope Finish() {
        Close(Current);
        return std::move(Result);
    }

private:
    float Sample(int channel, int index) const {
        return reinterpret_cast<const float*>(Planes->extended_data[channel])[index];
    }

    // Float planes at the frame's own rate: nothing is buffered between frames.
    bool ToPlanes(const AVFrame& frame) {
        Planes.reset(av_frame_alloc());
        Planes->format = AV_SAMPLE_FMT_FLTP;
        Planes->sample_rate = frame.sample_rate;
        if (av_channel_layout_copy(&Planes->ch_layout, &frame.ch_layout) < 0) return false;
        if (Converter == nullptr) Converter.reset(swr_alloc());
        if (swr_convert_frame(Converter.get(), Planes.get(), &frame) >= 0) return Planes->nb_samples > 0;
        Converter.reset();  // a stream may change its format on the way
        return false;
    }

    void Note(std::int64_t step, float left, float right) {
        if (step != Current) {
            Close(Current);
            Current = step;
            Peak = {0, 0};
        }
        Peak = {std::max(Peak[0], left), std::max(Peak[1], right)};
    }

    void Close(std::int64_t step) {
        if (step < 0 || static_cast<std::size_t>(step) >= MostSteps) return;
        const auto index = static_cast<std::size_t>(step);
        if (Result.Levels.size() <= index) Result.Levels.resize(index + 1);
        auto& levels = Result.Levels[index];
        levels = {std::max(levels[0], MeterLevel(Peak[0])), std::max(levels[1], MeterLevel(Peak[1]))};
    }

    const AVRational TimeBase;
    const std::int64_t StartTime;
    Resampler Converter;
    AvFrame Planes;
    std::int64_t Position = 0;  ///< samples since the start of the file
    std::int64_t Current = -1;
    std::array<float, 2> Peak = {0, 0};
    Envelope Result;
};

void Drain(AVCodecContext& decoder, AVFrame& frame, PeakMeter& meter) {
    while (avcodec_receive_frame(&decoder, &frame) >= 0) {
        meter.Add(frame);
        av_frame_unref(&frame);
    }
}

}  // namespace

std::uint8_t MeterLevel(float peak) {
    constexpr double Floor = -60;
    if (!(peak > 0)) return 0;
    const double decibels = 20 * std::log10(static_cast<double>(peak));
    return static_cast<std::uint8_t>(std::lround(std::clamp((decibels - Floor) / -Floor, 0.0, 1.0) * 100));
}

std::optional<Envelope> ReadEnvelope(const Descriptor& file, const std::string& name, const ReadLimit& limit) {
    MediaFile media(file.Duplicate(), name, limit);
    const AVStream* audio = media.Audio();
    // One thread: more would take time from what plays.
    const AvDecoder decoder = audio == nullptr ? nullptr : OpenDecoder(*audio);
    if (decoder == nullptr) return std::nullopt;
    media.ReadOnly(*audio);

    PeakMeter meter(audio->time_base, StartTime(media.Context(), *audio));
    const AvPacket packet(av_packet_alloc());
    const AvFrame frame(av_frame_alloc());
    while (media.Read(*packet)) {
        // A damaged packet is a gap in the meters and no reason to give up the rest.
        if (avcodec_send_packet(decoder.get(), packet.get()) >= 0) Drain(*decoder, *frame, meter);
        av_packet_unref(packet.get());
    }
    media.CheckLimit();
    avcodec_send_packet(decoder.get(), nullptr);
    Drain(*decoder, *frame, meter);
    return meter.Finish();
}

}  // namespace ZorvicUnit
