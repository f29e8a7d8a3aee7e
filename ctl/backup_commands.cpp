#include "backup.h"
#include "failure.h"
#include "plan_text.h"
#include "printing.h"
#include "program.h"
#include "restore_plan.h"
#include "unit.h"
#include "unit_contents.h"
#include "whole_file.h"

#include <zorvic/extras.h>

#include <unistd.h>

#include <iostream>

namespace ZorvicCtl {
namespace {

using Zorvic::PresetRecord;

void Export(const Arguments& typed) {
    Unit unit(typed.Unit);
    const Backup backup = ReadContents(unit);
    WriteWholeFile(typed.File, ToFileText(backup));
    if (typed.Json)
        return PrintJson({{"file", typed.File}, {"presets", backup.Presets.size()}, {"media", backup.Media.size()}});
    PrintLine("Wrote " + std::to_string(backup.Presets.size()) + " presets to " + typed.File +
              "; of the media, names and checksums.");
}

/// Gives a unit what a plan says, and knows by then which preset of the backup has which number there.
class Restoration {
public:
    Restoration(Unit& unit, const RestorePlan& plan) : Target(unit), Plan(plan), KeyOf(plan.KeyOf) {}

    /// Throws Failure when the unit refuses one; what was done by then stays. The names of presets that were left alone
    /// because they play by now.
    std::vector<std::string> Apply();

private:
    void Create(const RestorePlan::Step& step);
    void Replace(const RestorePlan::Step& step, std::int32_t pk);
    void ShowNext();
    /// The number of the preset that it links to on the unit; 0 when that is not there, or not yet.
    std::int32_t LinkOf(const PresetRecord& record) const;

    Unit& Target;
    const RestorePlan& Plan;
    std::map<std::int32_t, std::int32_t> KeyOf;
    std::vector<std::string> LeftPlaying;
    std::size_t Begun = 0;
};

/// For who looks on. Interrupted, it leaves what was done, and the next restore does the rest.
void Restoration::ShowNext() {
    ++Begun;
    if (isatty(STDERR_FILENO) == 0) return;
    const std::size_t all = Plan.Create.size() + Plan.Change.size();
    std::cerr << "\rPreset " << Begun << " of " << all << (Begun < all ? "\033[K" : "\033[K\n") << std::flush;
}

std::int32_t Restoration::LinkOf(const PresetRecord& record) const {
    const auto found = KeyOf.find(record.Known.Link);
    return found == KeyOf.end() ? 0 : found->second;
}

void Restoration::Create(const RestorePlan::Step& step) {
    PresetRecord record = step.Wanted;
    record.Known.Link = LinkOf(step.Wanted);
    Target.Check(CreatePreset(Target.Link(), record), "create the preset " + Title(step.Wanted.Known));
    KeyOf[step.Wanted.Known.PK] = Zorvic::LastCreatedPreset(Target.Link());
}

void Restoration::Replace(const RestorePlan::Step& step, std::int32_t pk) {
    if (Target.StateOf(pk).IsPlaying) return LeftPlaying.push_back(step.Wanted.Known.Name);
    PresetRecord record = step.Wanted;
    record.Known.PK = pk;
    record.Known.Link = LinkOf(step.Wanted);
    Target.Check(ReplacePreset(Target.Link(), record), "change the preset " + Title(record.Known));
}

// A preset can be linked to one that comes into being only after it.
std::vector<std::string> Restoration::Apply() {
    std::vector<const RestorePlan::Step*> unlinked;
    for (const auto& step : Plan.Create) {
        ShowNext();
        if (LinkOf(step.Wanted) == 0 && step.Wanted.Known.Link > 0) unlinked.push_back(&step);
        Create(step);
    }
    for (const auto* step : unlinked)
        if (LinkOf(step->Wanted) != 0) Replace(*step, KeyOf.at(step->Wanted.Known.PK));
    for (const auto& step : Plan.Change) {
        ShowNext();
        Replace(step, step.PK);
    }
    return LeftPlaying;
}

void PrintOutcome(const RestorePlan& plan, bool applied) {
    if (plan.ChangesNothing())
        return PrintLine(plan.Playing.empty() ? "There is nothing to do." : "Nothing was changed.");
    PrintLine(applied ? "Done." : "Nothing was changed. With --apply, this is what is done.");
}

void Restore(const Arguments& typed) {
    const Backup wanted = FromFileText(ReadWholeFile(typed.File), typed.File);
    Unit unit(typed.Unit);
    const Backup there = ReadContents(unit);
    const RestorePlan plan = PlanRestore(wanted, there, PlayingPresets(unit));
    if (!typed.Json) PrintPlan(plan, wanted, there);
    std::vector<std::string> left;
    if (typed.Apply) left = Restoration(unit, plan).Apply();
    if (typed.Json)
        PrintJson(ToJson(plan, typed.Apply));
    else
        PrintOutcome(plan, typed.Apply);
    if (!typed.Apply || (left.empty() && plan.Playing.empty())) return;
    throw Failure(ExitStatus::Refused, "Presets that play were left as they are. Restore again when they have ended.");
}

}  // namespace

void AddBackupCommands(CommandLine& line) {
    Arguments& values = line.Values();
    line.Add("export", "Write all that the unit holds, but the media themselves, to a file", Export)
        .Word("FILE", values.File, "The file; one that is there is replaced");
    line.AddWithoutUnit("restore", "Show what it takes to give a unit the presets of a file", Restore)
        .Word("FILE", values.File, "What export wrote")
        .Word("UNIT", values.Unit, "Address or name of the unit")
        .Flag("--apply", values.Apply, "Do it");
}

}  // namespace ZorvicCtl
