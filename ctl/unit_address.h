#pragma once

#include <string>

namespace ZorvicCtl {

/// The host text of the unit that somebody means: an address, a host name, or the nickname or identifier of a unit on
/// this network. Looks for it for some seconds at most. Throws Failure when several units bear the name, or none.
std::string FindUnit(const std::string& text);

}  // namespace ZorvicCtl
