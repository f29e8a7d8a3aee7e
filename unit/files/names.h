#pragma once

#include <string>
#include <string_view>

namespace ZorvicUnit {

/// Why a file of this name cannot be shown to a console; null when it can.
const char* NameProblem(std::string_view name);

/// Hidden by the usual convention: other programs' unfinished copies, folder settings.
bool IsHidden(std::string_view name);

/// Whether the name ends like a media file's. What a file is, only its content tells; this decides what is worth
/// offering before it was read.
bool HasMediaExtension(std::string_view name);

/// The text with everything but printable characters replaced, for log lines.
std::string ForLog(std::string_view bytes);

}  // namespace ZorvicUnit
