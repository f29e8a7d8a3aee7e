#include "ctlonunit.h"

#include <algorithm>
#include <fstream>

using testing::HasSubstr;

namespace {

class Restore : public CtlOnUnit {
protected:
    Restore() {
        // A link goes both ways, and both units number their presets differently.
        for (const int pk : {1, 2}) {
            Zorvic::Preset preset = PresetOf(*Unit.Observer, pk);
            preset.Link = 3 - pk;
            EXPECT_EQ(Unit.Observer->UpdatePreset(preset), Zorvic::ZORVIC_STATUS_OK);
        }
        EXPECT_EQ(Second.CreatePreset(ClipPreset("Own")), Zorvic::ZORVIC_STATUS_OK);
    }
    static Zorvic::Preset PresetOf(Zorvic::Session& session, int pk) {
        std::vector<Zorvic::Preset> presets;
        session.GetPresets(presets);
        presets.resize(std::max(presets.size(), static_cast<std::size_t>(pk)));
        return presets[static_cast<std::size_t>(pk - 1)];
    }
    void Annotate(int pk, const std::string& notes) const {
        Zorvic::Preset preset = PresetOf(*Unit.Observer, pk);
        preset.Notes = notes;
        EXPECT_EQ(Unit.Observer->UpdatePreset(preset), Zorvic::ZORVIC_STATUS_OK);
    }
    void Expect(const std::vector<std::string>& command, int status, const std::vector<std::string>& says = {}) const {
        const auto result = Ctl(command);
        EXPECT_EQ(result.Status, status) << testing::PrintToString(command) << '\n' << result.Text;
        for (const auto& text : says)
            EXPECT_THAT(result.Text, HasSubstr(text));
    }

    UnitProcess Spare{Drive.Path() + "/spare", {"--announce", "off"}};
    const std::string SpareHost = Spare.Host();
    Zorvic::Session Second{SpareHost, 1};
    const std::string File = Drive.Path() + "/backup.json";
};

TEST_F(Restore, ShowsThenMakesWhatIsMissingAndThenChangesNothing) {
    Expect({"export", Host, File}, 0, {"Wrote 4 presets"});
    Expect({"diff", Host, File}, 0, {"No differences."});
    Expect({"diff", Host, SpareHost}, 1, {"Overture", "only in the first", "Own", "only in the second"});
    Expect({"restore", File, SpareHost}, 0,
           {"Create    1 \"Overture\"", "Leave     \"Own\"", "Missing   C:\\Assets\\clip.mov", "Nothing was changed"});
    EXPECT_EQ(nlohmann::json(Ctl({"presets", SpareHost, "--json"}).Json()).size(), 1U);
    Expect({"restore", File, SpareHost, "--apply"}, 0, {"Done."});
    EXPECT_TRUE(WaitUntil([&] { return PresetOf(Second, 2).Link == 3 && PresetOf(Second, 3).Link == 2; }));
    Expect({"restore", File, SpareHost, "--apply"}, 0, {"Same      4 presets", "There is nothing to do."});
    const auto left = Ctl({"diff", File, SpareHost, "--json"}).Json();
    EXPECT_EQ(left["presets"].size(), 1U) << left;
    EXPECT_EQ(left["media"].size(), 1U) << left;
}

TEST_F(Restore, LeavesAloneWhatPlaysAndChangesNothingForADamagedFile) {
    Expect({"export", Host, File}, 0);
    Annotate(1, "edited");
    Annotate(2, "edited");
    EXPECT_EQ(Unit.Observer->Take(1), Zorvic::ZORVIC_STATUS_OK);
    Expect({"diff", File, Host}, 1, {"Overture", "Notes", "edited"});

    const std::string damaged = File + ".damaged";
    std::ofstream(damaged) << ReadFile(File).substr(0, 1'000);
    Expect({"restore", damaged, Host, "--apply"}, 1, {"is damaged"});
    EXPECT_EQ(PresetOf(*Unit.Observer, 2).Notes, "edited");

    Expect({"restore", File, Host, "--apply"}, 1, {"Playing   1 \"Overture\": Notes", "Change    2 \"Storm\": Notes"});
    EXPECT_TRUE(WaitUntil([&] { return PresetOf(*Unit.Observer, 2).Notes.empty(); }));
    EXPECT_EQ(PresetOf(*Unit.Observer, 1).Notes, "edited");
    EXPECT_TRUE(State(1).IsPlaying);
}

}  // namespace
