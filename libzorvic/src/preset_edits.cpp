#include "preset_edits.h"

#include "conversions.h"

#include <google/protobuf/util/message_differencer.h>

#include <utility>

namespace Zorvic::Internal {
namespace {

using google::protobuf::FieldDescriptor;

bool SameField(const Wire::Preset& a, const Wire::Preset& b, const FieldDescriptor* field) {
    google::protobuf::util::MessageDifferencer differencer;
    return differencer.CompareWithFields(a, b, {field}, {field});
}

}  // namespace

Wire::UpdatePresetRequest DifferenceRequest(const Preset* base, const Preset& edited) {
    const Wire::Preset asHandedIn = ToWire(edited);
    const Wire::Preset before = base ? ToWire(*base) : Wire::Preset();
    Wire::UpdatePresetRequest request;
    *request.mutable_preset() = asHandedIn;
    RoundPictureValues(*request.mutable_preset());

    auto& preset = *request.mutable_preset();
    const auto& descriptor = *preset.GetDescriptor();
    for (int i = 0; i < descriptor.field_count(); ++i) {
        const FieldDescriptor* field = descriptor.field(i);
        if (field->number() == Wire::Preset::kPkFieldNumber) continue;
        // Rounding makes no difference of its own, neither on a value the unit holds unrounded nor on one it rounded.
        if (base && (SameField(before, asHandedIn, field) || SameField(before, preset, field))) {
            preset.GetReflection()->ClearField(&preset, field);
        } else {
            request.mutable_fields()->add_paths(field->name());
        }
    }
    return request;
}

void EditBase::HandedOut(std::shared_ptr<const PresetList> presets) {
    Latest = std::move(presets);
    SentSince.clear();
}

void EditBase::Sent(const Preset& preset) {
    SentSince[preset.PK] = preset;
}

const Preset* EditBase::Find(std::int32_t pk) const {
    if (const auto sent = SentSince.find(pk); sent != SentSince.end()) return &sent->second;
    return Latest ? FindPreset(*Latest, pk) : nullptr;
}

}  // namespace Zorvic::Internal
