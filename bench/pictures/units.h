#pragma once

#include "support/childprocess.h"

#include <csignal>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

/// A real unit for the pictures, with an address of its own on this machine.
class PictureUnit {
public:
    /// Its media are those of `show`, when it is given: the directory of a demo unit.
    PictureUnit(const std::filesystem::path& store, std::string address, const std::filesystem::path& show,
                const std::filesystem::path& drive);

    const std::string& Host() const { return Address; }
    /// Gives it the presets of one of the demo shows: "left" or "right".
    void Fill(const std::string& show) const;
    /// From then on it answers nothing, until Thaw().
    void Freeze() const { Process->Signal(SIGSTOP); }
    void Thaw() const { Process->Signal(SIGCONT); }

private:
    void Start(const std::filesystem::path& store, const std::filesystem::path& drive);
    void ShareKnowledge(const std::filesystem::path& store, const std::filesystem::path& show,
                        const std::filesystem::path& drive);

    const std::string Address;
    std::unique_ptr<ChildProcess> Process;
};

/// The units of all pictures: two with a show, and a third that is empty.
struct PictureUnits {
    explicit PictureUnits(const std::filesystem::path& media);
    ~PictureUnits();

    TemporaryDirectory Directory;
    const std::filesystem::path Drive;  ///< of the first unit, with something to import
    std::vector<std::unique_ptr<PictureUnit>> All;
};
