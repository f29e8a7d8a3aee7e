#pragma once

#include <stdexcept>

namespace Zorvic::Internal {

/// Why a link could not be made or cannot go on. Ends the connection; never leaves the library.
class LinkError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

}  // namespace Zorvic::Internal
