#pragma once

#include "playback/outlook.h"

#include <render.pb.h>

#include <functional>
#include <string>

namespace ZorvicUnit {

/// An outlook in the renderer's words. `fileOf` gives the file of this machine behind an asset, empty when it must not
/// be opened.
zorvic::render::Outlook ToMessage(const Outlook& outlook, const std::function<std::string(const std::string&)>& fileOf);

}  // namespace ZorvicUnit
