#include "backup.h"
#include "failure.h"
#include "printing.h"
#include "program.h"
#include "unit.h"
#include "unit_contents.h"
#include "whole_file.h"

#include <zorvic/compare.h>

#include <filesystem>

namespace ZorvicCtl {
namespace {

Backup ReadSide(const std::string& text) {
    if (std::filesystem::is_regular_file(text)) return FromFileText(ReadWholeFile(text), text);
    Unit unit(text);
    return ReadContents(unit);
}

struct Differences {
    std::vector<Zorvic::PresetDifference> Presets;
    std::vector<Zorvic::MediaDifference> Media;
};

Json ToJson(const Differences& differences) {
    Json presets = Json::array();
    for (const auto& preset : differences.Presets) {
        Json fields = Json::array();
        for (const auto& field : preset.Fields)
            fields.push_back({{"field", field.Field}, {"first", field.First}, {"second", field.Second}});
        presets.push_back(
            {{"name", preset.Name}, {"first", preset.FirstPK}, {"second", preset.SecondPK}, {"fields", fields}});
    }
    Json media = Json::array();
    for (const auto& difference : differences.Media)
        media.push_back({{"path", difference.Path}, {"first", difference.InFirst}, {"second", difference.InSecond}});
    return {{"same", presets.empty() && media.empty()}, {"presets", presets}, {"media", media}};
}

std::string WhereText(bool inFirst, bool inSecond) {
    if (inFirst && inSecond) return "other content";
    return inFirst ? "only in the first" : "only in the second";
}

void Print(const Differences& differences) {
    Table table({"PRESET OR MEDIA", "DIFFERENCE", "FIRST", "SECOND"});
    for (const auto& preset : differences.Presets) {
        const bool both = preset.FirstPK != 0 && preset.SecondPK != 0;
        if (!both) table.Add({OneLine(preset.Name), WhereText(preset.FirstPK != 0, preset.SecondPK != 0), "", ""});
        for (const auto& field : preset.Fields)
            table.Add({OneLine(preset.Name), OneLine(field.Field), OneLine(field.First), OneLine(field.Second)});
    }
    for (const auto& media : differences.Media)
        table.Add({OneLine(media.Path), WhereText(media.InFirst, media.InSecond), "", ""});
    table.Print("No differences.");
}

void Diff(const Arguments& typed) {
    const Backup first = ReadSide(typed.Unit);
    const Backup second = ReadSide(typed.File);
    const Differences differences{Zorvic::ComparePresets(first.PlainPresets(), second.PlainPresets()),
                                  Zorvic::CompareMedia(first.Media, second.Media)};
    if (typed.Json)
        PrintJson(ToJson(differences));
    else
        Print(differences);
    if (!differences.Presets.empty() || !differences.Media.empty()) throw Failure(ExitStatus::Refused, {});
}

}  // namespace

void AddDiffCommand(CommandLine& line) {
    line.AddWithoutUnit("diff", "What two units, or files that export wrote, do not have in common; ends with 1 then",
                        Diff)
        .Word("FIRST", line.Values().Unit, "A unit or a file")
        .Word("SECOND", line.Values().File, "Another one");
}

}  // namespace ZorvicCtl
