#pragma once

#include "mirror.h"
#include "wire.h"

#include <zorvic/types.h>

#include <cstdint>
#include <map>
#include <memory>

namespace Zorvic::Internal {

/// What to send so that the unit's preset gets the fields of `edited` that differ from `base`, and keeps what somebody
/// else wrote to the others. The mask is empty when nothing differs. Without a base every field is sent.
Wire::UpdatePresetRequest DifferenceRequest(const Preset* base, const Preset& edited);

/// Remembers, for each preset, the copy that an edit was made on: the one last handed to the caller or last sent by it.
/// One thread at a time. Costs a pointer per list handed out, not a copy.
class EditBase {
public:
    void HandedOut(std::shared_ptr<const PresetList> presets);
    void Sent(const Preset& preset);
    /// Null for a preset that was never handed out. Valid until the next call of HandedOut or Sent.
    const Preset* Find(std::int32_t pk) const;

private:
    std::shared_ptr<const PresetList> Latest;
    std::map<std::int32_t, Preset> SentSince;  // since Latest was handed out
};

}  // namespace Zorvic::Internal
