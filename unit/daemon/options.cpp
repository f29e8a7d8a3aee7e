#include "daemon/options.h"

#include "outputs/output_options.h"
#include "utf8.h"

#include <spdlog/fmt/fmt.h>
#include <zorvic/enums.h>
#include <CLI/CLI.hpp>

#include <arpa/inet.h>

#include <algorithm>
#include <map>
#include <stdexcept>
#include <string_view>

namespace ZorvicUnit {

namespace {

constexpr int BadOption = 2;
constexpr std::size_t MaxNicknameBytes = 256;

using Words = std::map<std::string, std::int32_t>;

const Words& Roles() {
    static const Words words = {{"single", Zorvic::ZORVIC_ROLE_SINGLE},
                                {"primary", Zorvic::ZORVIC_ROLE_PRIMARY},
                                {"mirror", Zorvic::ZORVIC_ROLE_MIRROR}};
    return words;
}

const Words& Types() {
    static const Words words = {{"t4x", Zorvic::ZORVIC_UTYPE_SERVER_T4X},
                                {"m20x", Zorvic::ZORVIC_UTYPE_SERVER_M20X},
                                {"lumen", Zorvic::ZORVIC_UTYPE_LUMEN}};
    return words;
}

const Words& VideoModes() {
    static const Words words = {{"off", Zorvic::ZORVIC_RES_INVALID},
                                {"720p", Zorvic::ZORVIC_RES_720P},
                                {"1080p", Zorvic::ZORVIC_RES_1080P},
                                {"2160p", Zorvic::ZORVIC_RES_2160P},
                                {"1080i", Zorvic::ZORVIC_RES_1080I}};
    return words;
}

const Words& RefreshRates() {
    static const Words words = {{"23.98", Zorvic::ZORVIC_REFRESH_23_98}, {"24", Zorvic::ZORVIC_REFRESH_24},
                                {"25", Zorvic::ZORVIC_REFRESH_25},       {"29.97", Zorvic::ZORVIC_REFRESH_29_97},
                                {"30", Zorvic::ZORVIC_REFRESH_30},       {"50", Zorvic::ZORVIC_REFRESH_50},
                                {"59.94", Zorvic::ZORVIC_REFRESH_59_94}, {"60", Zorvic::ZORVIC_REFRESH_60}};
    return words;
}

// One word out of a table; the others show in the help and in the message.
struct Choice {
    const char* Name;
    const char* Help;
    const Words& Table;
    std::string Word;
    std::int32_t& Target;
};

void AddChoice(CLI::App& app, Choice& choice) {
    app.add_option(choice.Name, choice.Word, choice.Help)->capture_default_str()->check(CLI::IsMember(choice.Table));
}

// Nothing when it is no numeric address.
std::optional<bool> IsLoopback(const std::string& address) {
    in_addr four{};
    if (inet_pton(AF_INET, address.c_str(), &four) == 1) return (ntohl(four.s_addr) >> 24U) == 127U;
    in6_addr six{};
    if (inet_pton(AF_INET6, address.c_str(), &six) == 1) return IN6_IS_ADDR_LOOPBACK(&six) != 0;
    return std::nullopt;
}

void ReadDrives(const std::vector<std::string>& texts, std::vector<DriveRoot>& drives) {
    for (const std::string& text : texts) {
        const bool formed = text.size() > 2 && text[0] >= 'A' && text[0] <= 'Z' && text[1] == '=';
        if (!formed) throw CLI::ValidationError("--drive", "expected LETTER=DIR with a capital letter, got " + text);
        const std::string letter = text.substr(0, 1);
        const bool taken = std::any_of(drives.begin(), drives.end(), [&](const auto& d) { return d.Letter == letter; });
        if (letter == "C" || taken) throw CLI::ValidationError("--drive", "drive " + letter + " is taken");
        drives.push_back({letter, text.substr(2)});
    }
}

void CheckNickname(const std::string& nickname) {
    if (nickname.size() > MaxNicknameBytes || !IsUtf8(nickname))
        throw CLI::ValidationError("--nickname", fmt::format("expected UTF-8 of at most {} bytes", MaxNicknameBytes));
}

void ReadSinks(const std::vector<std::string>& outputs, Options& options) {
    try {
        options.Outputs = ParseOutputs(outputs);
    } catch (const std::invalid_argument& error) {
        throw CLI::ValidationError("--output", error.what());
    }
    try {
        CheckAudio(options.Audio);
    } catch (const std::invalid_argument& error) {
        throw CLI::ValidationError("--audio", error.what());
    }
}

void CheckSecurity(const Options& options, bool insecure) {
    const auto loopback = IsLoopback(options.Listen);
    if (!loopback) throw CLI::ValidationError("--listen", "expected a numeric address, got " + options.Listen);
    if (!options.TlsDirectory.empty() && insecure)
        throw CLI::ValidationError("--insecure", "links are encrypted with --tls-dir: give one of both");
    if (!*loopback && options.TlsDirectory.empty() && !insecure)
        throw CLI::ValidationError("--listen", "connections to " + options.Listen +
                                                   " are not encrypted: give --tls-dir, or demand it with --insecure");
}

}  // namespace

std::optional<ExitStatus> ParseOptions(int argc, const char* const* argv, Options& options) {
    CLI::App app("Zorvic media unit: plays the media files of a directory under the control of consoles.",
                 "zorvic-unit");
    std::vector<std::string> drives;
    std::vector<std::string> outputs;
    bool insecure = false;
    std::uint32_t sheetDays = 400;
    std::uint32_t sheetMB = 256;
    Choice role{"--role", "Role in a group of units", Roles(), "single", options.Role};
    Choice type{"--type", "Type of the unit", Types(), "t4x", options.Type};
    Choice mode{"--video-mode", "Video mode of the outputs", VideoModes(), "1080p", options.VideoMode};
    Choice refresh{"--refresh", "Refresh rate of the outputs", RefreshRates(), "50", options.Refresh};

    app.add_option("--store", options.Store, "Directory of presets and assets")->required()->type_name("DIR");
    app.add_option("--listen", options.Listen, "Numeric address")->type_name("ADDR")->capture_default_str();
    // A later one wins: a reboot adds the port that it was running on.
    app.add_option("--port", options.Port, "TCP port, 0 for any free one")->take_last()->capture_default_str();
    app.add_option("--drive", drives, "A directory shown as a drive (repeatable)")->type_name("LETTER=DIR");
    app.add_option("--nickname", options.Nickname, "Display name, the unit's identifier when empty");
    app.add_option("--announce", options.Announce, "Network interface to be found on")->type_name("IFACE|off");
    app.add_option("--output", outputs, "What an output shows itself on, off unless given (repeatable)")
        ->type_name("N=window[:WxH]|fullscreen[:DISPLAY]|offscreen|off");
    app.add_option("--audio", options.Audio, "Where the sound goes")
        ->type_name("off|default|alsa:DEVICE|file:PATH.wav")
        ->capture_default_str();
    app.add_option("--tls-dir", options.TlsDirectory,
                   "Encrypts links: directory of the unit's certificate, made by \"zorvic-unit certificates\"")
        ->type_name("DIR");
    app.add_option("--as-run-days", sheetDays, "How long the as-run sheet keeps entries; 0 keeps no sheet")
        ->check(CLI::Range(0, 36'500))
        ->capture_default_str();
    app.add_option("--as-run-mb", sheetMB, "How large the as-run sheet grows before the oldest entries go")
        ->check(CLI::Range(1, 100'000))
        ->capture_default_str();
    app.add_flag("--insecure", insecure, "Listen without encryption on other than loopback addresses");
    for (Choice* choice : {&role, &type, &mode, &refresh})
        AddChoice(app, *choice);
    try {
        app.parse(argc, argv);
        ReadDrives(drives, options.Drives);
        ReadSinks(outputs, options);
        CheckNickname(options.Nickname);
        CheckSecurity(options, insecure);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : BadOption;
    }
    for (const Choice* choice : {&role, &type, &mode, &refresh})
        choice->Target = choice->Table.at(choice->Word);
    options.AsRun.Age = std::chrono::hours(24) * sheetDays;
    options.AsRun.Bytes = sheetDays == 0 ? 0 : std::uint64_t{sheetMB} << 20U;
    return std::nullopt;
}

}  // namespace ZorvicUnit
