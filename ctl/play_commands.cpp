#include "clock_text.h"
#include "failure.h"
#include "printing.h"
#include "program.h"
#include "unit.h"

#include <zorvic/extras.h>

#include <utility>

namespace ZorvicCtl {
namespace {

using Zorvic::Preset;
using Zorvic::Session;
using Zorvic::StatusCode;

void Report(const Arguments& typed, const char* command, const char* done, const Preset& preset) {
    if (!typed.Json) return PrintLine(std::string(done) + ' ' + Title(preset) + '.');
    PrintJson({{"command", command}, {"pk", preset.PK}, {"name", preset.Name}});
}

/// What a command does to a preset.
using Action = std::function<StatusCode(Session&, const Preset&)>;

Command OnPreset(const char* command, const char* done, Action action) {
    return [=](const Arguments& typed) {
        Unit unit(typed.Unit);
        const Preset preset = unit.FindPreset(typed.Preset);
        unit.Check(action(unit.Link(), preset), std::string(command) + ' ' + Title(preset));
        Report(typed, command, done, preset);
    };
}

// The typed time is what is left to the out point, which is where the console counts from.
void Seek(const Arguments& typed) {
    const auto time = ParseClock(typed.Time);
    if (!time)
        throw Failure(ExitStatus::Usage, '"' + OneLine(typed.Time) + "\" is no time: write 45, 2:30 or 1:02:03.");
    OnPreset("seek", "Moved", [&](Session& session, const Preset& preset) {
        return session.SeekTo(preset.PK, *time + static_cast<std::uint32_t>(preset.OutPosition));
    })(typed);
}

}  // namespace

void AddPlayCommands(CommandLine& line) {
    line.AddWithPreset("take", "Start a preset, resume a paused one, or start a playing one again",
                       OnPreset("take", "Took", [](auto& unit, auto& preset) { return unit.Take(preset.PK); }));
    line.AddWithPreset("pause", "Pause a playing preset", OnPreset("pause", "Paused", [](auto& unit, auto& preset) {
                           return SetPaused(unit, preset.PK, true);
                       }));
    line.AddWithPreset(
        "resume", "Let a paused preset go on",
        OnPreset("resume", "Resumed", [](auto& unit, auto& preset) { return SetPaused(unit, preset.PK, false); }));
    line.AddWithPreset("end", "Stop a preset",
                       OnPreset("end", "Ended", [](auto& unit, auto& preset) { return unit.End(preset.PK); }));
    line.AddWithPreset(
        "select", "Make a preset the selected one",
        OnPreset("select", "Selected", [](auto& unit, auto& preset) { return unit.SelectPreset(preset.PK); }));
    line.AddWithPreset("seek", "Jump within a preset; a stopped one begins there at its next take", Seek)
        .Word("TIME", line.Values().Time, "What is left to play then");
}

}  // namespace ZorvicCtl
