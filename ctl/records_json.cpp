#include "records_json.h"

#include "words.h"

namespace ZorvicCtl {

Json ToJson(const std::vector<Zorvic::LANZorvic>& units) {
    Json json = Json::array();
    for (const auto& unit : units)
        json.push_back({{"nickname", unit.Nickname},
                        {"address", unit.IP},
                        {"role", RoleText(unit.CurrentRole)},
                        {"type", TypeText(unit.Type)},
                        {"software_version", unit.CommunicatorVersion},
                        {"api_version", unit.APIVersion},
                        {"guid", unit.GUID}});
    return json;
}

Json ToJson(const Zorvic::Preset& preset) {
    return Json::parse(Zorvic::PresetToJson(preset));
}

Json ToJson(const Zorvic::Preset& preset, const Zorvic::PresetState& state,
            const std::optional<Zorvic::TimeCode>& position) {
    Json json = ToJson(preset);
    json["state"] = PlayText(state);
    json["selected"] = state.IsSelected;
    json["running_time_ms"] = state.TRT;
    json["current_loop"] = state.CurrentLoop;
    json["position_ms"] = position ? Json(position->Time) : Json();
    return json;
}

Json ToJson(const Zorvic::Asset& asset) {
    return {{"path", asset.FullPath},     {"state", AssetStateText(asset.Status)},
            {"size", asset.TotalSize},    {"present", asset.CurrentSize},
            {"checksum", asset.Checksum}, {"last_modified", asset.LastModified}};
}

Json ToJson(const Zorvic::Drive& drive) {
    return {{"drive", drive.Mountpoint},
            {"total", drive.Total},
            {"used", drive.Used},
            {"free", drive.Free},
            {"external", drive.IsExternal}};
}

Json ToJson(const Zorvic::ExternalAsset& entry) {
    return {{"path", entry.FullPath}, {"directory", entry.IsDirectory}, {"size", entry.FileSize}};
}

Json ToJson(const Zorvic::UnitFigures& figures) {
    Json outputs = Json::array();
    for (const auto& output : figures.Outputs)
        outputs.push_back({{"output", output.Output},
                           {"shown", output.Shown},
                           {"dropped", output.Dropped},
                           {"repeated", output.Repeated},
                           {"late", output.Late},
                           {"take_to_picture_ms", output.FirstPicture.count()},
                           {"seek_to_picture_ms", output.Seek.count()}});
    return {{"outputs", outputs},
            {"sound_underruns", figures.SoundUnderruns},
            {"sound_offset_us", figures.SoundOffset.count()},
            {"memory", figures.Memory}};
}

}  // namespace ZorvicCtl
