#include "diagnostics.h"

#include <grpc/support/log.h>
#include <pthread.h>

#include <cstdlib>
#include <iostream>
#include <sstream>

namespace Zorvic::Internal {

void Note(std::string_view subject, std::string_view text) {
    static const bool Wanted = std::getenv("ZORVIC_LIBRARY_LOG") != nullptr;
    if (!Wanted) return;
    std::ostringstream line;
    line << "libzorvic: " << subject << ": " << text << '\n';
    std::cerr << line.str() << std::flush;
}

void NoteRpcMessages() {
    static const bool once = [] {
        gpr_set_log_function([](gpr_log_func_args* args) { Note("rpc", args->message); });
        return true;
    }();
    static_cast<void>(once);
}

void NameThread(const char* name) {
    pthread_setname_np(pthread_self(), name);
}

}  // namespace Zorvic::Internal
