// Paths of the unit, on two drives with links from one to the other, in circles and out of both.

#include "drives/drive_table.h"
#include "fault.h"
#include "files/names.h"
#include "fuzz/fuzz.h"
#include "support/childprocess.h"

#include <algorithm>
#include <fstream>

using namespace ZorvicUnit;

namespace {

/// A directory with two drives in it, and what no drive may lead to.
class Disk {
public:
    Disk() {
        const std::filesystem::path root = Directory.Path();
        for (const char* name : {"c/Assets/a", "e/a", "ec/a"})
            std::filesystem::create_directories(root / name);
        for (const char* name : {"c/Assets/a/b", "e/a/b", "ec/a/b"})
            std::ofstream(root / name) << name;
        for (const char* drive : {"c/Assets", "e"}) {
            std::filesystem::create_symlink(root / drive, root / drive / "o");
            std::filesystem::create_symlink("a", root / drive / "l");
            std::filesystem::create_symlink(root / "ec", root / drive / "x");
            std::filesystem::create_symlink("/", root / drive / "r");
        }
    }
    const TemporaryDirectory Directory;
    const DriveTable Drives{{{"C", Directory.Path() + "/c", false}, {"E", Directory.Path() + "/e"}}};
};

/// It cannot forge a line of a log.
bool HasControls(const std::string& text) {
    const auto c1 = [](char lead, unsigned char next) { return lead == '\xC2' && next < 0xA0; };
    return std::ranges::any_of(text, [](unsigned char byte) { return byte < 0x20 || byte == 0x7f; }) ||
           std::ranges::adjacent_find(text, c1) != text.end();
}

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    static const Disk disk;
    const std::string_view path = TextOf(data, size);
    Require(!HasControls(ForLog(path)));
    try {
        const DrivePlace place = disk.Drives.Parse(path);
        Require(disk.Drives.Parse(place.Path()).Names == place.Names);
        Require(place.HostPath().lexically_normal().string().starts_with(place.Drive->Directory.string()));
        const auto root = std::filesystem::canonical(place.Drive->Directory).string();
        const std::string found = ResolveOnDrive(place).string();
        Require(found == root || found.starts_with(root + '/'));
    } catch (const Fault&) {
        return 0;
    }
    return 0;
}
