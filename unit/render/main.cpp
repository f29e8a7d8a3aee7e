#include "fault.h"
#include "log.h"
#include "render/loop/render_loop.h"
#include "render/loop/wire.h"
#include "render/sound/sound_engine.h"
#include "thread_name.h"

#include <spdlog/cfg/env.h>

#include <malloc.h>
#include <sys/prctl.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>

namespace {

// Where the unit leaves this program's end of their socket pair.
constexpr int UnitSocket = 3;

constexpr std::chrono::milliseconds LogLimit(100);

void SendFailure(ZorvicRender::Wire& unit, const std::string& text, bool badValue) {
    zorvic::render::FromRenderer message;
    message.mutable_failure()->set_text(text);
    message.mutable_failure()->set_bad_value(badValue);
    unit.Send(std::move(message));
    unit.Flush();
}

void SendReady(ZorvicRender::Wire& unit) {
    zorvic::render::FromRenderer message;
    message.mutable_ready();
    unit.Send(std::move(message));
}

// Pictures come and go by the megabyte. Left to itself the allocator would soon take them from its heaps, which only
// grow.
void KeepPicturesOutOfHeaps() {
    mallopt(M_MMAP_THRESHOLD, 256 * 1024);
}

zorvic::render::AudioFigures FiguresOf(const ZorvicRender::SoundEngine* sound) {
    zorvic::render::AudioFigures message;
    if (sound == nullptr) return message;
    const auto figures = sound->Figures();
    message.set_underruns(figures.Underruns);
    message.set_offset_us(figures.OffsetUS);
    return message;
}

}  // namespace

// zorvic-render: started by zorvic-unit, ends with it.
int main() {
    ZorvicUnit::StartLog("zorvic-render");
    spdlog::cfg::load_env_levels();
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    KeepPicturesOutOfHeaps();
    // The terminal sends them to the whole group; the unit decides.
    std::signal(SIGINT, SIG_IGN);
    std::signal(SIGTERM, SIG_IGN);
    ZorvicRender::Wire unit{ZorvicUnit::Descriptor(UnitSocket)};
    zorvic::render::Setup setup;
    if (!unit.ReceiveSetup(setup)) {
        std::fputs("zorvic-render is started by zorvic-unit.\n", stderr);
        return EXIT_FAILURE;
    }
    try {
        ZorvicRender::RenderLoop loop(setup, unit);
        const auto sound = ZorvicRender::SoundEngine::Open(setup);
        unit.Begin([&sound](const auto& scene) {
            if (sound) sound->SetScene(scene);
        });
        SendReady(unit);
        loop.Run([&sound](const auto& layer, auto position) { return !sound || sound->Ready(layer, position); },
                 [&sound] { return FiguresOf(sound.get()); });
    } catch (const ZorvicUnit::Fault& fault) {
        SendFailure(unit, fault.what(), fault.Kind == ZorvicUnit::FaultKind::Misused);
        return EXIT_FAILURE;
    }
    ZorvicUnit::FlushLog(LogLimit);
    // Threads that still decode end with the process.
    std::fflush(nullptr);
    std::_Exit(EXIT_SUCCESS);
}
