#include "unit_contents.h"

#include "unit.h"

namespace ZorvicCtl {

Backup ReadContents(Unit& unit) {
    Backup backup;
    unit.Check(DescribeUnit(unit.Link(), backup.Unit), "say what it is");
    unit.Check(unit.Link().GetKonaHardwareState(backup.Settings), "tell its settings");
    unit.Check(unit.Link().GetDisks(backup.Drives), "list its drives");
    unit.Check(GetPresetRecords(unit.Link(), backup.Presets), "list its presets");
    backup.Media = unit.Assets();
    for (const auto& state : unit.States())
        if (state.IsSelected) backup.Selected = state.PK;
    return backup;
}

std::set<std::int32_t> PlayingPresets(Unit& unit) {
    std::set<std::int32_t> playing;
    for (const auto& state : unit.States())
        if (state.IsPlaying) playing.insert(state.PK);
    return playing;
}

}  // namespace ZorvicCtl
