#pragma once

#include "mirror.h"
#include "wire.h"

#include <zorvic/types.h>

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <map>
#include <memory>
#include <vector>

namespace Zorvic::Internal {

/// Finds out which fields of a preset its caller has edited. A record does not say which version it is a copy of, so
/// this remembers the versions that it may be: the one last handed out or written, and for a moment the ones before it.
/// One thread at a time. Costs a pointer per list handed out, not a copy.
class PresetEdits {
public:
    using TimePoint = std::chrono::steady_clock::time_point;
    /// An earlier version counts this long after a newer one was handed out: longer than most handlers run, shorter
    /// than an operator takes to see what somebody else changed and to set it back together with something new.
    static constexpr std::chrono::seconds Grace{1};

    void HandedOut(std::shared_ptr<const PresetList> presets, TimePoint now);
    /// The unit has taken the copy. What was handed out before is forgotten for this preset: after an edit of its own
    /// the caller may well set a field back to what it was a moment ago.
    void Written(const Preset& preset);

    /// What to send so that the unit's preset gets the fields that were edited and keeps what somebody else wrote to
    /// the others. The mask is empty when nothing was edited; it names every field when no version is known.
    Wire::UpdatePresetRequest Request(const Preset& edited, TimePoint now) const;

private:
    /// Bounds what a caller can pile up that reads all the time from a unit that changes all the time.
    static constexpr std::size_t MostLists = 64;

    struct List {
        std::shared_ptr<const PresetList> Presets;
        TimePoint Since;
        std::uint64_t Order;
    };
    struct Write {
        Preset Copy;
        std::uint64_t Order;
    };

    std::vector<const Preset*> Versions(std::int32_t pk, TimePoint now) const;
    void Forget(TimePoint now);

    std::deque<List> Lists;                // handed out, oldest first
    std::map<std::int32_t, Write> Writes;  // the last one per preset
    std::uint64_t LastOrder = 0;           // of lists and writes in one sequence
};

}  // namespace Zorvic::Internal
