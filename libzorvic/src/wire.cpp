#include "wire.h"

#include <algorithm>
#include <string_view>
#include <vector>

namespace Zorvic::Internal {
namespace {

using google::protobuf::FieldDescriptor;
using google::protobuf::Message;

bool ElementHasValidText(const Message& message, const FieldDescriptor* field, int index) {
    const auto& reflection = *message.GetReflection();
    const bool repeated = field->is_repeated();
    if (field->cpp_type() == FieldDescriptor::CPPTYPE_MESSAGE) {
        return HasValidText(repeated ? reflection.GetRepeatedMessage(message, field, index)
                                     : reflection.GetMessage(message, field));
    }
    if (field->type() != FieldDescriptor::TYPE_STRING) return true;
    return google::protobuf::internal::IsStructurallyValidUTF8(
        repeated ? reflection.GetRepeatedString(message, field, index) : reflection.GetString(message, field));
}

}  // namespace

bool SpeaksAlike(const std::string& version) {
    const auto major = [](std::string_view text) { return text.substr(0, text.find('.')); };
    return version.empty() || major(version) == major(ApiVersion);
}

bool HasValidText(const Message& message) {
    const auto& reflection = *message.GetReflection();
    std::vector<const FieldDescriptor*> fields;
    reflection.ListFields(message, &fields);
    return std::all_of(fields.begin(), fields.end(), [&](const FieldDescriptor* field) {
        const int count = field->is_repeated() ? reflection.FieldSize(message, field) : 1;
        for (int i = 0; i < count; ++i) {
            if (!ElementHasValidText(message, field, i)) return false;
        }
        return true;
    });
}

}  // namespace Zorvic::Internal
