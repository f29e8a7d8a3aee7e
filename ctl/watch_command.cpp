#include "clock_text.h"
#include "failure.h"
#include "printing.h"
#include "program.h"
#include "unit.h"
#include "words.h"

#include <zorvic/extras.h>

#include <algorithm>
#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <utility>

namespace ZorvicCtl {
namespace {

using Clock = std::chrono::steady_clock;

/// What a line tells of a preset. Another line follows when it differs.
struct Shown {
    std::string Name;
    std::string State;
    std::string Time;
    std::uint32_t Loop = 0;
    bool Selected = false;
    bool operator==(const Shown&) const = default;
};

class Watch {
public:
    Watch(Unit& unit, bool json) : Followed(unit), AsJson(json) {}
    void PrintNews();

private:
    void Print(std::int32_t pk, const Shown& shown, const std::optional<Zorvic::TimeCode>& position) const;

    Unit& Followed;
    const bool AsJson;
    std::map<std::int32_t, Shown> Last;
};

void Watch::PrintNews() {
    std::map<std::int32_t, Zorvic::PresetState> states;
    for (const auto& state : Followed.States())
        states[state.PK] = state;
    std::map<std::int32_t, Shown> now;
    for (const auto& preset : Followed.Presets()) {
        const auto& state = states[preset.PK];
        const auto position = Followed.PositionOf(preset.PK);
        Shown& shown = now[preset.PK];
        shown = {preset.Name, PlayText(state), TimeText(preset, state, position), state.CurrentLoop, state.IsSelected};
        const auto before = Last.find(preset.PK);
        if (before == Last.end() || before->second != shown) Print(preset.PK, shown, position);
    }
    for (const auto& [pk, shown] : Last)
        if (!now.contains(pk)) Print(pk, {shown.Name, "deleted", "", 0, false}, std::nullopt);
    Last = std::move(now);
}

void Watch::Print(std::int32_t pk, const Shown& shown, const std::optional<Zorvic::TimeCode>& position) const {
    if (AsJson)
        return PrintJsonLine({{"pk", pk},
                              {"name", shown.Name},
                              {"state", shown.State},
                              {"selected", shown.Selected},
                              {"current_loop", shown.Loop},
                              {"position_ms", position ? Json(position->Time) : Json()},
                              {"levels", position ? Json(position->VUData) : Json::array()}});
    PrintLine(shown.State + "  " + shown.Time + (shown.Selected ? " * " : "   ") + std::to_string(pk) + "  " +
              shown.Name + (shown.Loop > 1 ? "  (loop " + std::to_string(shown.Loop) + ')' : ""));
}

void Follow(const Arguments& typed) {
    using Seconds = std::chrono::duration<double>;
    constexpr std::chrono::milliseconds Slice(1000);
    Unit unit(typed.Unit);
    Watch watch(unit, typed.Json);
    const auto end = Clock::now() + std::chrono::duration_cast<Clock::duration>(Seconds(typed.Limit));
    while (typed.Limit <= 0 || Clock::now() < end) {
        watch.PrintNews();
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - Clock::now());
        // The second question is the first that is asked after something new has come.
        WaitUntil(
            unit.Link(), [asked = false]() mutable { return std::exchange(asked, true); },
            typed.Limit > 0 ? std::clamp(left, std::chrono::milliseconds(0), Slice) : Slice);
        if (!unit.Link().Connected()) throw Failure(ExitStatus::NotReachable, "The unit does not answer any more.");
    }
}

}  // namespace

void AddWatchCommand(CommandLine& line) {
    line.Add("watch", "Follow what the presets do, a line for each change, until interrupted", Follow)
        .Seconds("--for", line.Values().Limit, "End after so many seconds");
}

}  // namespace ZorvicCtl
