#pragma once

#include "files/descriptor.h"

#include <filesystem>

namespace ZorvicUnit {

/// Opens a regular file for reading. Follows no link on the whole path, so that a path that was resolved and allowed
/// leads nowhere else by now; waits for no pipe. Throws Fault: NotFound, Refused (a link, or no regular file),
/// Internal (cannot be opened now).
Descriptor OpenRegularFile(const std::filesystem::path& file);

}  // namespace ZorvicUnit
