#include "files/names.h"

#include "utf8.h"

#include <algorithm>
#include <array>
#include <cctype>

namespace ZorvicUnit {

namespace {

constexpr std::array Extensions = {"3gp", "aac",  "ac3",  "aif",  "aiff", "asf", "avi", "avif", "bmp",  "caf",  "dng",
                                   "dpx", "dv",   "exr",  "f4v",  "flac", "flv", "gif", "gxf",  "h264", "heic", "hevc",
                                   "jp2", "jpeg", "jpg",  "jxl",  "m2ts", "m2v", "m4a", "m4v",  "mj2",  "mka",  "mkv",
                                   "mov", "mp2",  "mp3",  "mp4",  "mpeg", "mpg", "mts", "mxf",  "nut",  "oga",  "ogg",
                                   "ogv", "opus", "png",  "psd",  "qt",   "svg", "tga", "tif",  "tiff", "ts",   "vob",
                                   "w64", "wav",  "webm", "webp", "wma",  "wmv", "y4m"};

bool IsControl(char character) {
    const auto byte = static_cast<unsigned char>(character);
    return byte < 0x20 || byte == 0x7F;
}

}  // namespace

const char* NameProblem(std::string_view name) {
    if (!IsUtf8(name)) return "its name is not valid UTF-8";
    if (std::any_of(name.begin(), name.end(), IsControl)) return "its name holds a control character";
    if (name.find('\\') != std::string_view::npos) return "its name holds a backslash";
    return nullptr;
}

bool IsHidden(std::string_view name) {
    return name.starts_with('.');
}

bool HasMediaExtension(std::string_view name) {
    const std::size_t dot = name.rfind('.');
    if (dot == std::string_view::npos) return false;
    std::string extension(name.substr(dot + 1));
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](unsigned char letter) { return static_cast<char>(std::tolower(letter)); });
    return std::find(Extensions.begin(), Extensions.end(), extension) != Extensions.end();
}

std::string ForLog(std::string_view bytes) {
    std::string text(bytes);
    const bool readable = IsUtf8(bytes);
    for (char& character : text)
        if (IsControl(character) || (!readable && static_cast<unsigned char>(character) >= 0x80)) character = '?';
    return text;
}

}  // namespace ZorvicUnit
