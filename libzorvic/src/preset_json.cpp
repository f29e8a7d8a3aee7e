#include <zorvic/extras.h>

#include "conversions.h"

#include <google/protobuf/util/json_util.h>

namespace Zorvic {

namespace Json = google::protobuf::util;

std::string PresetToJson(const Preset& preset) {
    Json::JsonPrintOptions options;
    options.always_print_primitive_fields = true;
    options.preserve_proto_field_names = true;
    std::string text;
    // It can fail for kinds of messages only that a preset does not hold.
    static_cast<void>(Json::MessageToJsonString(Internal::ToWire(preset), &text, options));
    return text;
}

bool PresetFromJson(const std::string& json, Preset& preset) {
    Internal::Wire::Preset wire;
    if (!Json::JsonStringToMessage(json, &wire).ok()) return false;
    preset = Internal::FromWire(wire);
    return true;
}

}  // namespace Zorvic
