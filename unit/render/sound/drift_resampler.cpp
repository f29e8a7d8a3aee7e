#include "render/sound/drift_resampler.h"

#include "render/sound/samples.h"

extern "C" {
#include <libavutil/channel_layout.h>
#include <libavutil/opt.h>
}

#include <algorithm>
#include <cmath>
#include <new>

namespace ZorvicRender {

namespace {

// The library counts changes of speed in frames over a distance; this one makes them millionths.
constexpr int Distance = 1'000'000;

// Finer than any speed that is asked for, to be asked for again.
constexpr std::int64_t FineBase = std::int64_t{SampleRate} * 1000;

}  // namespace

DriftResampler::DriftResampler() {
    Restart();
}

void DriftResampler::Restart() {
    AVChannelLayout stereo = AV_CHANNEL_LAYOUT_STEREO;
    SwrContext* made = nullptr;
    const int set = swr_alloc_set_opts2(&made, &stereo, AV_SAMPLE_FMT_FLT, SampleRate, &stereo, AV_SAMPLE_FMT_FLT,
                                        SampleRate, 0, nullptr);
    Converter.reset(made);
    if (set < 0) throw std::bad_alloc();
    // Between steps of its table it would jump, and speeds near 1 walk through all of them.
    av_opt_set_int(Converter.get(), "linear_interp", 1, 0);
    av_opt_set_int(Converter.get(), "flags", SWR_FLAG_RESAMPLE, 0);
    if (swr_init(Converter.get()) < 0) throw std::bad_alloc();
}

const std::vector<float>& DriftResampler::Convert(const float* frames, int count, double speed) {
    swr_set_compensation(Converter.get(), static_cast<int>(-std::lround(speed * Distance)), Distance);
    const int most = swr_get_out_samples(Converter.get(), count);
    Out.resize(static_cast<std::size_t>(std::max(most, 0)) * Channels);
    auto* out = reinterpret_cast<std::uint8_t*>(Out.data());
    const auto* in = reinterpret_cast<const std::uint8_t*>(frames);
    const int made = swr_convert(Converter.get(), &out, most, &in, count);
    Out.resize(static_cast<std::size_t>(std::max(made, 0)) * Channels);
    return Out;
}

double DriftResampler::Held() const {
    return static_cast<double>(swr_get_delay(Converter.get(), FineBase)) * SampleRate / static_cast<double>(FineBase);
}

}  // namespace ZorvicRender
