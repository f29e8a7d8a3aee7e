#pragma once

#include <thread>

namespace ZorvicUnit {

class AssetLink;
class UnitModel;

/// The thread "housekeeper": every two seconds it shows how full the drives are and saves which preset is selected, so
/// that no command has to wait for either. Saves once more when it is stopped. Stopped and joined by the destructor.
class Housekeeper {
public:
    /// Both must outlive the object.
    Housekeeper(UnitModel& model, AssetLink& assets);

private:
    std::jthread Thread;
};

}  // namespace ZorvicUnit
