#pragma once

#include "door/allowance.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <optional>

namespace ZorvicUnit {

/// Streams that one connection may have open at a time. A console needs two.
constexpr int MaxStreams = 8;
/// The largest request is an update with the largest preset.
constexpr std::size_t MaxRequestBytes = 1024UL * 1024;

/// What one connection has carried since it began.
struct Traffic {
    std::uint64_t BytesReceived = 0;
    std::uint64_t Started = 0;    ///< streams
    std::uint64_t Succeeded = 0;  ///< streams that got their answer
    std::uint64_t Failed = 0;     ///< streams that the other side gave up
    std::uint64_t MessagesSent = 0;

    std::uint64_t Open() const { return Started - Succeeded - Failed; }
};

/// Tells a connection that behaves like no console from the others. The limits of the RPC library bound what is under
/// way at a time; a stream that is given up counts no more for them, but costs all the same until its turn has come.
class Conduct {
public:
    using TimePoint = Allowance::TimePoint;
    /// Streams given up: those of a console are listings of slow drives, seven a second.
    static constexpr double GivenUpPerSecond = 20;
    static constexpr double MostGivenUp = 200;
    static constexpr double MostGivenUpInDisgrace = 20;
    /// Bytes beside those of requests that were answered.
    static constexpr double BytesPerSecond = 64.0 * 1024;
    static constexpr double MostBytes = (MaxStreams + 2.0) * MaxRequestBytes;
    /// A stream that is open without a word from the unit waits for the rest of its request.
    static constexpr std::chrono::seconds MostSilence{30};

    /// A connection from a host of which others have been closed lately gets less to begin with.
    explicit Conduct(bool inDisgrace = false)
        : GivenUp(GivenUpPerSecond, inDisgrace ? MostGivenUpInDisgrace : MostGivenUp) {}

    /// Why the connection must end; null when it may go on.
    const char* Judge(const Traffic& traffic, TimePoint now);
    /// Whether it has a request open that the unit goes on answering, as consoles have.
    bool Listens(TimePoint now) const { return Last.Open() > 0 && LastHeard && now - *LastHeard < LongestUnheard; }

private:
    static constexpr std::chrono::seconds LongestUnheard{5};

    Allowance GivenUp;
    Allowance Bytes{BytesPerSecond, MostBytes};
    Traffic Last;
    TimePoint LastWord;
    std::optional<TimePoint> LastHeard;  ///< the unit said more than answers that end a request
};

}  // namespace ZorvicUnit
