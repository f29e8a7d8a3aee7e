#pragma once

#include <zorvic/v1/unit.pb.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace ZorvicUnit {

class Connection;

/// The as-run sheet in its database. Failures are thrown as Fault.
class SheetTable {
public:
    /// What the sheet knows of itself.
    struct State {
        std::uint64_t Id = 0;      ///< another one for each sheet
        std::uint64_t Number = 0;  ///< the highest that was used
        std::uint64_t Change = 0;
        std::int64_t AliveUS = 0;  ///< wall clock when its unit was last known to run
        bool Open = false;         ///< it has not been closed
    };
    struct Query {
        std::uint64_t After = 0;  ///< change
        std::int64_t SinceUS = 0;
        std::size_t Most = 0;
    };

    /// The schema, as for Connection::Migrate().
    static std::span<const char* const> Steps();

    explicit SheetTable(Connection& database) : Rows(database) {}

    State Load();
    void Save(const State& state);
    /// Takes the place of the entry with its number.
    void Put(const zorvic::v1::AsRunEntry& entry);
    /// In the order of their changes.
    std::vector<zorvic::v1::AsRunEntry> Find(const Query& query);
    /// The change after which the newest `limit` entries since then come; of all of them for 0.
    std::uint64_t ChangeBefore(std::int64_t sinceUS, std::uint32_t limit);

    /// Bytes that entries take.
    std::uint64_t Size();
    void RemoveOldest(std::size_t count);
    void RemoveBefore(std::int64_t wallUS, std::size_t most);

private:
    Connection& Rows;
};

}  // namespace ZorvicUnit
