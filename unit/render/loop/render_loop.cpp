#include "render/loop/render_loop.h"

#include "render/refresh.h"

#include <unistd.h>
#include <algorithm>
#include <fstream>
#include <thread>

namespace ZorvicRender {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

namespace {

constexpr Nanoseconds BeatPeriod = milliseconds(200);
constexpr Nanoseconds PreviewPeriod = milliseconds(200);
constexpr Nanoseconds IdlePeriod = milliseconds(100);

std::uint64_t ResidentBytes() {
    std::ifstream file("/proc/self/statm");
    std::uint64_t size = 0;
    std::uint64_t resident = 0;
    file >> size >> resident;
    return resident * static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
}

std::uint32_t ToMilliseconds(Nanoseconds time) {
    return static_cast<std::uint32_t>(std::chrono::duration_cast<milliseconds>(time).count());
}

Stage::TroubleReport TroubleTo(Wire& unit) {
    return [&unit](const std::string& text) {
        zorvic::render::FromRenderer message;
        message.mutable_trouble()->set_text(text);
        unit.Send(std::move(message));
    };
}

std::string ToRgb(const std::vector<std::uint8_t>& rgba) {
    std::string rgb;
    rgb.reserve(rgba.size() / 4 * 3);
    for (std::size_t i = 0; i < rgba.size(); i += 4)
        rgb.append({static_cast<char>(rgba[i]), static_cast<char>(rgba[i + 1]), static_cast<char>(rgba[i + 2])});
    return rgb;
}

}  // namespace

RenderLoop::RenderLoop(const zorvic::render::Setup& setup, Wire& unit)
    : Unit(unit),
      Tick(RefreshPeriod(setup)),
      Lead(Tick / 4),
      Targets(OpenSurfaces(setup)),
      Outputs([&setup] {
          std::vector<Output> outputs;
          for (const auto& output : setup.outputs())
              outputs.push_back({.Number = output.number(),
                                 .Shape = {static_cast<int>(output.width()), static_cast<int>(output.height())}});
          return outputs;
      }()),
      Pictures(StageOutputs(), TroubleTo(unit)) {
    if (!Outputs.empty()) Painter.emplace();
}

std::vector<StageOutput> RenderLoop::StageOutputs() const {
    std::vector<StageOutput> outputs;
    for (const Output& output : Outputs)
        outputs.push_back({output.Number, output.Shape, Targets->At(outputs.size()).Size()});
    return outputs;
}

TimePoint RenderLoop::NextTick(TimePoint after) const {
    return TimePoint((after.time_since_epoch() / Tick + 1) * Tick);
}

void RenderLoop::Run(const SoundIsReady& soundIsReady, const SoundFigures& soundFigures) {
    TimePoint lightUp = NextTick(steady_clock::now());
    while (!Unit.UnitIsGone()) {
        // What lights up stands until the next refresh: right in the middle is least wrong all over.
        const TimePoint middle = lightUp + Tick / 2;
        const auto scene = AwaitScene(lightUp - std::max(Tick / 2, Lead), middle);
        Pictures.Follow(*scene, middle, Tick);
        ShowAll(lightUp);
        Report(*scene, lightUp, soundIsReady, soundFigures);
        if (!Pictures.IsBusy()) Unit.WaitForNewer(scene, steady_clock::now() + IdlePeriod);
        lightUp = std::max(lightUp + Tick, NextTick(steady_clock::now()));
    }
}

// The scene of this time: late enough to take a command along, early enough to draw it. Readers set off as soon as a
// command comes.
std::shared_ptr<const Scene> RenderLoop::AwaitScene(TimePoint until, TimePoint middle) {
    auto scene = Unit.Latest();
    while (steady_clock::now() < until && !Unit.UnitIsGone()) {
        Unit.WaitForNewer(scene, until);
        if (scene == Unit.Latest()) continue;
        scene = Unit.Latest();
        Pictures.Prepare(*scene, middle, Tick);
    }
    return scene;
}

// One after the other, around the moment of lighting up, however long drawing takes here.
void RenderLoop::ShowAll(TimePoint lightUp) {
    std::this_thread::sleep_until(lightUp - Lead);
    Nanoseconds late{0};
    int shown = 0;
    for (std::size_t i = 0; i < Outputs.size(); ++i) {
        const auto lit = Show(i, lightUp);
        if (!lit) continue;
        late += *lit - lightUp;
        ++shown;
    }
    // Sends what the windowing library still holds back.
    Targets->PumpEvents();
    if (shown == 0) return;
    const Nanoseconds step = std::clamp(late / shown, -Tick / 4, Tick / 4) / 16;
    Lead = std::clamp(Lead + step, Nanoseconds(0), Tick * 3 / 4);
}

// When it lit up; nothing when its picture stands already.
std::optional<TimePoint> RenderLoop::Show(std::size_t number, TimePoint lightUp) {
    Output& output = Outputs[number];
    OutputSurface& target = Targets->At(number);
    const DrawList& list = Pictures.Shown(number);
    const bool exposed = target.TakeExposed();
    if (!exposed && SamePicture(output.Shown, list)) return std::nullopt;
    const PixelSize size = target.Size();
    const Area place = FitShape(output.Shape, size);
    Pictures.SetTarget(number, {static_cast<int>(place.Width), static_cast<int>(place.Height)});
    target.Bind();
    Painter->Draw(list, size, place);
    target.Present();
    const TimePoint lit = steady_clock::now();
    Pictures.NoteShown(number, std::max(lightUp, lit));
    output.Shown = list;
    ++output.Presented;
    if (lit > lightUp + Tick / 2) ++output.Late;
    return lit;
}

void RenderLoop::Report(const Scene& scene, TimePoint lightUp, const SoundIsReady& soundIsReady,
                        const SoundFigures& soundFigures) {
    SendFirstFrames(scene, lightUp, soundIsReady);
    SendRunFigures(lightUp);
    if (lightUp - LastBeat >= BeatPeriod) {
        LastBeat = lightUp;
        SendBeat(soundFigures);
        if (Painter) Painter->DropUnused();
    }
    if (Unit.PreviewWanted() && lightUp - LastPreview >= PreviewPeriod) {
        LastPreview = lightUp;
        SendPreview(lightUp);
    }
}

void RenderLoop::SendFirstFrames(const Scene& scene, TimePoint lightUp, const SoundIsReady& soundIsReady) {
    std::vector<std::pair<RunId, Nanoseconds>> ready;
    for (const auto& [layer, position] : Pictures.ReadyRuns(scene, lightUp)) {
        if (soundIsReady(*layer, position)) ready.emplace_back(layer->Id, position);
    }
    if (ReadySent && ready == Ready) return;
    ReadySent = true;
    Ready = ready;
    zorvic::render::FromRenderer message;
    for (const auto& [id, position] : ready) {
        auto& run = *message.mutable_first_frames()->add_runs();
        run.set_pk(id.PK);
        run.set_run(id.Number);
        run.set_position(position.count());
    }
    message.mutable_first_frames();
    Unit.Send(std::move(message));
}

void RenderLoop::SendRunFigures(TimePoint lightUp) {
    const auto runs = Pictures.TakeRunFigures(lightUp);
    if (runs.empty()) return;
    zorvic::render::FromRenderer message;
    for (const RunFigures& run : runs) {
        auto& figures = *message.mutable_runs()->add_runs();
        figures.set_pk(run.Id.PK);
        figures.set_run(run.Id.Number);
        figures.set_pictures(run.Pictures);
        figures.set_dropped(run.Dropped);
        figures.set_over(run.Over);
        for (const auto& [output, at] : run.Lit) {
            auto& lit = *figures.add_lit();
            lit.set_output(output);
            lit.set_at(at.time_since_epoch().count());
        }
    }
    Unit.Send(std::move(message));
}

void RenderLoop::SendBeat(const SoundFigures& soundFigures) {
    zorvic::render::FromRenderer message;
    auto& beat = *message.mutable_beat();
    for (const Output& output : Outputs) {
        auto& figures = *beat.add_outputs();
        figures.set_number(output.Number);
        figures.set_shown(output.Presented);
        figures.set_late(output.Late);
        figures.set_dropped(Pictures.Counted().Dropped);
        figures.set_repeated(Pictures.Counted().Repeated);
        figures.set_first_frame_ms(ToMilliseconds(Pictures.Counted().FirstPicture));
        figures.set_seek_ms(ToMilliseconds(Pictures.Counted().Seek));
    }
    *beat.mutable_audio() = soundFigures();
    beat.set_memory(ResidentBytes());
    Unit.SendIfRoom(std::move(message));
}

void RenderLoop::SendPreview(TimePoint lightUp) {
    for (std::size_t i = 0; i < Outputs.size(); ++i) {
        const Output& output = Outputs[i];
        const PixelSize size = PreviewSize(output.Shape);
        if (!Small || Small->Size() != size) Small.emplace(size);
        Small->Bind();
        Painter->Draw(output.Shown, size, {0, 0, static_cast<double>(size.Width), static_cast<double>(size.Height)});
        zorvic::render::FromRenderer message;
        auto& preview = *message.mutable_preview();
        preview.set_output(output.Number);
        preview.set_width(static_cast<std::uint32_t>(size.Width));
        preview.set_height(static_cast<std::uint32_t>(size.Height));
        preview.set_signal(!output.Shown.empty());
        preview.set_at(lightUp.time_since_epoch().count());
        preview.set_rgb(ToRgb(Small->Read()));
        Unit.SendPicture(std::move(message));
    }
}

}  // namespace ZorvicRender
