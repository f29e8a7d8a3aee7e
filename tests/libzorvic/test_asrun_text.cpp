#include <gmock/gmock.h>
#include <zorvic/asrun.h>

using namespace Zorvic;
using testing::EndsWith;
using testing::HasSubstr;

namespace {

AsRunEntry Take() {
    return {.Number = 7,
            .Kind = ZORVIC_ASRUN_TAKE,
            .Wall = AsRunEntry::WallTime(std::chrono::microseconds(1'772'393'400'250'999)),
            .Monotonic = std::chrono::microseconds(5),
            .Boot = "b",
            .PK = 3,
            .Preset = "Opener",
            .RemainingMS = 9000,
            .Address = "192.0.2.1:5",
            .Client = "FOH",
            .Certified = true,
            .Text = "",
            .Shown = ZORVIC_SHOWN_LIT,
            .Outputs = {1, 2},
            .LitAfter = std::chrono::microseconds(43'900),
            .Dropped = 2,
            .From = {}};
}

TEST(AsRunText, AnEntryHasTheSameFieldsInEveryForm) {
    EXPECT_EQ(AsRunCSV(Take()),
              "7,2026-03-01T19:30:00.250Z,,take,3,Opener,9000,192.0.2.1:5,FOH,yes,shown,1 2,43,2,,5,b");
    EXPECT_EQ(AsRunJSON(Take()),
              R"({"number":7,"time":"2026-03-01T19:30:00.250Z","kind":"take","pk":3,"preset":"Opener",)"
              R"("remaining_ms":9000,"address":"192.0.2.1:5","client":"FOH","certified":true,"shown":"shown",)"
              R"("outputs":[1,2],"lit_after_ms":43,"dropped":2,"monotonic_us":5,"boot":"b"})");
    EXPECT_EQ(AsRunShownText(Take()), "1, 2 after 43 ms, 2 dropped");
    EXPECT_EQ(std::ranges::count(AsRunCSVHeader(), ','), std::ranges::count(AsRunCSV(Take()), ','));
}

TEST(AsRunText, NoTextLeavesItsFieldOrIsCarriedOutByASpreadsheet) {
    const std::pair<const char*, const char*> cases[] = {{"a \"b\", c", "\"a \"\"b\"\", c\""},
                                                         {"two\r\nlines", "\"two\r\nlines\""},
                                                         {"=1+1", "'=1+1"},
                                                         {"@SUM(A1)", "'@SUM(A1)"},
                                                         {"-2+3", "'-2+3"},
                                                         {"+\"x\"", "\"'+\"\"x\"\"\""},
                                                         {"\t=1", "'\t=1"}};
    for (const auto& [name, field] : cases) {
        AsRunEntry entry = Take();
        entry.Preset = name;
        EXPECT_THAT(AsRunCSV(entry), HasSubstr(std::string(",take,3,") + field + ",9000,"));
    }
    AsRunEntry entry = Take();
    entry.Boot = "\\\"\n\x01é";
    EXPECT_THAT(AsRunJSON(entry), EndsWith("\"boot\":\"\\\\\\\"\\u000a\\u0001é\"}"));
}

}  // namespace
