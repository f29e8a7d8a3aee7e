#include <zorvic/extras.h>

#include "conversions.h"
#include "session_impl.h"

#include <google/protobuf/unknown_field_set.h>

#include <functional>
#include <utility>

namespace Zorvic {
namespace {

using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using google::protobuf::UnknownFieldSet;
using Stub = Internal::Wire::Unit::Stub;
using Parts = std::map<std::string, std::string>;

/// Calls `action` with every message within `message`, itself too, and where it is.
void ForEachPart(Message& message, const std::string& place,
                 const std::function<void(Message&, const std::string&)>& action) {
    action(message, place);
    const auto& reflection = *message.GetReflection();
    const auto& fields = *message.GetDescriptor();
    for (int i = 0; i < fields.field_count(); ++i) {
        const FieldDescriptor* field = fields.field(i);
        if (!field->is_repeated() || field->cpp_type() != FieldDescriptor::CPPTYPE_MESSAGE) continue;
        for (int number = 0; number < reflection.FieldSize(message, field); ++number)
            ForEachPart(*reflection.MutableRepeatedMessage(&message, field, number),
                        place + (place.empty() ? "" : "/") + field->name() + '/' + std::to_string(number), action);
    }
}

Parts UnknownIn(Internal::Wire::Preset preset) {
    Parts parts;
    ForEachPart(preset, {}, [&](const Message& message, const std::string& place) {
        const UnknownFieldSet& unknown = message.GetReflection()->GetUnknownFields(message);
        if (!unknown.empty()) unknown.SerializeToString(&parts[place]);
    });
    return parts;
}

Internal::Wire::Preset WholePreset(const PresetRecord& record) {
    Internal::Wire::Preset preset = Internal::ToWire(record.Known);
    ForEachPart(preset, {}, [&](Message& message, const std::string& place) {
        const auto found = record.Unknown.find(place);
        if (found != record.Unknown.end())
            message.GetReflection()->MutableUnknownFields(&message)->ParseFromString(found->second);
    });
    return preset;
}

}  // namespace

StatusCode GetPresetRecords(Session& session, std::vector<PresetRecord>& records) {
    const auto state = ImplOf(session).State();
    if (!state) return ZORVIC_STATUS_NETWORKERROR;
    records.clear();
    records.reserve(state->Presets->Size());
    state->Presets->ForEach([&](const auto& preset) {
        const auto unknown = state->Unknown->find(preset->PK);
        records.push_back({*preset, unknown == state->Unknown->end() ? Parts() : UnknownIn(*unknown->second)});
    });
    return ZORVIC_STATUS_OK;
}

StatusCode CreatePreset(Session& session, const PresetRecord& record) {
    Internal::Wire::CreatePresetRequest request;
    *request.mutable_preset() = WholePreset(record);
    request.mutable_preset()->clear_pk();
    return ImplOf(session).Create(&Stub::CreatePreset, std::move(request));
}

StatusCode ReplacePreset(Session& session, const PresetRecord& record) {
    Internal::Wire::UpdatePresetRequest request;
    *request.mutable_preset() = WholePreset(record);
    const auto& fields = *Internal::Wire::Preset::descriptor();
    for (int i = 0; i < fields.field_count(); ++i)
        if (fields.field(i)->number() != Internal::Wire::Preset::kPkFieldNumber)
            request.mutable_fields()->add_paths(fields.field(i)->name());
    return ImplOf(session).Command(&Stub::UpdatePreset, request);
}

}  // namespace Zorvic
