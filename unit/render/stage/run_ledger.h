#pragma once

#include "render/scene.h"

#include <cstdint>
#include <map>
#include <vector>

namespace ZorvicRender {

/// What outputs have shown of a run.
struct RunFigures {
    RunId Id;
    bool Pictures = false;                   ///< some output has a place for pictures of it
    std::map<std::uint32_t, TimePoint> Lit;  ///< by output: when it showed the first one
    std::uint64_t Dropped = 0;
    bool Over = false;
};

/// Keeps account of what outputs show of each run, for the unit's as-run sheet.
class RunLedger {
public:
    void NoteRuns(const RunId& id, bool pictures);
    // Of runs that were not noted before, nothing is kept.
    void NoteLit(const RunId& id, std::uint32_t output, TimePoint at);
    void NoteDropped(const RunId& id, std::uint64_t count);
    void NoteOver(const RunId& id);

    /// Those that light up for the first time or are over, at once; others that have changed, once a second.
    std::vector<RunFigures> Take(TimePoint now);

private:
    struct Account {
        RunFigures Figures;
        bool Changed = false;
        bool Urgent = false;
    };
    std::map<RunId, Account> Accounts;
    TimePoint LastTaken{};
};

}  // namespace ZorvicRender
