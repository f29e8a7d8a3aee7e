#pragma once

#include "asrun/sheet_table.h"

#include <zorvic/v1/unit.pb.h>

#include <atomic>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace ZorvicUnit {

class Connection;

struct SheetLimits {
    std::chrono::hours Age{24 * 400};
    std::uint64_t Bytes = std::uint64_t{256} << 20U;  ///< 0: no sheet is kept
};

/// The file of the as-run sheet. A damaged one is set aside, and another begun in its place. Members wait for the disk
/// and for each other. Safe to use from several threads; failures are thrown as Fault.
class SheetFile {
public:
    using Batch = std::vector<zorvic::v1::AsRunEntry>;

    SheetFile(std::filesystem::path file, SheetLimits limits);
    ~SheetFile();

    /// Once it has succeeded, writing and reading can begin. Gives the wall clock at which a unit that has not closed
    /// the sheet was last known to run.
    std::optional<std::int64_t> Open();
    bool IsOpen() const;
    /// Numbers the entries (theirs count from 1 at the start of the unit) and their changes. All of it is written, or
    /// nothing; also that the unit runs now.
    void Write(Batch batch, std::int64_t nowUS);
    void Close(std::int64_t nowUS);

    /// Entries after a change in the order of their changes, with the sheet that they are of. Continues at the
    /// beginning when `sheet` is another one.
    struct Place {
        std::uint64_t Sheet = 0;  ///< 0: at the beginning
        std::uint64_t After = 0;
        std::int64_t SinceUS = 0;
        std::uint32_t Limit = 0;
    };
    Batch Read(Place& place);
    static constexpr std::size_t PageSize = 256;

    /// What became of an earlier sheet, for the new one; empty when there is nothing to tell.
    std::string TakeTrouble();

private:
    void Make();
    void BeginAnew(const std::string& why);
    void SetAside() const;
    void TryWrite(Batch& batch, std::int64_t nowUS);
    void Prune(SheetTable& table, std::int64_t nowUS);

    const std::filesystem::path File;
    const SheetLimits Limits;

    mutable std::mutex Lock;  ///< guards all below; held across reads and writes of the disk
    std::unique_ptr<Connection> Rows;
    SheetTable::State Known;
    std::uint64_t NumberAtStart = 0;
    bool Damaged = false;
    std::string Trouble;
    std::chrono::steady_clock::time_point NextAging;
};

}  // namespace ZorvicUnit
