#pragma once

#include <render.pb.h>

#include <string>
#include <vector>

namespace ZorvicUnit {

/// What an output shows itself on, as the command line says: "2=window:640x360", "1=fullscreen:0", "3=offscreen". Those
/// that are "off" are left out; of several for one output the last holds. Sizes of the video mode are not set. Throws
/// std::invalid_argument with a text for the operator.
std::vector<zorvic::render::Output> ParseOutputs(const std::vector<std::string>& texts);

/// Throws std::invalid_argument with a text for the operator unless it is "off", "default", "alsa:DEVICE" or
/// "file:PATH.wav".
void CheckAudio(const std::string& text);

}  // namespace ZorvicUnit
