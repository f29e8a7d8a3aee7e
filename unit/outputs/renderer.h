#pragma once

#include "asrun/recorder.h"
#include "outputs/renderer_process.h"

#include <render.pb.h>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <future>
#include <map>
#include <mutex>
#include <optional>
#include <set>
#include <stop_token>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

namespace ZorvicUnit {

class Previews;
class UnitModel;

/// Keeps a renderer running and tells it what will play: the thread "zu-render". A renderer that dies or freezes is
/// replaced; the clock takes no notice of it. A file at whose opening two of them died is not opened again.
class Renderer {
public:
    /// The file of this machine behind an asset; empty: none.
    using FileOf = std::function<std::string(const std::string& path)>;
    /// A file that must not be opened again.
    using Condemn = std::function<void(const std::string& path, const std::string& reason)>;

    /// Returns when all outputs are open. The model and the previews must outlive the object. Throws Fault: Misused
    /// when an output or a device that was asked for does not exist, Internal when it can not be opened.
    Renderer(const zorvic::render::Setup& setup, UnitModel& model, Previews& pictures, FileOf fileOf, Condemn condemn,
             Recorder& record = Recorder::None());
    ~Renderer();
    Renderer(const Renderer&) = delete;
    Renderer& operator=(const Renderer&) = delete;

    /// The figures of the latest beat.
    zorvic::render::Beat Figures() const;

private:
    using TimePoint = std::chrono::steady_clock::time_point;
    /// A preset's key, the number of its run, and the asset.
    using Missing = std::tuple<std::int32_t, std::uint64_t, std::string>;

    void Run(const std::stop_token& stop);
    void Fail(const std::string& text);
    bool Begin(RendererProcess& process);
    void Serve(const std::stop_token& stop, RendererProcess& process);
    void Take(zorvic::render::FromRenderer& message);
    void TakeFirstFrames(const zorvic::render::FirstFrames& frames);
    void TakeBeat(const zorvic::render::Beat& beat);
    bool SendOutlook(RendererProcess& process);
    void NameMissing(const zorvic::render::Outlook& outlook);
    void NameTrouble(const std::string& text);
    bool IsFrozen(const RendererProcess& process);
    bool SendWish(RendererProcess& process, bool wanted);
    void Bury(RendererProcess& process);
    std::vector<std::string> CountDeaths();
    void Kick();

    zorvic::render::Setup Setup;
    UnitModel& Model;
    Previews& Pictures;
    Recorder& Record;
    const FileOf HostFile;
    const Condemn CondemnFile;
    std::promise<void> FirstStart;
    // Of the thread only.
    std::string LastFailure;
    std::set<Missing> NamedMissing;
    TimePoint LastLook;
    TimePoint BeatLooked;                      ///< the beat up to which it has looked
    std::chrono::nanoseconds StarvedBefore{};  ///< at that beat

    mutable std::mutex Lock;  ///< guards all below
    std::condition_variable_any Changed;
    bool Kicked = false;
    bool Lost = false;
    TimePoint LastBeat;
    TimePoint LastFigures;
    zorvic::render::Beat Latest;
    std::multiset<std::string> Opening;  ///< once for each reader
    std::map<std::string, int> Deaths;

    std::jthread Thread;
};

}  // namespace ZorvicUnit
