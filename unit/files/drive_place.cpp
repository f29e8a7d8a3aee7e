#include "files/drive_place.h"

#include "fault.h"

#include <algorithm>

namespace ZorvicUnit {

std::string DrivePlace::Path() const {
    std::string path = Drive->Letter + ":";
    if (Names.empty()) path += '\\';
    for (const std::string& name : Names)
        path += '\\' + name;
    return path;
}

std::filesystem::path DrivePlace::HostPath() const {
    std::filesystem::path path = Drive->Directory;
    for (const std::string& name : Names)
        path /= name;
    return path;
}

bool DrivePlace::IsBelowAssets() const {
    return !Drive->External && Names.size() > 1 && Names.front() == "Assets";
}

std::filesystem::path ResolveOnDrive(const DrivePlace& place) {
    std::error_code error;
    const auto root = std::filesystem::canonical(place.Drive->Directory, error);
    auto target = error ? root : std::filesystem::canonical(place.HostPath(), error);
    if (error) throw Fault(FaultKind::NotFound, place.Path() + ": " + error.message());
    const auto [end, rest] = std::mismatch(root.begin(), root.end(), target.begin(), target.end());
    if (end != root.end()) throw Fault(FaultKind::Refused, place.Path() + " leads out of its drive");
    return target;
}

bool StaysOnDrive(const DrivePlace& place) {
    try {
        ResolveOnDrive(place);
        return true;
    } catch (const Fault&) {
        return false;
    }
}

}  // namespace ZorvicUnit
