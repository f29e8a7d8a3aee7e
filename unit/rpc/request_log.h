#pragma once

#include "door/allowance.h"

#include <spdlog/common.h>

#include <cstddef>
#include <mutex>
#include <string>
#include <string_view>

namespace ZorvicUnit {

/// Room for the reason of a refusal. Reasons quote requests and travel in a header, percent-encoded, and one that does
/// not fit into what its receiver takes would cost it the link.
constexpr std::size_t MaxReasonBytes = 1024;

/// The text, cut between two characters and marked as cut when it is longer than that.
std::string Cut(std::string_view text, std::size_t most = MaxReasonBytes);

/// The log of what requests come to. Whoever sends them must fill neither a line nor the disk: texts are cut and made
/// printable, and beyond a few lines a second it only counts. Safe to use from several threads.
class RequestLog {
public:
    using TimePoint = Allowance::TimePoint;
    static constexpr double LinesPerSecond = 10;
    static constexpr double MostAtOnce = 100;

    /// What was tried on what, and why it was not done.
    void Write(spdlog::level::level_enum level, std::string_view what, std::string_view why, TimePoint now);

private:
    std::mutex Lock;  ///< guards the rest
    Allowance Lines{LinesPerSecond, MostAtOnce};
    std::size_t LeftOut = 0;
};

}  // namespace ZorvicUnit
