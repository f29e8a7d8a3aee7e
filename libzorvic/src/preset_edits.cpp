#include "preset_edits.h"

#include "conversions.h"

#include <google/protobuf/util/message_differencer.h>

#include <bitset>
#include <utility>

namespace Zorvic::Internal {
namespace {

using google::protobuf::FieldDescriptor;
using Fields = std::bitset<64>;  // by number

bool SameField(const Wire::Preset& a, const Wire::Preset& b, const FieldDescriptor* field) {
    google::protobuf::util::MessageDifferencer differencer;
    return differencer.CompareWithFields(a, b, {field}, {field});
}

template <class Action>
void ForEachField(const Action& action) {
    const auto& descriptor = *Wire::Preset::descriptor();
    for (int i = 0; i < descriptor.field_count(); ++i) {
        if (descriptor.field(i)->number() != Wire::Preset::kPkFieldNumber) action(descriptor.field(i));
    }
}

Fields AllFields() {
    Fields all;
    ForEachField([&](const FieldDescriptor* field) { all.set(static_cast<std::size_t>(field->number())); });
    return all;
}

/// Rounding makes no difference of its own, neither on a value the unit holds unrounded nor on one it rounded.
Fields Differing(const Preset& version, const Wire::Preset& asHandedIn, const Wire::Preset& rounded) {
    const Wire::Preset before = ToWire(version);
    Fields differing;
    ForEachField([&](const FieldDescriptor* field) {
        if (SameField(before, asHandedIn, field) || SameField(before, rounded, field)) return;
        differing.set(static_cast<std::size_t>(field->number()));
    });
    return differing;
}

/// `versions` are those the copy may have been made of, newest first. A value that none of them has is an edit, and the
/// version with the fewest differences explains the rest best. A copy with known values only is taken at its word: it
/// sets something back to what it was, and that must never be lost.
Fields EditedFields(const std::vector<const Preset*>& versions, const Wire::Preset& asHandedIn,
                    const Wire::Preset& rounded) {
    if (versions.empty()) return AllFields();
    const Fields newest = Differing(*versions.front(), asHandedIn, rounded);
    if (newest.count() < 2) return newest;  // no version explains it better
    Fields nearest = newest;
    Fields inNone = newest;
    for (std::size_t i = 1; i < versions.size(); ++i) {
        const Fields differing = Differing(*versions[i], asHandedIn, rounded);
        inNone &= differing;
        if (differing.count() < nearest.count()) nearest = differing;
    }
    return inNone.any() ? nearest : newest;
}

}  // namespace

void PresetEdits::HandedOut(std::shared_ptr<const PresetList> presets, TimePoint now) {
    const bool again = !Lists.empty() && Lists.back().Presets == presets && Lists.back().Order == LastOrder;
    if (!again) Lists.push_back({std::move(presets), now, ++LastOrder});
    Forget(now);
}

void PresetEdits::Written(const Preset& preset) {
    Writes[preset.PK] = {preset, ++LastOrder};
}

// A list goes when the next one has been out for so long that nothing of the older one counts any more.
void PresetEdits::Forget(TimePoint now) {
    while (Lists.size() > 1 && (Lists.size() > MostLists || Lists[1].Since + Grace <= now))
        Lists.pop_front();
    const List& oldest = Lists.front();
    if (oldest.Since + Grace > now) return;
    std::erase_if(Writes, [&](const auto& write) { return write.second.Order < oldest.Order; });
}

Wire::UpdatePresetRequest PresetEdits::Request(const Preset& edited, TimePoint now) const {
    const Wire::Preset asHandedIn = ToWire(edited);
    Wire::UpdatePresetRequest request;
    Wire::Preset& preset = *request.mutable_preset();
    preset = asHandedIn;
    RoundPictureValues(preset);
    const Fields fields = EditedFields(Versions(edited.PK, now), asHandedIn, preset);
    ForEachField([&](const FieldDescriptor* field) {
        if (fields.test(static_cast<std::size_t>(field->number()))) {
            request.mutable_fields()->add_paths(field->name());
        } else {
            preset.GetReflection()->ClearField(&preset, field);
        }
    });
    return request;
}

std::vector<const Preset*> PresetEdits::Versions(std::int32_t pk, TimePoint now) const {
    const auto write = Writes.find(pk);
    const std::uint64_t written = write == Writes.end() ? 0 : write->second.Order;
    std::vector<const Preset*> versions;
    TimePoint since = TimePoint::max() - Grace;  // when the oldest version so far was handed out first
    for (auto list = Lists.rbegin(); list != Lists.rend() && list->Order > written && since + Grace > now; ++list) {
        const Preset* preset = FindPreset(*list->Presets, pk);
        if (!preset) continue;
        if (versions.empty() || versions.back() != preset) versions.push_back(preset);
        since = list->Since;
    }
    if (written != 0 && since + Grace > now) versions.push_back(&write->second.Copy);
    return versions;
}

}  // namespace Zorvic::Internal
