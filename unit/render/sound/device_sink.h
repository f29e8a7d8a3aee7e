#pragma once

#include "clock.h"
#include "render/sound/drift_control.h"
#include "render/sound/drift_resampler.h"
#include "render/sound/pcm_device.h"
#include "render/sound/samples.h"
#include "render/sound/sink.h"

#include <array>
#include <memory>

namespace ZorvicRender {

/// Plays on a device so that every sample sounds at its time, whatever the device's own clock does. A device that is
/// lost is reported once and tried again every second; meanwhile the mix goes on unheard.
class DeviceSink final : public Sink {
public:
    /// Throws Fault when the device cannot be opened.
    DeviceSink(std::unique_ptr<PcmDevice> device, const ZorvicUnit::Clock& clock);

    void Turn(const Mix& mix) override;
    SinkFigures Figures() const override { return Seen; }

private:
    using Block = std::array<float, std::size_t{BlockFrames} * Channels>;

    bool Begin();
    bool Note(PcmDevice::State state);
    void Lose(const std::string& why);
    void TurnUnheard(const Mix& mix);
    void TryAgain();
    std::optional<double> ErrorNow();
    void Feed(const Mix& mix, const DriftControl::Steering& steering);
    void Pull(const Mix& mix, Block& block);
    void LeapForward(const Mix& mix, std::int64_t frames, Block& block);
    void Pause(const Mix& mix, std::int64_t frames, double speed);
    void Send(const Block& block, int frames, double speed);

    const std::unique_ptr<PcmDevice> Device;
    const ZorvicUnit::Clock& Time;
    DriftControl Drift;
    DriftResampler Converter;
    SinkFigures Seen;
    std::int64_t Next = 0;  ///< the output sample that is mixed next
    TimePoint Asked;        ///< when the error was last looked at
    TimePoint RetryAt;
    bool Lost = false;
    bool Playing = false;
    bool FadeIn = false;  ///< the next block follows silence
};

}  // namespace ZorvicRender
