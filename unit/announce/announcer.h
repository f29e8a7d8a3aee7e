#pragma once

#include <cstdint>
#include <memory>
#include <string>

namespace ZorvicUnit {

/// What a unit tells the network about itself. The texts must be final: a new nickname takes a new Announcer.
struct AnnouncerConfig {
    /// One interface name, "off", or empty: as the environment's ZORVIC_DISCOVERY says, else all.
    std::string Interface;
    std::string Address;     ///< IPv4 address the unit listens on; a loopback address is announced on lo only
    std::uint16_t Port = 0;  ///< the port really listened on, never 0
    std::string GUID;
    std::string Nickname;
    std::int32_t Role = 0;
    std::int32_t Type = 0;
    std::string APIVersion;
    std::string Version;
};

/// Makes the unit findable on the local network (DNS-SD, _zorvic._tcp) from construction to destruction. A failure is
/// logged and harms nothing else: the unit stays reachable by its typed address.
class Announcer {
public:
    /// Returns at once; the work is done on a thread of its own.
    explicit Announcer(const AnnouncerConfig& config);
    /// Says goodbye, so that the unit leaves the lists at once. Takes a few milliseconds.
    ~Announcer();
    Announcer(const Announcer&) = delete;
    Announcer& operator=(const Announcer&) = delete;

private:
    struct Impl;
    std::unique_ptr<Impl> Pimpl;
};

}  // namespace ZorvicUnit
