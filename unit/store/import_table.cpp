#include "store/import_table.h"

#include "store/database.h"

namespace ZorvicUnit {

std::vector<ImportOrder> ImportTable::Load() {
    std::vector<ImportOrder> orders;
    auto rows = Rows.Prepare(
        "SELECT path, source, size, modified_ns, copy_size, copy_modified_ns, problem FROM imports ORDER BY number");
    while (rows.Step())
        orders.push_back({rows.Text(0),
                          rows.Text(1),
                          {rows.Integer(2), rows.Integer(3)},
                          {rows.Integer(4), rows.Integer(5)},
                          rows.Text(6)});
    return orders;
}

DatabaseLock ImportTable::WaitForTurn(const std::function<bool()>& waits) {
    return Rows.WaitForTurn(waits);
}

void ImportTable::Add(const ImportOrder& order) {
    Rows.Write([&] {
        // What REPLACE takes away no trigger sees.
        Rows.Prepare("DELETE FROM imports WHERE path = ?").Bind(order.Path).Run();
        Rows.Prepare("INSERT INTO imports(path, source, size, modified_ns) VALUES(?, ?, ?, ?)")
            .Bind(order.Path)
            .Bind(order.Source)
            .Bind(order.Stamp.Size)
            .Bind(order.Stamp.ModifiedNS)
            .Run();
    });
}

void ImportTable::SetCopy(const std::string& path, const FileStamp& copy) {
    Rows.Write([&] {
        Rows.Prepare("UPDATE imports SET copy_size = ?, copy_modified_ns = ? WHERE path = ?")
            .Bind(copy.Size)
            .Bind(copy.ModifiedNS)
            .Bind(path)
            .Run();
    });
}

void ImportTable::SetProblem(const std::string& path, const std::string& problem) {
    Rows.Write([&] { Rows.Prepare("UPDATE imports SET problem = ? WHERE path = ?").Bind(problem).Bind(path).Run(); });
}

void ImportTable::Remove(const std::string& path) {
    Rows.Write([&] { Rows.Prepare("DELETE FROM imports WHERE path = ?").Bind(path).Run(); });
}

}  // namespace ZorvicUnit
