#pragma once

#include "asrun/sheet.h"
#include "asrun/visitors.h"
#include "caller.h"
#include "clock.h"
#include "playback/play_event.h"

#include <render.pb.h>
#include <zorvic/asrun.h>
#include <zorvic/v1/unit.pb.h>

#include <cstdint>
#include <map>
#include <mutex>
#include <span>
#include <string>
#include <utility>

namespace ZorvicUnit {

/// Puts what happens on the unit into words for the as-run sheet. Waits for nobody; safe to use from several threads.
class Recorder {
public:
    /// The sheet must outlive the object.
    explicit Recorder(Sheet& sheet) : Pages(sheet) {}
    /// Records nothing.
    static Recorder& None();

    /// What has happened in playback, in its order; `who` asked for those events that were asked for.
    void Played(std::span<const PlayEvent> events, const Asker& who);
    void Edited(const zorvic::v1::Preset& preset, const std::string& how, const Asker& who);
    void Deleted(const zorvic::v1::Preset& preset, const Asker& who);
    /// Anything that concerns no preset.
    void Note(Zorvic::AsRunKind kind, const std::string& text, const Asker& who = {});
    /// A console comes to watch. False when enough was noted of its host: its leaving is not to be noted then.
    bool Comes(const Asker& who);
    /// The same text again within a minute is one fault.
    void Fault(const std::string& text);

    /// From now on outputs show pictures, or none do.
    void SetOutputs(bool any);
    /// A renderer begins in the place of one that is gone: its counts begin anew.
    void RendererBegins();
    void Shown(const zorvic::render::RunReport& report);

private:
    /// A run whose figures are not complete.
    struct OpenRun {
        Clock::TimePoint Taken;
        zorvic::v1::AsRunEntry Entry;
        std::uint64_t DroppedBefore = 0;  ///< by renderers that are gone
    };
    using RunKey = std::pair<std::int32_t, std::uint64_t>;
    static constexpr std::size_t MostOpenRuns = 1'000;

    void Record(const PlayEvent& event, const Asker& who);
    void Begin(const PlayEvent& event, zorvic::v1::AsRunEntry entry);
    bool IsTooSoon(const PlayEvent& event);
    void Take(const zorvic::render::RunFigures& figures);

    Sheet& Pages;
    std::mutex Lock;  ///< guards all below
    bool HasOutputs = false;
    std::map<RunKey, OpenRun> Open;
    std::map<std::int32_t, Clock::TimePoint> Loops;  ///< when the last one of each preset was recorded
    Visitors Coming;
    std::string LastFault;
    Clock::TimePoint LastFaultAt;
};

/// The names of the fields in which two presets differ: "name, gotos".
std::string DifferingFields(const zorvic::v1::Preset& before, const zorvic::v1::Preset& after);

}  // namespace ZorvicUnit
