#include "render/sound/sound_converter.h"

#include "render/sound/samples.h"

extern "C" {
#include <libavutil/common.h>
#include <libavutil/opt.h>
}

#include <algorithm>
#include <array>
#include <cstdlib>
#include <numeric>

namespace ZorvicRender {

namespace {

constexpr int SilentSamples = 4096;
constexpr int MostChannels = 64;  // that the resampler takes

// Longer than the resampler's filter, so that a start in the middle sounds as if it had always run.
constexpr std::int64_t FilterSamples = 64;

// Time stamps of some recorders shake by this much around sound without a gap (one in so many of a second).
constexpr int ShakePart = 100;

constexpr int FarSeconds = 10;

std::int64_t FloorTo(std::int64_t value, std::int64_t unit) {
    const std::int64_t rest = value % unit;
    return value - (rest < 0 ? rest + unit : rest);
}

// One channel sounds on both sides at its own level; of channels whose places nobody knows the first two count.
int SetFixedMatrix(SwrContext* converter, int channels) {
    std::vector<double> matrix(static_cast<std::size_t>(channels) * Channels);
    matrix.front() = 1;
    matrix[static_cast<std::size_t>(channels + (channels > 1 ? 1 : 0))] = 1;
    return swr_set_matrix(converter, matrix.data(), channels);
}

Resampler MakeConverter(const AVFrame& frame) {
    // Not changed, though the library does not promise it.
    AVChannelLayout stereo = AV_CHANNEL_LAYOUT_STEREO;
    AVChannelLayout channels = frame.ch_layout;
    const bool placed = frame.ch_layout.order != AV_CHANNEL_ORDER_UNSPEC && frame.ch_layout.nb_channels > 1;
    SwrContext* made = nullptr;
    const auto format = static_cast<AVSampleFormat>(frame.format);
    const int set = swr_alloc_set_opts2(&made, &stereo, AV_SAMPLE_FMT_FLT, SampleRate, &channels, format,
                                        frame.sample_rate, 0, nullptr);
    Resampler converter(made);
    if (set < 0) return nullptr;
    // A full room of channels must not clip when it becomes two.
    av_opt_set_double(converter.get(), "rematrix_maxval", 1.0, 0);
    if (!placed && SetFixedMatrix(converter.get(), frame.ch_layout.nb_channels) < 0) return nullptr;
    return swr_init(converter.get()) < 0 ? nullptr : std::move(converter);
}

ZorvicUnit::AvFrame MakeSilence(const AVFrame& like) {
    ZorvicUnit::AvFrame silence(av_frame_alloc());
    silence->format = like.format;
    silence->sample_rate = like.sample_rate;
    silence->nb_samples = SilentSamples;
    if (av_channel_layout_copy(&silence->ch_layout, &like.ch_layout) < 0) return nullptr;
    if (av_frame_get_buffer(silence.get(), 0) < 0) return nullptr;
    av_samples_set_silence(silence->extended_data, 0, SilentSamples, like.ch_layout.nb_channels,
                           static_cast<AVSampleFormat>(like.format));
    return silence;
}

}  // namespace

void SoundConverter::Restart(std::int64_t position) {
    Wanted = position;
    Converter.reset();
    At.reset();
}

bool SoundConverter::Matches(const AVFrame& frame) const {
    return Converter != nullptr && Silence->format == frame.format && Silence->sample_rate == frame.sample_rate &&
           av_channel_layout_compare(&Silence->ch_layout, &frame.ch_layout) == 0;
}

bool SoundConverter::SetUp(const AVFrame& frame) {
    const bool goesOn = Converter != nullptr;
    if (goesOn && !Finish()) return false;
    if (At && goesOn) At = av_rescale(*At, frame.sample_rate, Silence->sample_rate);
    Converter = MakeConverter(frame);
    Silence = MakeSilence(frame);
    if (Silence == nullptr) Converter.reset();
    if (goesOn) Wanted = Given;
    if (Converter != nullptr) Align();
    return true;
}

// The first sample that goes in lies exactly on a sample that comes out: the rates meet only at such places.
void SoundConverter::Align() {
    const std::int64_t unit = std::gcd(Silence->sample_rate, SampleRate);
    const std::int64_t in = Silence->sample_rate / unit;
    const std::int64_t wanted = av_rescale_rnd(Wanted, Silence->sample_rate, SampleRate, AV_ROUND_DOWN);
    Fed = FloorTo(wanted - FilterSamples, in);
    Given = Fed / in * (SampleRate / unit);
}

// Nothing for a frame that cannot be told to be anywhere.
std::optional<std::int64_t> SoundConverter::Placed(const AVFrame& frame, std::optional<std::int64_t> position) {
    if (!At || !position) return position ? position : At;
    const std::int64_t shake = frame.sample_rate / ShakePart;
    const auto near = [&](std::int64_t place) { return std::llabs(av_sat_sub64(*position, place)) <= shake; };
    if (near(*At)) return At;
    // One damaged time stamp must not silence the rest: far ahead is believed when the next frame says the same.
    const bool far = *position > *At && av_sat_sub64(*position, *At) > std::int64_t{frame.sample_rate} * FarSeconds;
    const bool believed = !far || (Doubted && near(*Doubted));
    Doubted = far ? std::optional(av_sat_add64(*position, frame.nb_samples)) : std::nullopt;
    return believed ? position : std::nullopt;
}

bool SoundConverter::Add(const AVFrame& frame, std::optional<std::int64_t> position) {
    if (frame.nb_samples <= 0 || frame.sample_rate <= 0) return true;
    if (!Matches(frame) && !SetUp(frame)) return false;
    if (Converter == nullptr) return true;
    const auto placed = Placed(frame, position);
    if (!placed) return true;
    const std::int64_t from = *placed;
    At = av_sat_add64(from, frame.nb_samples);
    if (*At <= Fed) return true;
    if (from > Fed && !AddSilence(from - Fed)) return false;
    const auto skip = static_cast<int>(Fed - from);
    return Feed(frame, skip, frame.nb_samples - skip);
}

bool SoundConverter::AddSilence(std::int64_t samples) {
    while (samples > 0) {
        const auto part = static_cast<int>(std::min<std::int64_t>(samples, SilentSamples));
        if (!Feed(*Silence, 0, part)) return false;
        samples -= part;
    }
    return true;
}

bool SoundConverter::Feed(const AVFrame& frame, int skip, int samples) {
    const auto format = static_cast<AVSampleFormat>(frame.format);
    const bool planar = av_sample_fmt_is_planar(format) != 0;
    const int count = frame.ch_layout.nb_channels;
    const int offset = skip * av_get_bytes_per_sample(format) * (planar ? 1 : count);
    std::array<const std::uint8_t*, MostChannels> planes{};
    const int used = planar ? count : 1;
    if (used > MostChannels) return true;
    std::transform(frame.extended_data, frame.extended_data + used, planes.begin(),
                   [&](const std::uint8_t* plane) { return plane + offset; });
    Fed += samples;
    return Convert(planes.data(), samples);
}

bool SoundConverter::Convert(const std::uint8_t** planes, int samples) {
    const int most = swr_get_out_samples(Converter.get(), samples);
    if (most <= 0) return true;
    Buffer.resize(static_cast<std::size_t>(most) * Channels);
    auto* out = reinterpret_cast<std::uint8_t*>(Buffer.data());
    const int made = swr_convert(Converter.get(), &out, most, planes, samples);
    if (made <= 0) return true;
    const std::int64_t position = Given;
    Given += made;
    return Given <= Wanted || Out(position, Buffer.data(), static_cast<std::size_t>(made));
}

bool SoundConverter::Finish() {
    return Converter == nullptr || Convert(nullptr, 0);
}

}  // namespace ZorvicRender
