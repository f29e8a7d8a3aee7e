#include "media/service.h"

#include <sys/socket.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <exception>

int main() {
    int type = 0;
    socklen_t size = sizeof type;
    if (getsockopt(STDIN_FILENO, SOL_SOCKET, SO_TYPE, &type, &size) != 0) {
        std::fputs("zorvic-media reads media files for zorvic-unit, which starts it\n", stderr);
        return 2;
    }
    try {
        ZorvicUnit::Serve(STDIN_FILENO);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "zorvic-media: %s\n", error.what());
        std::_Exit(EXIT_FAILURE);
    }
    // What libraries do at an ordinary end is not allowed any more, and nobody needs it.
    std::_Exit(EXIT_SUCCESS);
}
