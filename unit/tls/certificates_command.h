#pragma once

namespace ZorvicUnit {

/// "zorvic-unit certificates DIR": makes what encrypted links need. Takes the program's whole command line; gives the
/// status to exit with: 0 done, 1 failed, 2 a bad option, named on the standard error stream.
int RunCertificates(int argc, const char* const* argv);

}  // namespace ZorvicUnit
