#pragma once

#include <filesystem>
#include <functional>
#include <string>

namespace ZorvicUnit {

/// Looks at the whole store before it is used, and mends it where that is possible. Afterwards it can be opened, and is
/// complete or new; `tell` hears why it was mended. Throws Fault, with the files as they were, when it must not be used
/// as it is.
void MakeFit(const std::filesystem::path& database, const std::function<void(const std::string&)>& tell = {});

}  // namespace ZorvicUnit
