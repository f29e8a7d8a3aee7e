#include "drives/drive_table.h"

#include "fault.h"
#include "files/names.h"

#include <algorithm>
#include <cctype>

namespace ZorvicUnit {

namespace {

std::string Capital(std::string_view letter) {
    std::string text(letter);
    for (char& character : text)
        character = static_cast<char>(std::toupper(static_cast<unsigned char>(character)));
    return text;
}

std::vector<std::string> SplitNames(std::string_view path) {
    std::vector<std::string> names;
    for (std::size_t at = 0; at < path.size();) {
        const std::size_t end = std::min(path.find('\\', at), path.size());
        const std::string_view name = path.substr(at, end - at);
        at = end + 1;
        if (name.empty()) continue;
        const bool leads = name == "." || name == ".." || name.find('/') != std::string_view::npos;
        if (leads || NameProblem(name) != nullptr)
            throw Fault(FaultKind::Misused, "\"" + ForLog(path) + "\" is not a path on a drive of the unit");
        names.emplace_back(name);
    }
    return names;
}

}  // namespace

const DriveRoot& DriveTable::Find(std::string_view letter) const {
    const auto found = std::find_if(Drives.begin(), Drives.end(),
                                    [capital = Capital(letter)](const auto& drive) { return drive.Letter == capital; });
    if (found == Drives.end()) throw Fault(FaultKind::NotFound, "there is no drive \"" + ForLog(letter) + "\"");
    return *found;
}

DrivePlace DriveTable::Parse(std::string_view path) const {
    if (path.size() < 3 || path[1] != ':' || path[2] != '\\')
        throw Fault(FaultKind::Misused, "\"" + ForLog(path) + "\" is not a path of the unit");
    return Parse(path.substr(0, 1), path.substr(3));
}

DrivePlace DriveTable::Parse(std::string_view letter, std::string_view path) const {
    return {&Find(letter), SplitNames(path)};
}

}  // namespace ZorvicUnit
