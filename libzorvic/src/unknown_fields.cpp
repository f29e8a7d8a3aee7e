#include "unknown_fields.h"

#include <algorithm>
#include <string>
#include <utility>

namespace Zorvic::Internal {
namespace {

template <class Part>
bool Unknown(const Part& part) {
    return !part.GetReflection()->GetUnknownFields(part).empty();
}

bool CanvasHoldsUnknown(const Wire::Canvas& canvas) {
    return Unknown(canvas) || std::any_of(canvas.assets().begin(), canvas.assets().end(), Unknown<Wire::PinnedAsset>);
}

template <class Part>
void Keep(const Part& stored, Part& sent) {
    sent.GetReflection()->MutableUnknownFields(&sent)->MergeFrom(stored.GetReflection()->GetUnknownFields(stored));
}

/// Calls `action` with each pair of parts that have the same key.
template <class Parts, class Key, class Action>
void ForEachPair(const Parts& stored, Parts& sent, const Key& key, const Action& action) {
    for (auto& part : sent) {
        const auto same = [&](const auto& candidate) { return key(candidate) == key(part); };
        const auto found = std::find_if(stored.begin(), stored.end(), same);
        if (found != stored.end()) action(*found, part);
    }
}

void KeepOfAssets(const Wire::Canvas& stored, Wire::Canvas& sent) {
    using Place = std::pair<std::string, int>;  // the same file may be pinned more than once
    std::map<Place, const Wire::PinnedAsset*> known;
    std::map<std::string, int> seen;
    for (const auto& asset : stored.assets())
        known[{asset.full_path(), seen[asset.full_path()]++}] = &asset;
    seen.clear();
    for (auto& asset : *sent.mutable_assets()) {
        const auto found = known.find({asset.full_path(), seen[asset.full_path()]++});
        if (found != known.end()) Keep(*found->second, asset);
    }
}

}  // namespace

bool HoldsUnknownFields(const Wire::Preset& preset) {
    const auto any = [](const auto& parts, const auto& unknown) {
        return std::any_of(parts.begin(), parts.end(), unknown);
    };
    return Unknown(preset) || any(preset.canvases(), CanvasHoldsUnknown) || any(preset.gotos(), Unknown<Wire::Mark>) ||
           any(preset.countdowns(), Unknown<Wire::Mark>) || any(preset.tab_order(), Unknown<Wire::TabOrdering>);
}

void KeepUnknownFields(const Wire::Preset& stored, Wire::Preset& sent) {
    const auto id = [](const auto& mark) { return mark.id(); };
    const auto keep = [](const auto& from, auto& to) { Keep(from, to); };
    const auto keepCanvas = [](const Wire::Canvas& from, Wire::Canvas& to) {
        Keep(from, to);
        KeepOfAssets(from, to);
    };
    ForEachPair(
        stored.canvases(), *sent.mutable_canvases(), [](const auto& canvas) { return canvas.index(); }, keepCanvas);
    ForEachPair(stored.gotos(), *sent.mutable_gotos(), id, keep);
    ForEachPair(stored.countdowns(), *sent.mutable_countdowns(), id, keep);
    ForEachPair(
        stored.tab_order(), *sent.mutable_tab_order(), [](const auto& tab) { return tab.tab_id(); }, keep);
}

}  // namespace Zorvic::Internal
