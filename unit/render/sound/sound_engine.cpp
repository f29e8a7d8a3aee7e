#include "render/sound/sound_engine.h"

#include "fault.h"
#include "render/sound/alsa_device.h"
#include "render/sound/device_sink.h"
#include "render/sound/wav_sink.h"
#include "thread_name.h"

#include <pthread.h>
#include <sched.h>

#include <string_view>
#include <utility>

namespace ZorvicRender {

namespace {

constexpr std::string_view FilePrefix = "file:";
constexpr std::string_view DevicePrefix = "alsa:";

std::unique_ptr<Sink> OpenDevice(const std::string& name) {
    static const ZorvicUnit::SteadyClock clock;
    return std::make_unique<DeviceSink>(std::make_unique<AlsaDevice>(name), clock);
}

std::unique_ptr<Sink> OpenSink(const zorvic::render::Setup& setup) {
    const std::string& audio = setup.audio();
    if (audio == "default") return OpenDevice(audio);
    if (audio.starts_with(DevicePrefix) && audio.size() > DevicePrefix.size())
        return OpenDevice(audio.substr(DevicePrefix.size()));
    if (audio.starts_with(FilePrefix) && audio.ends_with(".wav"))
        return std::make_unique<WavSink>(audio.substr(FilePrefix.size()), ToTime(setup.since()), setup.again());
    throw ZorvicUnit::Fault(ZorvicUnit::FaultKind::Misused,
                            "--audio " + audio + ": give off, default, alsa:DEVICE or file:PATH.wav");
}

// Sound that comes late is heard at once. Without the right to it the thread does as well as it can; the threads that
// it starts are ordinary ones.
void AskForPriority() {
    const sched_param priority{.sched_priority = 5};
    pthread_setschedparam(pthread_self(), SCHED_RR | SCHED_RESET_ON_FORK, &priority);
}

}  // namespace

std::unique_ptr<SoundEngine> SoundEngine::Open(const zorvic::render::Setup& setup) {
    if (setup.audio().empty() || setup.audio() == "off") return nullptr;
    return std::make_unique<SoundEngine>(OpenSink(setup));
}

SoundEngine::SoundEngine(std::unique_ptr<Sink> sink) : Output(std::move(sink)), Thread([this] { Run(); }) {}

SoundEngine::~SoundEngine() {
    Stop = true;
    Thread.join();
}

void SoundEngine::SetScene(std::shared_ptr<const Scene> scene) {
    const std::lock_guard guard(Lock);
    Current.swap(scene);
}

std::shared_ptr<const Scene> SoundEngine::CurrentScene() const {
    const std::lock_guard guard(Lock);
    return Current;
}

void SoundEngine::Run() {
    ZorvicUnit::NameThread("zr-sound");
    AskForPriority();
    const Mix mix = [this](std::int64_t first, int frames, float* out) {
        Sound.Mix(*CurrentScene(), first, frames, out);
    };
    while (!Stop) {
        Output->Turn(mix);
        const std::lock_guard guard(Lock);
        Seen = Output->Figures();
    }
}

SoundFigures SoundEngine::Figures() const {
    const std::uint64_t torn = Sound.Underruns();
    const std::lock_guard guard(Lock);
    return {Seen.Underruns + torn, Seen.OffsetUS};
}

}  // namespace ZorvicRender
