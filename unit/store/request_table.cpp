#include "store/request_table.h"

#include "store/database.h"

namespace ZorvicUnit {

std::vector<RequestTable::Request> RequestTable::Load() {
    std::vector<Request> requests;
    auto rows = Rows.Prepare("SELECT key, pk FROM requests ORDER BY number");
    while (rows.Step())
        requests.push_back({static_cast<std::uint64_t>(rows.Integer(0)), static_cast<std::int32_t>(rows.Integer(1))});
    return requests;
}

void RequestTable::Add(const Request& request) {
    if (request.Key == 0) return;
    Rows.Prepare("INSERT OR REPLACE INTO requests(key, pk) VALUES(?, ?)")
        .Bind(static_cast<std::int64_t>(request.Key))
        .Bind(std::int64_t{request.PK})
        .Run();
    Rows.Prepare("DELETE FROM requests WHERE number <= ?").Bind(Rows.LastInsertKey() - MaxRequests).Run();
}

}  // namespace ZorvicUnit
