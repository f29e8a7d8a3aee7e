#pragma once

#include "support/childprocess.h"

#include <memory>
#include <string>
#include <vector>

/// A virtual display of 1600 x 1000 with a window manager (without one nothing gets the keyboard focus). Programs
/// started while it lives show on it.
class VirtualDisplay {
public:
    VirtualDisplay();

    /// Runs xdotool and returns whether it succeeded; the first line it prints goes to `output`.
    bool Do(std::vector<std::string> arguments, std::string* output = nullptr);
    /// Window id of the visible window with this title, or an empty text.
    std::string Window(const std::string& title);
    /// The pixels of the whole screen, or an empty text.
    std::string Picture();

private:
    TemporaryDirectory Directory;
    ChildProcess Server;
    std::unique_ptr<ChildProcess> Manager;
};
