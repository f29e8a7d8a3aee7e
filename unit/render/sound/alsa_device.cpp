#include "render/sound/alsa_device.h"

#include "fault.h"
#include "render/sound/samples.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>
#include <string_view>

namespace ZorvicRender {

namespace {

constexpr unsigned BufferUS = 60'000;

// A write waits for room this often: 20 ms each.
constexpr int MostWaits = 25;
constexpr int WaitMS = 20;

// The library would write its complaints to standard error, past the log.
void IgnoreMessage(const char*, int, const char*, int, const char*, ...) {}

std::string KnownDevices() {
    void** hints = nullptr;
    if (snd_device_name_hint(-1, "pcm", &hints) < 0) return {};
    std::string names;
    for (void** hint = hints; *hint != nullptr; ++hint) {
        char* const name = snd_device_name_get_hint(*hint, "NAME");
        char* const direction = snd_device_name_get_hint(*hint, "IOID");
        const bool plays = direction == nullptr || std::string_view(direction) == "Output";
        if (name != nullptr && plays) names += (names.empty() ? "" : ", ") + std::string(name);
        std::free(name);
        std::free(direction);
    }
    snd_device_name_free_hint(hints);
    return names;
}

}  // namespace

AlsaDevice::AlsaDevice(std::string name) : Named(std::move(name)) {
    snd_lib_error_set_handler(&IgnoreMessage);
}

AlsaDevice::~AlsaDevice() {
    Close();
}

void AlsaDevice::Open() {
    Close();
    try {
        SetUp();
    } catch (...) {
        Close();
        throw;
    }
}

void AlsaDevice::SetUp() {
    const std::string option = Named == "default" ? "--audio default" : "--audio alsa:" + Named;
    const int opened = snd_pcm_open(&Pcm, Named.c_str(), SND_PCM_STREAM_PLAYBACK, SND_PCM_NONBLOCK);
    if (opened < 0) {
        const std::string known = KnownDevices();
        throw ZorvicUnit::Fault(ZorvicUnit::FaultKind::NotFound,
                                option + ": cannot open the sound device: " + snd_strerror(opened) +
                                    (known.empty() ? "; there is none" : "; there are " + known));
    }
    int set = -EINVAL;
    for (const snd_pcm_format_t format : {SND_PCM_FORMAT_FLOAT, SND_PCM_FORMAT_S32, SND_PCM_FORMAT_S16}) {
        Format = format;
        set = snd_pcm_set_params(Pcm, format, SND_PCM_ACCESS_RW_INTERLEAVED, Channels, SampleRate, 1, BufferUS);
        if (set >= 0) break;
    }
    snd_pcm_sw_params_t* software = nullptr;
    snd_pcm_sw_params_alloca(&software);
    if (set >= 0) set = snd_pcm_sw_params_current(Pcm, software);
    if (set >= 0) set = snd_pcm_sw_params_set_start_threshold(Pcm, software, BlockFrames);
    if (set >= 0) set = snd_pcm_sw_params_set_avail_min(Pcm, software, BlockFrames);
    if (set >= 0) set = snd_pcm_sw_params(Pcm, software);
    if (set >= 0) return;
    throw ZorvicUnit::Fault(ZorvicUnit::FaultKind::Refused,
                            option + ": the sound device does not play 48 kHz stereo: " + snd_strerror(set));
}

void AlsaDevice::Close() {
    if (Pcm != nullptr) snd_pcm_close(Pcm);
    Pcm = nullptr;
}

PcmDevice::State AlsaDevice::Recover(long error) {
    const bool known = error == -EPIPE || error == -ESTRPIPE || error == -EINTR;
    return known && snd_pcm_recover(Pcm, static_cast<int>(error), 1) >= 0 ? State::Broken : State::Gone;
}

PcmDevice::State AlsaDevice::WaitForRoom(std::chrono::milliseconds limit, bool& room) {
    const int waited = snd_pcm_wait(Pcm, static_cast<int>(limit.count()));
    room = waited > 0;
    return waited < 0 ? Recover(waited) : State::Fine;
}

PcmDevice::State AlsaDevice::Delay(long& frames) {
    snd_pcm_sframes_t delay = 0;
    const int asked = snd_pcm_delay(Pcm, &delay);
    frames = delay;
    return asked < 0 ? Recover(asked) : State::Fine;
}

const void* AlsaDevice::ToFormat(const float* frames, std::size_t count) {
    if (Format == SND_PCM_FORMAT_FLOAT) return frames;
    const auto convert = [&](auto& to, double full) {
        to.resize(count * Channels);
        std::transform(frames, frames + to.size(), to.begin(), [&](float value) {
            const double scaled = std::clamp(std::round(value * full), -full, full - 1);
            return static_cast<typename std::decay_t<decltype(to)>::value_type>(scaled);
        });
        return static_cast<const void*>(to.data());
    };
    return Format == SND_PCM_FORMAT_S16 ? convert(Short, 32768.0) : convert(Long, 2147483648.0);
}

PcmDevice::State AlsaDevice::Write(const float* frames, std::size_t count) {
    const auto* bytes = static_cast<const char*>(ToFormat(frames, count));
    int waits = 0;
    while (count > 0) {
        const snd_pcm_sframes_t written = snd_pcm_writei(Pcm, bytes, count);
        if (written >= 0) {
            bytes += snd_pcm_frames_to_bytes(Pcm, written);
            count -= static_cast<std::size_t>(written);
        } else if (written != -EAGAIN) {
            return Recover(written);
        } else if (++waits > MostWaits) {
            return State::Gone;
        } else if (const int waited = snd_pcm_wait(Pcm, WaitMS); waited < 0) {
            return Recover(waited);
        }
    }
    return State::Fine;
}

}  // namespace ZorvicRender
