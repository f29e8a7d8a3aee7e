#include "outputs/renderer.h"

#include "fault.h"
#include "model/unit_model.h"
#include "outputs/outlook_message.h"
#include "outputs/previews.h"
#include "render/refresh.h"
#include "thread_name.h"

#include <spdlog/spdlog.h>

#include <exception>
#include <utility>
#include <vector>

namespace ZorvicUnit {

using std::chrono::milliseconds;
using std::chrono::steady_clock;

namespace {

// Long enough to open a film of the largest kind before it is needed.
constexpr std::chrono::seconds Horizon(4);
constexpr milliseconds OutlookPeriod(1000);
constexpr milliseconds FiguresPeriod(1000);
// Beats come every 200 ms.
constexpr milliseconds FrozenAfter(550);
constexpr milliseconds StartLimit(10'000);
constexpr milliseconds LookPeriod(50);
constexpr milliseconds StarvingShare(100);
constexpr milliseconds StarvedLimit(5000);
constexpr milliseconds RestartPause(1000);
constexpr int DeathsToCondemn = 2;

}  // namespace

Renderer::Renderer(const zorvic::render::Setup& setup, UnitModel& model, Previews& pictures, FileOf fileOf,
                   Condemn condemn, Recorder& record)
    : Setup(setup),
      Model(model),
      Pictures(pictures),
      Record(record),
      HostFile(std::move(fileOf)),
      CondemnFile(std::move(condemn)) {
    Setup.set_since(steady_clock::now().time_since_epoch().count());
    auto started = FirstStart.get_future();
    Thread = std::jthread([this](const std::stop_token& stop) { Run(stop); });
    started.get();
    Model.SetPlayListener([this] { Kick(); });
    Record.SetOutputs(Setup.outputs_size() > 0);
    if (Setup.outputs_size() > 0) Pictures.SetListener([this] { Kick(); });
}

Renderer::~Renderer() {
    Pictures.SetListener({});
    Model.SetPlayListener({});
    Thread.request_stop();
    Thread.join();
}

zorvic::render::Beat Renderer::Figures() const {
    const std::scoped_lock lock(Lock);
    return Latest;
}

// Runs in the lock of whoever calls.
void Renderer::Kick() {
    const std::scoped_lock lock(Lock);
    Kicked = true;
    Changed.notify_all();
}

void Renderer::Run(const std::stop_token& stop) {
    NameThread("zu-render");
    while (!stop.stop_requested()) {
        const auto began = steady_clock::now();
        try {
            RendererProcess process;
            if (Begin(process)) Serve(stop, process);
            if (!stop.stop_requested()) Bury(process);
        } catch (const std::exception& error) {
            if (!Setup.again()) {
                FirstStart.set_exception(std::current_exception());
                return;
            }
            Fail(error.what());
        }
        // What can not be started now may be back later: a display, a device.
        std::unique_lock lock(Lock);
        if (steady_clock::now() - began < RestartPause)
            Changed.wait_for(lock, stop, RestartPause, [] { return false; });
    }
}

// Once for all attempts that end alike.
void Renderer::Fail(const std::string& text) {
    if (std::exchange(LastFailure, text) == text) return;
    spdlog::error("outputs: {}; trying again", text);
    Record.Fault("outputs: " + text);
}

bool Renderer::Begin(RendererProcess& process) {
    {
        const std::scoped_lock lock(Lock);
        Lost = false;
        Kicked = true;
        LastLook = steady_clock::now();
        LastBeat = LastLook + StartLimit;
        Opening.clear();
    }
    zorvic::render::ToRenderer message;
    *message.mutable_setup() = Setup;
    zorvic::render::FromRenderer answer;
    process.Pipe().LimitReceiving(StartLimit);
    if (!process.Pipe().Send(message) || !process.Pipe().Receive(answer))
        throw Fault(FaultKind::Internal, "the renderer does not start: " + process.End().Text);
    process.Pipe().LimitReceiving({});
    if (answer.has_failure())
        throw Fault(answer.failure().bad_value() ? FaultKind::Misused : FaultKind::Internal, answer.failure().text());
    if (!Setup.again()) FirstStart.set_value();
    Setup.set_again(true);
    LastFailure.clear();
    Record.RendererBegins();
    const bool hasOutputs = Setup.outputs_size() > 0;
    Model.HoldColdTakes(true, hasOutputs ? ZorvicRender::RefreshPeriod(Setup) : std::chrono::nanoseconds(0));
    return answer.has_ready();
}

// Returns when the renderer is dead, frozen or no longer needed.
void Renderer::Serve(const std::stop_token& stop, RendererProcess& process) {
    std::jthread receiver([this, &process] {
        NameThread("zu-render-in");
        zorvic::render::FromRenderer message;
        while (process.Pipe().Receive(message))
            Take(message);
        const std::scoped_lock lock(Lock);
        Lost = true;
        Changed.notify_all();
    });
    auto sent = steady_clock::now() - OutlookPeriod;
    bool previewing = false;
    for (;;) {
        {
            std::unique_lock lock(Lock);
            Changed.wait_for(lock, stop, LookPeriod, [this] { return Kicked || Lost; });
            if (stop.stop_requested() || Lost) break;
            if (IsFrozen(process)) {
                spdlog::error("the renderer does not answer");
                Record.Fault("the renderer does not answer");
                break;
            }
            if (!std::exchange(Kicked, false) && steady_clock::now() < sent + OutlookPeriod) continue;
        }
        sent = steady_clock::now();
        if (!SendOutlook(process)) break;
        const bool wanted = Pictures.Wanted();
        if (wanted != std::exchange(previewing, wanted) && !SendWish(process, wanted)) break;
    }
    process.Pipe().Shutdown();
}

// One that is kept from running by other work is late, not frozen: to begin anew would only cost it more. Called with
// Lock held.
bool Renderer::IsFrozen(const RendererProcess& process) {
    const auto now = steady_clock::now();
    // Whoever was stopped itself has not been listening.
    if (now - std::exchange(LastLook, now) > FrozenAfter / 2) LastBeat = std::max(LastBeat, now);
    if (std::exchange(BeatLooked, LastBeat) != LastBeat) StarvedBefore = process.Starved();
    const auto silence = now - LastBeat;
    if (silence < FrozenAfter) return false;
    const bool starved = process.Starved() - StarvedBefore > StarvingShare;
    return !starved || silence > StarvedLimit;
}

bool Renderer::SendOutlook(RendererProcess& process) {
    zorvic::render::ToRenderer message;
    *message.mutable_outlook() = ToMessage(Model.LookAhead(Horizon), HostFile);
    NameMissing(message.outlook());
    return process.Pipe().Send(message);
}

// Once for each run.
void Renderer::NameMissing(const zorvic::render::Outlook& outlook) {
    std::set<Missing> missing;
    for (const auto& layer : outlook.layers()) {
        for (const auto& medium : layer.media()) {
            if (medium.file().empty()) missing.emplace(layer.pk(), layer.run(), medium.path());
        }
    }
    for (const Missing& one : missing) {
        if (!NamedMissing.contains(one)) NameTrouble(std::get<std::string>(one) + " cannot be read");
    }
    NamedMissing = std::move(missing);
}

void Renderer::NameTrouble(const std::string& text) {
    spdlog::warn("not shown: {}", text);
    Record.Fault("not shown: " + text);
}

bool Renderer::SendWish(RendererProcess& process, bool wanted) {
    spdlog::debug("previews are {}wanted", wanted ? "" : "not ");
    zorvic::render::ToRenderer message;
    message.mutable_preview()->set_wanted(wanted);
    return process.Pipe().Send(message);
}

void Renderer::Take(zorvic::render::FromRenderer& message) {
    if (message.has_preview()) Pictures.Put(std::move(*message.mutable_preview()));
    if (message.has_first_frames()) TakeFirstFrames(message.first_frames());
    if (message.has_beat()) TakeBeat(message.beat());
    if (message.has_trouble()) NameTrouble(message.trouble().text());
    if (message.has_runs()) Record.Shown(message.runs());
    if (!message.has_opening()) return;
    const std::scoped_lock lock(Lock);
    if (message.opening().done()) {
        const auto found = Opening.find(message.opening().path());
        if (found != Opening.end()) Opening.erase(found);
    } else {
        Opening.insert(message.opening().path());
    }
}

void Renderer::TakeFirstFrames(const zorvic::render::FirstFrames& frames) {
    std::vector<RunStart> ready;
    for (const auto& run : frames.runs())
        ready.push_back({run.pk(), run.run(), std::chrono::nanoseconds(run.position())});
    Model.SetPrimed(std::move(ready));
}

void Renderer::TakeBeat(const zorvic::render::Beat& beat) {
    const std::scoped_lock lock(Lock);
    LastBeat = steady_clock::now();
    Latest = beat;
    Changed.notify_all();
    if (LastBeat - LastFigures < FiguresPeriod) return;
    LastFigures = LastBeat;
    for (const auto& output : beat.outputs()) {
        spdlog::debug("output {}: {} shown, {} dropped, {} repeated, {} late, first picture {} ms, seek {} ms, {} MB",
                      output.number(), output.shown(), output.dropped(), output.repeated(), output.late(),
                      output.first_frame_ms(), output.seek_ms(), beat.memory() / 1'000'000);
    }
}

void Renderer::Bury(RendererProcess& process) {
    const auto ending = process.End();
    Model.SetPrimed({});
    Model.HoldColdTakes(false);
    spdlog::error("the renderer ended ({}); starting another", ending.Text);
    Record.Fault("the renderer ended (" + ending.Text + ")");
    // Whoever kills it, or keeps it from running, says nothing about the files.
    if (!ending.Crashed) return;
    for (const std::string& path : CountDeaths())
        CondemnFile(path, "the renderer ended twice while opening it");
}

std::vector<std::string> Renderer::CountDeaths() {
    std::vector<std::string> condemned;
    const std::scoped_lock lock(Lock);
    const std::set<std::string> paths(Opening.begin(), Opening.end());
    for (const std::string& path : paths) {
        if (++Deaths[path] < DeathsToCondemn) continue;
        Deaths.erase(path);
        condemned.push_back(path);
    }
    return condemned;
}

}  // namespace ZorvicUnit
