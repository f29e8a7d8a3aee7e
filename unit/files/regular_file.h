#pragma once

#include "files/descriptor.h"

#include <filesystem>

namespace ZorvicUnit {

/// Opens a regular file for reading. Follows no link on the whole path, so that a path that was resolved and allowed
/// leads nowhere else by now; waits for no pipe. Throws Fault: NotFound (cannot be opened), Refused (a link, or no
/// regular file).
Descriptor OpenRegularFile(const std::filesystem::path& file);

}  // namespace ZorvicUnit
