#pragma once

#include "printing.h"

#include <zorvic/extras.h>

#include <cstdint>
#include <string>
#include <vector>

namespace ZorvicCtl {

/// All that a unit holds but the media themselves.
struct Backup {
    Zorvic::LANZorvic Unit;
    Zorvic::KonaHardwareState Settings;
    std::int32_t Selected = 0;
    std::vector<Zorvic::Drive> Drives;
    std::vector<Zorvic::Asset> Media;
    std::vector<Zorvic::PresetRecord> Presets;  ///< by number

    std::vector<Zorvic::Preset> PlainPresets() const;
};

/// The text of a backup file: readable, and with a checksum over all that counts.
std::string ToFileText(const Backup& backup);
/// Throws Failure that says what is wrong with a text that is not a whole and unchanged backup that this program
/// understands; `file` names it.
Backup FromFileText(const std::string& text, const std::string& file);

}  // namespace ZorvicCtl
