#pragma once

#include <string_view>

namespace ZorvicUnit {

/// True for well-formed UTF-8: shortest form, no surrogates, nothing above U+10FFFF. Other text must not get into a
/// message: its receiver would refuse the whole of it.
bool IsUtf8(std::string_view text);

}  // namespace ZorvicUnit
