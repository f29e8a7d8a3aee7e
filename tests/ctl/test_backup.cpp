#include "backup.h"
#include "failure.h"
#include "libzorvic/scripted_unit.h"
#include "support/childprocess.h"
#include "support/environment.h"
#include "wire.h"

#include <zorvic/extras.h>

#include <gmock/gmock.h>

#include <random>

using google::protobuf::FieldDescriptor;
using google::protobuf::Message;
using testing::HasSubstr;
using namespace ZorvicCtl;

namespace {

/// Presets such as a unit may hold that is newer than this library.
class Generator {
public:
    explicit Generator(unsigned seed) : Random(seed) {}
    int Below(int end) { return std::uniform_int_distribution<>(0, end - 1)(Random); }

    void Fill(Message& message) {
        const auto& fields = *message.GetDescriptor();
        for (int i = 0; i < fields.field_count(); ++i)
            Fill(message, fields.field(i));
        auto& unknown = *message.GetReflection()->MutableUnknownFields(&message);
        if (Below(3) == 0) unknown.AddVarint(1'000, Random());
        if (Below(3) == 0) unknown.AddLengthDelimited(1'001, Text() + '\xff');
    }

private:
    std::string Text() {
        static const std::vector<std::string> pieces = {"a", "\"", "\\", "\n", "é", "∞", "\x01", "</b>", "{}", ""};
        std::string text;
        for (int count = Below(6); count > 0; --count)
            text += pieces.at(static_cast<std::size_t>(Below(static_cast<int>(pieces.size()))));
        return text;
    }
    void Fill(Message& message, const FieldDescriptor* field) {
        const auto& reflection = *message.GetReflection();
        for (int number = 0, count = Below(4); field->is_repeated() && number < count; ++number) {
            if (field->cpp_type() != FieldDescriptor::CPPTYPE_MESSAGE) {
                reflection.AddUInt32(&message, field, static_cast<unsigned>(Below(65'536)));
                continue;
            }
            Message& part = *reflection.AddMessage(&message, field);
            Fill(part);
            // Keys stand in their order.
            const auto* key = part.GetDescriptor()->field(0);
            if (key->type() == FieldDescriptor::TYPE_INT32) part.GetReflection()->SetInt32(&part, key, number + 1);
        }
        if (field->is_repeated()) return;
        const bool empty = Below(4) == 0;
        switch (field->cpp_type()) {
            case FieldDescriptor::CPPTYPE_INT32:
                return reflection.SetInt32(&message, field, empty ? 0 : static_cast<std::int32_t>(Random()));
            case FieldDescriptor::CPPTYPE_UINT32:
                return reflection.SetUInt32(&message, field, empty ? 0 : static_cast<std::uint32_t>(Random()));
            case FieldDescriptor::CPPTYPE_FLOAT:
                return reflection.SetFloat(&message, field, std::uniform_real_distribution<float>(-2, 2)(Random));
            case FieldDescriptor::CPPTYPE_BOOL:
                return reflection.SetBool(&message, field, !empty);
            default:
                return reflection.SetString(&message, field, Text());
        }
    }

    std::mt19937 Random;
};

Backup BackupOf(Zorvic::Session& session) {
    Backup backup;
    backup.Unit.APIVersion = "1.1";
    EXPECT_EQ(GetPresetRecords(session, backup.Presets), Zorvic::ZORVIC_STATUS_OK);
    backup.Media.emplace_back().FullPath = "C:\\Assets\\clip.mov";
    return backup;
}

std::string ComplaintAbout(const std::string& text) {
    try {
        FromFileText(text, "FILE");
    } catch (const Failure& failure) {
        return failure.what();
    }
    return {};
}

TEST(Backup, BringsBackEveryFieldAlsoThoseThatOnlyANewerProgramKnows) {
    const unsigned seed = FromEnvironment("ZORVIC_SEED", std::random_device()());
    SCOPED_TRACE("ZORVIC_SEED=" + std::to_string(seed));
    const int rounds = static_cast<int>(FromEnvironment("ZORVIC_ROUNDS", 100));
    Generator generator(seed);
    ScriptedUnit unit;
    unit.Store("pk: 1");
    Zorvic::Session session(unit.Host(), 1);
    for (int number = 1; number <= rounds; ++number) {
        Wire::Preset stored;
        generator.Fill(stored);
        stored.set_pk(1);
        stored.set_loop(number);  // tells it from the one before
        unit.Store(stored);
        std::vector<Zorvic::PresetRecord> records;
        const auto isShown = [&] {
            return GetPresetRecords(session, records) == Zorvic::ZORVIC_STATUS_OK && records.size() == 1 &&
                   records[0].Known.Loop == number;
        };
        ASSERT_TRUE(WaitUntil(session, isShown, std::chrono::seconds(10)));
        const Backup read = FromFileText(ToFileText(BackupOf(session)), "FILE");
        ASSERT_EQ(ReplacePreset(session, read.Presets.at(0)), Zorvic::ZORVIC_STATUS_OK);
        const auto sent = unit.Updates().back();
        EXPECT_EQ(sent.fields().paths_size(), Wire::Preset::descriptor()->field_count() - 1);
        ASSERT_EQ(sent.preset().SerializeAsString(), stored.SerializeAsString()) << stored.DebugString();
    }
}

TEST(Backup, OfWhichAnythingIsMissingChangedOrNotKnownIsNotTakenForWhole) {
    ScriptedUnit unit;
    unit.Store("pk: 1 name: 'Opening' gotos { id: 1 time_ms: 100 name: 'Top' } notes: 'With the upbeat'");
    Zorvic::Session session(unit.Host(), 1);
    const std::string whole = ToFileText(BackupOf(session));
    ASSERT_EQ(ToFileText(FromFileText(whole, "FILE")), whole);
    for (std::size_t length = 0; length + 2 < whole.size(); length += 7)
        EXPECT_NE(ComplaintAbout(whole.substr(0, length)), "") << length;
    for (std::size_t at = 0; at < whole.size(); ++at) {
        std::string changed = whole;
        changed[at] = changed[at] == '7' ? '8' : '7';
        if (!ComplaintAbout(changed).empty()) continue;
        // What is not covered by the checksum says nothing about the unit.
        EXPECT_EQ(ToFileText(FromFileText(changed, "FILE")), whole) << at;
    }
    std::string newer = whole;
    newer.replace(newer.find("\"schema\": 1"), 11, "\"schema\": 2");
    EXPECT_THAT(ComplaintAbout(newer), HasSubstr("newer program"));
    for (const char* schema : {"1e300", "1.5", "4294967297", "18446744073709551615", "true"}) {
        newer.replace(newer.find("\"schema\": ") + 10, newer.find(',', newer.find("schema")) - newer.find("schema") - 9,
                      schema);
        EXPECT_THAT(ComplaintAbout(newer), HasSubstr("not a whole number")) << schema;
    }
    EXPECT_THAT(ComplaintAbout(whole.substr(0, whole.size() / 2)), HasSubstr("damaged"));
    EXPECT_THAT(ComplaintAbout("{\"presets\": []}"), HasSubstr("no backup"));
    // Deeper than the stack of what would write it again.
    const std::string deep = std::string(200'000, '[') + std::string(200'000, ']');
    EXPECT_THAT(ComplaintAbout(R"({"format": "zorvic-backup", "schema": 1, "sha256": "", "content": )" + deep + '}'),
                HasSubstr("damaged"));
}

}  // namespace
