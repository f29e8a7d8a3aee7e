#include <unistd.h>

// Linked into a test, these take the system's place: what no power cut follows need not wait for the disk.

extern "C" __attribute__((visibility("default"))) int fsync(int /*file*/) {
    return 0;
}

extern "C" __attribute__((visibility("default"))) int fdatasync(int /*file*/) {
    return 0;
}
