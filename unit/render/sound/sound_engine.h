#pragma once

#include "render/scene.h"
#include "render/sound/mixer.h"
#include "render/sound/sink.h"

#include <render.pb.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

namespace ZorvicRender {

/// What is known of the sound since it began.
struct SoundFigures {
    std::uint64_t Underruns = 0;
    std::int32_t OffsetUS = 0;  ///< sound against the clock, positive: late
};

/// Plays the sound of scenes in a thread of its own. Calls come from any thread.
class SoundEngine {
public:
    /// As the unit chose it. The option for sound is "off" (null comes back), "default", "alsa:DEVICE",
    /// "file:PATH.wav". Throws Fault: Misused for any other text, NotFound or Refused when it cannot be opened; the
    /// text names the option.
    static std::unique_ptr<SoundEngine> Open(const zorvic::render::Setup& setup);

    explicit SoundEngine(std::unique_ptr<Sink> sink);
    ~SoundEngine();
    SoundEngine(const SoundEngine&) = delete;
    SoundEngine& operator=(const SoundEngine&) = delete;

    void SetScene(std::shared_ptr<const Scene> scene);
    /// The layer's sound can begin at the position of its first span, or has begun. Only of layers of the last scene.
    bool Ready(const Layer& layer, Nanoseconds position) const { return Sound.Ready(layer, position); }
    SoundFigures Figures() const;

private:
    void Run();
    std::shared_ptr<const Scene> CurrentScene() const;

    Mixer Sound;
    const std::unique_ptr<Sink> Output;
    mutable std::mutex Lock;  ///< guards Current and Seen
    std::shared_ptr<const Scene> Current = std::make_shared<Scene>();
    SinkFigures Seen;
    std::atomic<bool> Stop = false;
    std::thread Thread;
};

}  // namespace ZorvicRender
