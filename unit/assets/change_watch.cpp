#include "assets/change_watch.h"

#include <poll.h>
#include <spdlog/spdlog.h>
#include <sys/eventfd.h>
#include <sys/inotify.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>

namespace ZorvicUnit {

namespace {

constexpr std::uint32_t Changes = IN_CREATE | IN_DELETE | IN_MODIFY | IN_CLOSE_WRITE | IN_ATTRIB | IN_MOVED_FROM |
                                  IN_MOVED_TO | IN_DELETE_SELF | IN_MOVE_SELF | IN_ONLYDIR;

// The events' content does not matter: the directories are read again.
void Discard(const Descriptor& events) {
    std::array<char, 16384> buffer = {};
    while (read(events.Get(), buffer.data(), buffer.size()) > 0) {
    }
}

}  // namespace

ChangeWatch::ChangeWatch()
    : Notify(inotify_init1(IN_NONBLOCK | IN_CLOEXEC)), Alarm(eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)) {}

void ChangeWatch::Add(const std::filesystem::path& directory) {
    if (Notify.IsOpen() && inotify_add_watch(Notify.Get(), directory.c_str(), Changes) >= 0) return;
    if (errno == ENOENT || errno == ENOTDIR) return;
    if (Complete)
        spdlog::warn("cannot watch {}: {}; looking for changes instead", directory.string(), std::strerror(errno));
    Complete = false;
}

void ChangeWatch::Wait(std::chrono::milliseconds limit) {
    std::array<pollfd, 2> events = {pollfd{Notify.Get(), POLLIN, 0}, pollfd{Alarm.Get(), POLLIN, 0}};
    poll(events.data(), events.size(), static_cast<int>(limit.count()));
    Discard(Alarm);
    Discard(Notify);
}

void ChangeWatch::Pause(std::chrono::milliseconds limit) {
    pollfd event = {Alarm.Get(), POLLIN, 0};
    poll(&event, 1, static_cast<int>(limit.count()));
}

void ChangeWatch::WakeUp() const {
    const std::uint64_t one = 1;
    [[maybe_unused]] const auto written = write(Alarm.Get(), &one, sizeof one);
}

}  // namespace ZorvicUnit
