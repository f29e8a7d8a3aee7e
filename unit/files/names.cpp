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

/// In UTF-8.
constexpr char LeadOfC1 = '\xC2';

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
    // The other controls, U+0080 to U+009F: terminals that take eight bits obey them.
    for (auto at = text.find(LeadOfC1); at != std::string::npos; at = text.find(LeadOfC1, at + 1))
        if (at + 1 < text.size() && static_cast<unsigned char>(text[at + 1]) < 0xA0) text.replace(at, 2, "?");
    return text;
}

}  // namespace ZorvicUnit
