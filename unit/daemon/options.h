#pragma once

#include "asrun/sheet_file.h"
#include "files/drive_place.h"

#include <render.pb.h>

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace ZorvicUnit {

/// What the command line says.
struct Options {
    std::filesystem::path Store;
    std::string Listen = "127.0.0.1";  ///< numeric address
    std::uint16_t Port = 9477;         ///< 0: any free one
    std::vector<DriveRoot> Drives;     ///< beside the store
    std::string Nickname;              ///< empty: the unit's identifier
    std::int32_t Role = 0;
    std::int32_t Type = 0;
    std::int32_t VideoMode = 0;
    std::int32_t Refresh = 0;
    std::filesystem::path TlsDirectory;           ///< of certificates; empty: links are not encrypted
    std::string Announce;                         ///< interface or "off"; empty: not given
    std::vector<zorvic::render::Output> Outputs;  ///< those that are not off
    std::string Audio = "off";
    SheetLimits AsRun;
};

/// How parsing ended when there is nothing to run: help asked for (0), or a bad option (2), which has been named on the
/// standard error stream.
using ExitStatus = int;

/// Fills options; gives the status to exit with when the program must not go on.
std::optional<ExitStatus> ParseOptions(int argc, const char* const* argv, Options& options);

}  // namespace ZorvicUnit
