#pragma once

#include <thread>

namespace ZorvicUnit {

class AssetStore;
class Database;
class Feed;
class UnitModel;

/// The thread "housekeeper": it saves which preset is selected as soon as that changes, and shows every two seconds how
/// full the drives are, so that no command has to wait for either; when nothing changes, it brings the database's log
/// into its file and makes a copy of that. Saves once more when it is stopped. Stopped and joined by the destructor.
class Housekeeper {
public:
    /// Shows the drives before it returns, which takes up to 120 ms for each that is slow. All must outlive the object.
    Housekeeper(UnitModel& model, const AssetStore& assets, Database& rows, Feed& updates);

private:
    std::jthread Thread;
};

}  // namespace ZorvicUnit
