#pragma once

#include <string>

namespace ZorvicCtl {

std::string ToBase64(const std::string& bytes);
/// Throws std::invalid_argument for what is none.
std::string FromBase64(const std::string& text);

}  // namespace ZorvicCtl
