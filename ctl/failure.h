#pragma once

#include <stdexcept>
#include <string>

namespace ZorvicCtl {

/// What the program ends with, for scripts.
enum class ExitStatus { Done = 0, Refused = 1, Usage = 2, NotReachable = 3 };

/// A command ends here; the text is for whoever typed it.
class Failure : public std::runtime_error {
public:
    Failure(ExitStatus status, const std::string& text) : std::runtime_error(text), Status(status) {}
    const ExitStatus Status;
};

}  // namespace ZorvicCtl
