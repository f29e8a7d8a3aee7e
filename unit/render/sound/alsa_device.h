#pragma once

#include "render/sound/pcm_device.h"

#include <alsa/asoundlib.h>

#include <cstdint>
#include <vector>

namespace ZorvicRender {

/// A device of the system's sound library, by its name there.
class AlsaDevice final : public PcmDevice {
public:
    explicit AlsaDevice(std::string name);
    ~AlsaDevice() override;
    AlsaDevice(const AlsaDevice&) = delete;
    AlsaDevice& operator=(const AlsaDevice&) = delete;

    void Open() override;
    void Close() override;
    State WaitForRoom(std::chrono::milliseconds limit, bool& room) override;
    State Delay(long& frames) override;
    State Write(const float* frames, std::size_t count) override;
    std::string Name() const override { return Named; }

private:
    void SetUp();
    State Recover(long error);
    const void* ToFormat(const float* frames, std::size_t count);

    const std::string Named;
    snd_pcm_t* Pcm = nullptr;
    snd_pcm_format_t Format = SND_PCM_FORMAT_FLOAT;
    std::vector<std::int16_t> Short;
    std::vector<std::int32_t> Long;
};

}  // namespace ZorvicRender
