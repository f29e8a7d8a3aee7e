#include "backup.h"

#include "base64.h"
#include "failure.h"
#include "records_json.h"

#include <openssl/evp.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <set>
#include <utility>

namespace ZorvicCtl {
namespace {

constexpr auto Format = "zorvic-backup";
// Goes up when an older program would misread the file; what it may leave out can be added without.
constexpr int Schema = 1;
// Written and compared by functions that call themselves: deeper than any backup, but no danger to the stack.
constexpr int DeepestContent = 64;
constexpr auto UnknownKey = "unknown_fields";

using Zorvic::PresetRecord;

std::string ChecksumOf(const Json& content) {
    const std::string text = content.dump();
    std::array<unsigned char, EVP_MAX_MD_SIZE> digest{};
    std::size_t length = 0;
    if (EVP_Q_digest(nullptr, "SHA256", nullptr, text.data(), text.size(), digest.data(), &length) != 1)
        throw Failure(ExitStatus::Refused, "Checksums cannot be made on this machine.");
    constexpr std::string_view Digits = "0123456789abcdef";
    std::string hex;
    for (const unsigned char byte : std::basic_string_view(digest.data(), length)) {
        hex += Digits[byte >> 4U];
        hex += Digits[byte & 15U];
    }
    return hex;
}

// The JSON library makes an integer of any number, whatever becomes of it.
template <typename Number>
Number WholeNumber(const Json& json) {
    const bool fits = json.is_number_unsigned()
                          ? std::in_range<Number>(json.get<std::uint64_t>())
                          : json.is_number_integer() && std::in_range<Number>(json.get<std::int64_t>());
    if (!fits) throw std::invalid_argument("a whole number in its range");
    return json.get<Number>();
}

Json SettingsJson(const Zorvic::KonaHardwareState& settings) {
    Json resolutions = Json::array();
    std::transform(settings.Resolutions.begin(), settings.Resolutions.end(), std::back_inserter(resolutions),
                   [](auto mode) { return static_cast<int>(mode); });
    return {{"resolutions", resolutions},
            {"refresh_rate", static_cast<int>(settings.RefreshRate)},
            {"hdr_mode", static_cast<int>(settings.HDRMode)},
            {"eotf", static_cast<int>(settings.EOTFSetting)},
            {"audio_config", static_cast<int>(settings.AudioConfig)},
            {"const_lumin", settings.ConstLumin}};
}

Zorvic::KonaHardwareState SettingsFrom(const Json& json) {
    Zorvic::KonaHardwareState settings;
    const auto& resolutions = json.at("resolutions");
    for (std::size_t i = 0; i < std::min(settings.Resolutions.size(), resolutions.size()); ++i)
        settings.Resolutions.at(i) = static_cast<Zorvic::ResolutionMode>(WholeNumber<int>(resolutions.at(i)));
    settings.RefreshRate = static_cast<Zorvic::RefreshMode>(WholeNumber<int>(json.at("refresh_rate")));
    settings.HDRMode = static_cast<Zorvic::HDRMode>(WholeNumber<int>(json.at("hdr_mode")));
    settings.EOTFSetting = static_cast<Zorvic::EOTFMode>(WholeNumber<int>(json.at("eotf")));
    settings.AudioConfig = static_cast<Zorvic::KonaAudioConfig>(WholeNumber<int>(json.at("audio_config")));
    settings.ConstLumin = json.at("const_lumin").get<bool>();
    return settings;
}

Json RecordJson(const PresetRecord& record) {
    Json json = ToJson(record.Known);
    for (const auto& [place, bytes] : record.Unknown)
        json[UnknownKey][place] = ToBase64(bytes);
    return json;
}

PresetRecord RecordFrom(Json json) {
    PresetRecord record;
    if (json.contains(UnknownKey)) {
        for (const auto& [place, bytes] : json.at(UnknownKey).items())
            record.Unknown[place] = FromBase64(bytes.get<std::string>());
        json.erase(UnknownKey);
    }
    if (!Zorvic::PresetFromJson(json.dump(), record.Known)) throw std::invalid_argument("a preset");
    return record;
}

Zorvic::Asset AssetFrom(const Json& json) {
    Zorvic::Asset asset;
    asset.FullPath = json.at("path").get<std::string>();
    asset.Checksum = json.at("checksum").get<std::string>();
    asset.TotalSize = WholeNumber<std::int64_t>(json.at("size"));
    asset.CurrentSize = WholeNumber<std::int64_t>(json.at("present"));
    asset.LastModified = WholeNumber<std::int64_t>(json.at("last_modified"));
    return asset;
}

Json ContentOf(const Backup& backup) {
    Json drives = Json::array();
    Json media = Json::array();
    Json presets = Json::array();
    for (const auto& drive : backup.Drives)
        drives.push_back(ToJson(drive));
    for (const auto& asset : backup.Media)
        media.push_back(ToJson(asset));
    for (const auto& record : backup.Presets)
        presets.push_back(RecordJson(record));
    return {{"unit", ToJson(std::vector{backup.Unit}).front()},
            {"settings", SettingsJson(backup.Settings)},
            {"drives", drives},
            {"media", media},
            {"selected", backup.Selected},
            {"presets", presets}};
}

// Drives are for who reads the file: nothing is ever restored to them.
Backup BackupFrom(const Json& content) {
    Backup backup;
    const Json& unit = content.at("unit");
    backup.Unit.Nickname = unit.at("nickname").get<std::string>();
    backup.Unit.GUID = unit.at("guid").get<std::string>();
    backup.Unit.APIVersion = unit.at("api_version").get<std::string>();
    backup.Settings = SettingsFrom(content.at("settings"));
    backup.Selected = WholeNumber<std::int32_t>(content.at("selected"));
    std::set<std::int32_t> keys;
    for (const Json& asset : content.at("media"))
        backup.Media.push_back(AssetFrom(asset));
    for (const Json& preset : content.at("presets")) {
        backup.Presets.push_back(RecordFrom(preset));
        if (!keys.insert(backup.Presets.back().Known.PK).second)
            throw std::invalid_argument("two presets of one number");
    }
    return backup;
}

[[noreturn]] void Refuse(const std::string& file, const std::string& why) {
    throw Failure(ExitStatus::Refused, file + ' ' + why);
}

Json ReadJson(const std::string& text, const std::string& file) {
    const auto isShallow = [](int depth, Json::parse_event_t, const Json&) { return depth < DeepestContent; };
    const Json json = Json::parse(text, isShallow, false);
    if (json.is_object() && json.value("format", Json()) == Format) return json;
    const bool begins = text.substr(0, 200).find(Format) != std::string::npos;
    Refuse(file, begins ? "is damaged: its end is missing, or something in it was changed."
                        : "is no backup of a Zorvic unit.");
}

}  // namespace

std::vector<Zorvic::Preset> Backup::PlainPresets() const {
    std::vector<Zorvic::Preset> plain;
    std::transform(Presets.begin(), Presets.end(), std::back_inserter(plain),
                   [](const PresetRecord& record) { return record.Known; });
    return plain;
}

std::string ToFileText(const Backup& backup) {
    const Json content = ContentOf(backup);
    const Json file = {{"format", Format},
                       {"schema", Schema},
                       {"written_by", "zorvicctl " ZORVIC_CTL_VERSION},
                       {"sha256", ChecksumOf(content)},
                       {"content", content}};
    return file.dump(2) + '\n';
}

Backup FromFileText(const std::string& text, const std::string& file) {
    const Json json = ReadJson(text, file);
    try {
        if (WholeNumber<int>(json.at("schema")) > Schema)
            Refuse(file, "was written by a newer program (" + json.value("written_by", "unknown") +
                             "). Use that one, this is zorvicctl " ZORVIC_CTL_VERSION ".");
        if (json.at("sha256") != ChecksumOf(json.at("content")))
            Refuse(file, "is damaged: its content is not what its checksum says.");
        return BackupFrom(json.at("content"));
    } catch (const Json::exception& error) {
        Refuse(file, std::string("is damaged: ") + error.what());
    } catch (const std::invalid_argument& error) {
        Refuse(file, std::string("is damaged: it holds what is not ") + error.what() + '.');
    }
}

}  // namespace ZorvicCtl
