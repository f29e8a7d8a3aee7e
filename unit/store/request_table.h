#pragma once

#include <cstdint>
#include <vector>

namespace ZorvicUnit {

class Database;

/// Keys of the requests that made something lately, so that a repetition is known also after a restart.
class RequestTable {
public:
    /// Many times what all consoles can have sent within the minute for which they repeat a request.
    static constexpr std::int64_t MaxRequests = 1'000;

    struct Request {
        std::uint64_t Key = 0;
        std::int32_t PK = 0;  ///< of the preset that it made or marked
    };

    /// The database must outlive the table.
    explicit RequestTable(Database& database) : Rows(database) {}

    /// Oldest first. Throws Fault.
    std::vector<Request> Load();
    /// Call it inside the transaction of what the request makes. Forgets the oldest ones; does nothing for the key 0.
    void Add(const Request& request);

private:
    Database& Rows;
};

}  // namespace ZorvicUnit
