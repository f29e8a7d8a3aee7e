#pragma once

namespace ZorvicUnit {

/// Names of the decoders that may be opened, as the library takes them. Of the several hundred that it has, most are
/// for games and cameras of long ago and are looked after by nobody.
const char* TrustedDecoders();

}  // namespace ZorvicUnit
