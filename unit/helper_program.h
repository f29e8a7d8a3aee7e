#pragma once

#include <filesystem>

namespace ZorvicUnit {

/// Where a program of the unit's own lies: beside the running one, as a build makes them, or where it was installed to,
/// out of the way of a shell.
std::filesystem::path HelperProgram(const char* name);

}  // namespace ZorvicUnit
