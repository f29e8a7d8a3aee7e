#pragma once

#include <string>

namespace ZorvicCtl {

// Both throw Failure that names the file and what is wrong.

std::string ReadWholeFile(const std::string& file);
/// On return the file is on disk; until then, and when it fails, what was there before stays.
void WriteWholeFile(const std::string& file, const std::string& text);

}  // namespace ZorvicCtl
