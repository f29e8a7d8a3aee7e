#include "helper_program.h"

#include <system_error>

namespace ZorvicUnit {

// Both places are relative to the running program, so that an installation can be moved. Its name is only read, never
// looked up: after an upgrade it may stand for a file that is gone.
std::filesystem::path HelperProgram(const char* name) {
    const auto here = std::filesystem::read_symlink("/proc/self/exe").parent_path();
    std::error_code none;
    if (std::filesystem::exists(here / name, none)) return here / name;
    return (here / ZORVIC_HELPER_DIRECTORY / name).lexically_normal();
}

}  // namespace ZorvicUnit
