#include "clock_text.h"
#include "failure.h"
#include "printing.h"
#include "program.h"
#include "records_json.h"
#include "unit.h"
#include "words.h"

#include <zorvic/discovery.h>
#include <zorvic/extras.h>

#include <algorithm>
#include <chrono>
#include <map>
#include <thread>

namespace ZorvicCtl {
namespace {

using Zorvic::Preset;
using Zorvic::PresetMark;

void List(const Arguments& typed) {
    Zorvic::GetLANZorvics();
    std::this_thread::sleep_for(std::chrono::duration<double>(typed.Seconds));
    const auto units = Zorvic::GetLANZorvics();
    if (typed.Json) return PrintJson(ToJson(units));
    Table table({"NAME", "ADDRESS", "ROLE", "TYPE", "SOFTWARE", "ID"});
    for (const auto& unit : units)
        table.Add({OneLine(unit.Nickname), unit.IP, RoleText(unit.CurrentRole), TypeText(unit.Type),
                   OneLine(unit.CommunicatorVersion), OneLine(unit.GUID)});
    table.Print("No units were found on this network.");
}

std::string StateText(const Zorvic::PresetState& state) {
    return (state.IsSelected ? "* " : "  ") + (state.IsPlaying ? PlayText(state) : std::string());
}

std::string LinkText(const Preset& preset, const std::vector<Preset>& presets) {
    const auto found =
        std::find_if(presets.begin(), presets.end(), [&](const Preset& other) { return other.PK == preset.Link; });
    return preset.Link <= 0 || found == presets.end() ? "" : std::to_string(found->PK) + " - " + OneLine(found->Name);
}

void ListPresets(const Arguments& typed) {
    Unit unit(typed.Unit);
    const auto presets = unit.Presets();
    std::map<std::int32_t, Zorvic::PresetState> states;
    for (const auto& state : unit.States())
        states[state.PK] = state;
    Json json = Json::array();
    Table table({"#", "  STATE", "NAME", "TIME", "LOOP", "LINK", "NOTES"});
    for (const Preset& preset : presets) {
        const auto& state = states[preset.PK];
        const auto position = unit.PositionOf(preset.PK);
        json.push_back(ToJson(preset, state, position));
        table.Add({std::to_string(preset.PK), StateText(state), OneLine(preset.Name), TimeText(preset, state, position),
                   LoopText(preset.Loop), LinkText(preset, presets), OneLine(preset.Notes)});
    }
    if (typed.Json) return PrintJson(json);
    table.Print("The unit has no presets.");
}

using Marks = std::unordered_map<std::int32_t, PresetMark>;

void AddMarks(Table& table, const Marks& marks, const char* kind, const Preset& preset) {
    const std::map<std::int32_t, PresetMark> sorted(marks.begin(), marks.end());
    for (const auto& [id, mark] : sorted)
        table.Add({kind, std::to_string(id), PositionText(mark.TimeMS, preset), OneLine(mark.Name)});
}

void PrintMarks(const Preset& preset) {
    Table table({"MARK", "ID", "POSITION", "NAME"});
    AddMarks(table, preset.Gotos, "goto", preset);
    AddMarks(table, preset.Countdowns, "countdown", preset);
    table.Print("The preset has no gotos and no countdowns.");
}

void ListMarks(const Arguments& typed) {
    Unit unit(typed.Unit);
    const Preset preset = unit.FindPreset(typed.Preset);
    if (!typed.Json) return PrintMarks(preset);
    const Json all = ToJson(preset);
    PrintJson({{"gotos", all["gotos"]}, {"countdowns", all["countdowns"]}});
}

void PrintCanvas(const Zorvic::CanvasInfo& canvas, const Preset& preset) {
    const std::unique_ptr<std::array<std::uint32_t, 2>> range(preset.GetPlayerRangeForCanvas(canvas.Index));
    std::string where = "no output";
    if (range && range->at(0) == range->at(1)) where = "output " + std::to_string(range->at(0));
    if (range && range->at(0) != range->at(1))
        where = "outputs " + std::to_string(range->at(0)) + " to " + std::to_string(range->at(1));
    const auto& size = canvas.CanvasCfg.Dimensions;
    PrintLine("Canvas    " + std::to_string(size.Width) + "x" + std::to_string(size.Height) + ", " + where);
    for (const auto& asset : canvas.Assets) {
        const auto& at = asset.PinnedCoords;
        PrintLine("  " + asset.FullPath + "  " + std::to_string(at.Width) + "x" + std::to_string(at.Height) + " at " +
                  std::to_string(at.X) + "," + std::to_string(at.Y));
    }
}

void PrintPreset(Unit& unit, const Preset& preset) {
    const auto state = unit.StateOf(preset.PK);
    PrintLine("Preset    " + Title(preset));
    PrintLine("State     " + PlayText(state) + (state.IsSelected ? ", selected" : ""));
    PrintLine("Time      " + TimeText(preset, state, unit.PositionOf(preset.PK)) + " of " +
              TimeText(preset, state, std::nullopt));
    PrintLine("Loop      " + LoopText(preset.Loop) + (preset.FreezeAtEnd ? ", holds the last picture" : ""));
    if (const auto link = LinkText(preset, unit.Presets()); !link.empty()) PrintLine("Link      " + link);
    if (!preset.Notes.empty()) PrintLine("Notes     " + preset.Notes);
    for (const auto& canvas : preset.Canvases)
        PrintCanvas(canvas, preset);
    if (!preset.Gotos.empty() || !preset.Countdowns.empty()) PrintMarks(preset);
}

void Show(const Arguments& typed) {
    Unit unit(typed.Unit);
    const Preset preset = unit.FindPreset(typed.Preset);
    if (!typed.Json) return PrintPreset(unit, preset);
    PrintJson(ToJson(preset, unit.StateOf(preset.PK), unit.PositionOf(preset.PK)));
}

void ListOutputs(const Arguments& typed) {
    Unit unit(typed.Unit);
    Zorvic::UnitFigures figures;
    unit.Check(GetFigures(unit.Link(), figures), "tell how its outputs do");
    if (typed.Json) return PrintJson(ToJson(figures));
    Table table({"OUTPUT", "SHOWN", "DROPPED", "REPEATED", "LATE", "TAKE TO PICTURE", "SEEK TO PICTURE"});
    for (const auto& output : figures.Outputs)
        table.Add({std::to_string(output.Output), std::to_string(output.Shown), std::to_string(output.Dropped),
                   std::to_string(output.Repeated), std::to_string(output.Late),
                   std::to_string(output.FirstPicture.count()) + " ms", std::to_string(output.Seek.count()) + " ms"});
    table.Print("The unit's outputs are off.");
}

}  // namespace

void AddLookCommands(CommandLine& line) {
    line.AddWithoutUnit("list", "Units on this network that answer", List)
        .Seconds("--wait", line.Values().Seconds, "How long to look for them: 2 seconds unless given");
    line.Add("presets", "The unit's presets, as the console lists them; * is selected", ListPresets);
    line.AddWithPreset("show", "All about one preset", Show);
    line.AddWithPreset("marks", "Gotos and countdowns of a preset", ListMarks);
    line.Add("outputs", "How well the unit's outputs have shown what plays", ListOutputs);
}

}  // namespace ZorvicCtl
