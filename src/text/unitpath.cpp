#include "text/unitpath.h"

namespace {
constexpr const char* Separators = "/\\";
}

std::string StripPathFromFilename(const std::string& path) {
    const auto separator = path.find_last_of(Separators);
    return separator == std::string::npos ? path : path.substr(separator + 1);
}

std::string StripFilenameFromPath(const std::string& path) {
    const auto separator = path.find_last_of(Separators);
    return separator == std::string::npos ? std::string() : path.substr(0, separator);
}
