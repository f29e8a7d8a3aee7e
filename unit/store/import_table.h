#pragma once

#include "files/tree_walk.h"
#include "store/statement.h"

#include <functional>
#include <string>
#include <vector>

namespace ZorvicUnit {

class Database;

/// An order to bring a file into the store. All paths are the unit's.
struct ImportOrder {
    std::string Path;     ///< of the asset
    std::string Source;   ///< on a drive
    FileStamp Stamp;      ///< of the source
    FileStamp Copy;       ///< of the finished copy, just before it takes its place
    std::string Problem;  ///< why it has failed; empty while it has not
};

/// The orders that are not done, or whose failure nobody has dismissed; one for each asset. May be called from several
/// threads. A change is on disk when its call returns; throws Fault.
class ImportTable {
public:
    /// The database must outlive the table.
    explicit ImportTable(Database& database) : Rows(database) {}

    /// In the order in which they were given.
    std::vector<ImportOrder> Load();
    /// Whoever holds it is the only one to write. Fault TooLate when nobody waits any more.
    DatabaseLock WaitForTurn(const std::function<bool()>& waits);
    /// Takes the place of an order for the same asset.
    void Add(const ImportOrder& order);
    void SetCopy(const std::string& path, const FileStamp& copy);
    void SetProblem(const std::string& path, const std::string& problem);
    void Remove(const std::string& path);

private:
    Database& Rows;
};

}  // namespace ZorvicUnit
