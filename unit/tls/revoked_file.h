#pragma once

#include <chrono>
#include <cstdint>
#include <filesystem>
#include <optional>
#include <set>
#include <string>

namespace ZorvicUnit {

/// The list of revoked certificates: their serial numbers, one a line. It may be looked at while somebody writes it:
/// what it adds counts at once, what it no longer holds only when it has stood still for a while, and is whole. A list
/// that is empty, gone or cannot be read takes nothing back, and the log says so. One thread at a time.
class RevokedFile {
public:
    using TimePoint = std::chrono::steady_clock::time_point;
    using Serials = std::set<std::string, std::less<>>;
    static constexpr std::chrono::seconds SettleTime{2};

    /// The file need not be there. Throws Fault Misused when it is and cannot be read.
    explicit RevokedFile(std::filesystem::path file);

    /// Whether the serials have changed.
    bool Look(TimePoint now);
    const Serials& Revoked() const { return Known; }

private:
    /// Tells two contents of the file from each other.
    struct Stamp {
        std::uint64_t Node = 0;
        std::int64_t Size = 0;
        std::int64_t Written = 0;
        std::int64_t Changed = 0;
        bool operator==(const Stamp&) const = default;
    };
    std::optional<Stamp> StampNow() const;
    std::string Read() const;
    bool TakeOver(const std::string& text, bool settled);
    void Tell(const std::string& trouble);

    const std::filesystem::path File;
    Serials Known;
    std::optional<Stamp> Seen;
    TimePoint Since;      ///< it looks as it does
    bool Settled = true;  ///< nothing is left to be read in it
    std::string Told;     ///< the trouble that the log knows
};

}  // namespace ZorvicUnit
