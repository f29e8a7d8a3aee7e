#include "whole_file.h"

#include "failure.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace ZorvicCtl {
namespace {

[[noreturn]] void Fail(const std::string& what, const std::string& file) {
    throw Failure(ExitStatus::Refused, "Cannot " + what + ' ' + file + ": " + std::strerror(errno) + '.');
}

/// Closed in any case; false with errno when something of it failed.
bool WriteAndClose(int descriptor, const std::string& text) {
    std::size_t done = 0;
    while (done < text.size()) {
        const ssize_t written = write(descriptor, text.data() + done, text.size() - done);
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) break;
        done += static_cast<std::size_t>(written);
    }
    const bool whole = done == text.size() && fsync(descriptor) == 0;
    const int error = errno;
    const bool closed = close(descriptor) == 0;
    if (!whole) errno = error;
    return whole && closed;
}

// After a power cut the directory must not name the old file any more.
void SyncDirectory(const std::filesystem::path& directory) {
    const int descriptor = open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (descriptor < 0) return;
    fsync(descriptor);
    close(descriptor);
}

}  // namespace

std::string ReadWholeFile(const std::string& file) {
    errno = 0;
    std::ifstream stream(file, std::ios::binary);
    std::ostringstream text;
    text << stream.rdbuf();
    if (!stream.is_open() || stream.bad() || std::filesystem::is_directory(file)) Fail("read", file);
    return text.str();
}

void WriteWholeFile(const std::string& file, const std::string& text) {
    std::string part = file + ".XXXXXX";
    const int descriptor = mkostemp(part.data(), O_CLOEXEC);
    if (descriptor < 0) Fail("write", file);
    fchmod(descriptor, 0644);
    if (WriteAndClose(descriptor, text) && std::rename(part.c_str(), file.c_str()) == 0)
        return SyncDirectory(std::filesystem::absolute(file).parent_path());
    const int error = errno;
    unlink(part.c_str());
    errno = error;
    Fail("write", file);
}

}  // namespace ZorvicCtl
