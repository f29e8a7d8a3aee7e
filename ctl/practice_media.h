#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace ZorvicCtl {

/// Makes a few clips with picture and sound in the directory, where they are not there yet. Throws Failure when it
/// cannot.
void MakePracticeMedia(const std::filesystem::path& directory);

/// Runs a program that is looked for in PATH, with the output of both kinds added to a file, and waits; its exit
/// status.
int RunToEnd(const std::vector<std::string>& arguments, const std::filesystem::path& log);

}  // namespace ZorvicCtl
