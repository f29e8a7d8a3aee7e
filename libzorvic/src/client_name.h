#pragma once

#include <string>

namespace Zorvic::Internal {

/// How this program calls itself to units; empty when it has not said so.
std::string ClientName();

}  // namespace Zorvic::Internal
