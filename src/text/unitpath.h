#pragma once

#include <string>

// Paths on a unit may use slashes or backslashes, whatever system the console runs on.

/// What follows the last separator; the whole text when there is none.
std::string StripPathFromFilename(const std::string& path);

/// What precedes the last separator, without it; empty when there is none.
std::string StripFilenameFromPath(const std::string& path);
