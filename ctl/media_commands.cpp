#include "failure.h"
#include "import_progress.h"
#include "printing.h"
#include "program.h"
#include "records_json.h"
#include "unit.h"
#include "words.h"

#include <algorithm>
#include <utility>

namespace ZorvicCtl {
namespace {

using Zorvic::Asset;

void ListAssets(const Arguments& typed) {
    Unit unit(typed.Unit);
    Json json = Json::array();
    Table table({"MEDIA", "STATE", "SIZE", "CHECKSUM"});
    for (const Asset& asset : unit.Assets()) {
        json.push_back(ToJson(asset));
        table.Add({OneLine(asset.FullPath), AssetStateText(asset.Status), SizeText(asset.TotalSize), asset.Checksum});
    }
    if (typed.Json) return PrintJson(json);
    table.Print("The unit has no media.");
}

void ListDrives(const Arguments& typed) {
    Unit unit(typed.Unit);
    std::vector<Zorvic::Drive> drives;
    unit.Check(unit.Link().GetDisks(drives), "list its drives");
    Json json = Json::array();
    Table table({"DRIVE", "SIZE", "FREE", ""});
    for (const auto& drive : drives) {
        json.push_back(ToJson(drive));
        table.Add({drive.Mountpoint, SizeText(drive.Total), SizeText(drive.Free),
                   drive.IsExternal ? "to import from" : "the unit's own"});
    }
    if (typed.Json) return PrintJson(json);
    table.Print("The unit has no drives.");
}

/// "E:\Clips" is the directory Clips of drive E.
std::pair<std::string, std::string> SplitPlace(const std::string& place) {
    const auto colon = place.find(':');
    const auto start = colon == std::string::npos ? std::string::npos : place.find_first_not_of("\\/", colon + 1);
    return {place.substr(0, colon), start == std::string::npos ? "" : place.substr(start)};
}

void ListDirectory(const Arguments& typed) {
    if (typed.Words.empty()) return ListDrives(typed);
    Unit unit(typed.Unit);
    const auto [drive, path] = SplitPlace(typed.Words.front());
    std::vector<Zorvic::ExternalAsset> entries;
    unit.Check(unit.Link().GetDiskAssets(entries, drive, path), "list " + OneLine(typed.Words.front()));
    Json json = Json::array();
    Table table({"FILE", "SIZE"});
    for (const auto& entry : entries) {
        json.push_back(ToJson(entry));
        table.Add({OneLine(entry.FullPath), entry.IsDirectory ? "directory" : SizeText(entry.FileSize)});
    }
    if (typed.Json) return PrintJson(json);
    table.Print("There is no media in it.");
}

/// By path, or by file name where it is the only one.
std::string FindMedia(Unit& unit, const std::string& text) {
    std::vector<std::string> found;
    for (const Asset& asset : unit.Assets()) {
        if (asset.FullPath == text) return text;
        if (FileName(asset.FullPath) == text) found.push_back(asset.FullPath);
    }
    if (found.size() == 1) return found.front();
    if (found.empty()) throw Failure(ExitStatus::Refused, "The unit has no media \"" + OneLine(text) + "\".");
    std::string message = '"' + OneLine(text) + "\" may be any of these:";
    for (const auto& path : found)
        message += "\n  " + OneLine(path);
    throw Failure(ExitStatus::Refused, message + "\nGive the whole path of the one you mean.");
}

void Delete(const Arguments& typed) {
    Unit unit(typed.Unit);
    std::vector<std::string> paths;
    std::transform(typed.Words.begin(), typed.Words.end(), std::back_inserter(paths),
                   [&](const std::string& text) { return FindMedia(unit, text); });
    for (const auto& path : paths) {
        unit.Check(unit.Link().DeleteAsset(path), "delete " + OneLine(path));
        if (!typed.Json) PrintLine("Deleted " + path + '.');
    }
    if (typed.Json) PrintJson({{"command", "delete"}, {"media", paths}});
}

void Import(const Arguments& typed) {
    Unit unit(typed.Unit);
    for (const auto& path : typed.Words)
        unit.Check(unit.Link().InstallAsset(path), "import " + OneLine(path));
    std::vector<std::string> names;
    std::transform(typed.Words.begin(), typed.Words.end(), std::back_inserter(names), FileName);
    const auto imported = AwaitImports(unit, names);
    Json json = Json::array();
    for (const Asset& asset : imported) {
        json.push_back(ToJson(asset));
        if (!typed.Json) PrintLine("Imported " + asset.FullPath + ", " + SizeText(asset.TotalSize) + '.');
    }
    if (typed.Json) PrintJson(json);
}

}  // namespace

void AddMediaCommands(CommandLine& line) {
    auto& words = line.Values().Words;
    line.Add("assets", "The unit's media", ListAssets);
    line.Add("disks", "The unit's drives, or what is in a directory of one", ListDirectory)
        .Words("PLACE", words, "A directory, such as E: or E:\\Clips", 0, 1);
    line.Add("import", "Copy media from a drive of the unit into its store, and wait until they are ready", Import)
        .Words("FILE", words, "Files, such as E:\\Clips\\storm.mov");
    line.Add("delete", "Delete media from the unit", Delete).Words("MEDIA", words, "Paths, or names of files");
}

}  // namespace ZorvicCtl
