#pragma once

#include <string>

namespace ZorvicCtl {

/// Gives a unit that has no presets one of each of its media, once those are ready: each links to the next, and has two
/// gotos and a countdown. Throws Failure.
void FillWithPresets(const std::string& host);

}  // namespace ZorvicCtl
