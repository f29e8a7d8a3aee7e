#include "failure.h"
#include "log_time.h"
#include "printing.h"
#include "program.h"
#include "unit_address.h"

#include <zorvic/asrun.h>

#include <chrono>
#include <string>
#include <vector>

namespace ZorvicCtl {
namespace {

using Zorvic::AsRunEntry;

std::vector<AsRunEntry> Read(const Arguments& typed) {
    const std::string host = FindUnit(typed.Unit);
    Zorvic::AsRunSheet::Range range{.Since = {}, .Limit = static_cast<std::uint32_t>(typed.Newest)};
    if (!typed.Since.empty()) range.Since = ParseSince(typed.Since, std::chrono::system_clock::now());
    std::vector<AsRunEntry> entries;
    std::string problem;
    const auto status = Zorvic::ReadAsRun(host, range, entries, problem);
    if (status == Zorvic::ZORVIC_STATUS_OK) return entries;
    if (status == Zorvic::ZORVIC_STATUS_NETWORKERROR)
        throw Failure(ExitStatus::NotReachable, "No as-run sheet from " + host + ": " + OneLine(problem) + '.');
    throw Failure(ExitStatus::Refused, "The unit refused to show its as-run sheet: " + OneLine(problem) + '.');
}

void PrintTable(const std::vector<AsRunEntry>& entries) {
    Table table({"TIME (UTC)", "WHAT", "PRESET", "REMAINING MS", "ASKED BY", "SHOWN", "DETAILS"});
    for (const auto& entry : entries) {
        const std::string asker = entry.Client.empty() ? entry.Address : entry.Client + ", " + entry.Address;
        const std::string from = entry.From ? "from " + Zorvic::AsRunTimeText(*entry.From) + ": " : "";
        table.Add({Zorvic::AsRunTimeText(entry.Wall), Zorvic::AsRunKindText(entry.Kind),
                   entry.PK == 0 ? "" : std::to_string(entry.PK) + " " + OneLine(entry.Preset),
                   entry.RemainingMS ? std::to_string(*entry.RemainingMS) : "", OneLine(asker),
                   Zorvic::AsRunShownText(entry), from + OneLine(entry.Text)});
    }
    table.Print("Nothing is in the unit's as-run sheet.");
}

void Log(const Arguments& typed) {
    if (typed.Json && typed.Csv) throw Failure(ExitStatus::Usage, "Give --json or --csv, not both.");
    const auto entries = Read(typed);
    if (!typed.Json && !typed.Csv) return PrintTable(entries);
    if (typed.Csv) PrintLine(Zorvic::AsRunCSVHeader() + '\r');
    for (const auto& entry : entries)
        PrintLine(typed.Csv ? Zorvic::AsRunCSV(entry) + '\r' : Zorvic::AsRunJSON(entry));
}

}  // namespace

void AddLogCommand(CommandLine& line) {
    line.Add("log", "What happened on the unit, by whom, and what the outputs showed of it", Log)
        .Text("--since", line.Values().Since,
              "From then on: 30m, 6h or 2d ago, 19:30 today, 2026-03-01, or \"2026-03-01 19:30\"")
        .Count("--newest", line.Values().Newest, "The newest so many entries; all unless given", 10'000'000)
        .Flag("--csv", line.Values().Csv, "Print for spreadsheets");
}

}  // namespace ZorvicCtl
