#include "ctlonunit.h"
#include "support/environment.h"

#include <algorithm>
#include <fstream>

using testing::HasSubstr;

namespace {

/// Whether a value has all that the other one names.
bool Holds(const nlohmann::json& value, const nlohmann::json& named) {
    if (!named.is_structured()) return value == named;
    if (named.type() != value.type() || (named.is_array() && named.size() != value.size())) return false;
    const auto entries = named.items();
    return std::all_of(entries.begin(), entries.end(), [&](const auto& entry) {
        return named.is_array() ? Holds(value[std::stoul(entry.key())], entry.value())
                                : value.contains(entry.key()) && Holds(value[entry.key()], entry.value());
    });
}

struct Expected {
    std::vector<std::string> Command;  // UNIT stands for the unit's address
    int Status;
    std::vector<std::string> Says;
};

class Commands : public CtlOnUnit {
protected:
    CtlResult Run(std::vector<std::string> command) const {
        for (auto& word : command)
            if (word == "UNIT") word = Host;
        return Ctl(command);
    }
    void Run(const std::vector<Expected>& table) const {
        for (const auto& [command, status, says] : table) {
            SCOPED_TRACE(testing::PrintToString(command));
            const auto result = Run(command);
            EXPECT_EQ(result.Status, status) << result.Text;
            for (const auto& text : says)
                EXPECT_THAT(result.Text, HasSubstr(text));
        }
    }
};

TEST_F(Commands, SayWhatTheyDidAndWhyNotAndEndAccordingly) {
    std::ofstream(Drive.Path() + "/notes.mov") << "no media";
    std::filesystem::copy(Unit.Directory.Path() + "/store/Assets/clip.mov", Drive.Path() + "/more.mov");
    Run({{{"presets", "UNIT"}, 0, {"Overture", "00:01:00", "Twin"}},
         {{"select", "UNIT", "Storm"}, 0, {"Selected 2 \"Storm\"."}},
         {{"pause", "UNIT", "Overture"}, 1, {"refused to pause 1 \"Overture\": it does not play."}},
         {{"seek", "UNIT", "Overture", "45"}, 0, {}},
         {{"take", "UNIT", "1"}, 0, {"Took 1 \"Overture\"."}},
         {{"pause", "UNIT", "@1"}, 0, {"Paused"}},
         {{"show", "UNIT", "1"}, 0, {"paused", "00:00:4", "of 00:01:00", "C:\\Assets\\clip.mov", "output 1"}},
         {{"resume", "UNIT", "Overture"}, 0, {"Resumed"}},
         {{"watch", "UNIT", "--for", "0.3"}, 0, {"playing  00:00:4", "stopped  00:01:00 * 2  Storm"}},
         {{"delete", "UNIT", "clip.mov"}, 1, {"refused to delete C:\\Assets\\clip.mov", "plays it"}},
         {{"end", "UNIT", "1"}, 0, {"Ended"}},
         {{"take", "UNIT", "Twin"}, 1, {"may be any", "@3", "@4"}},
         {{"take", "UNIT", "Twins"}, 1, {"no preset \"Twins\""}},
         {{"seek", "UNIT", "1", "1:75"}, 2, {"1:75"}},
         {{"marks", "UNIT", "1"}, 0, {"no gotos"}},
         {{"disks", "UNIT"}, 0, {"E", "to import from"}},
         {{"disks", "UNIT", "E:"}, 0, {"E:\\more.mov"}},
         {{"import", "UNIT", "E:\\more.mov"}, 0, {"Imported C:\\Assets\\more.mov"}},
         {{"import", "UNIT", "E:\\notes.mov"}, 1, {"notes.mov"}},
         {{"import", "UNIT", "E:\\none.mov"}, 1, {"refused to import E:\\none.mov"}},
         {{"assets", "UNIT"}, 0, {"more.mov", "Ready"}},
         {{"delete", "UNIT", "more.mov"}, 0, {"Deleted C:\\Assets\\more.mov"}},
         {{"outputs", "UNIT"}, 0, {"outputs are off"}},
         {{"list", "--wait", "0.1"}, 0, {"No units were found"}},
         {{"reboot", "UNIT"}, 2, {"--yes"}},
         {{"soft-reboot", "UNIT", "--yes"}, 0, {"Stage"}},
         {{"take", "UNIT"}, 2, {"PRESET is required"}},
         {{"dance", "UNIT"}, 2, {}},
         {{"take", "127.0.0.1:1", "1"}, 3, {"No unit answers at 127.0.0.1:1"}},
         {{"take", "Stage Left", "1"}, 3, {"Stage Left"}},
         {{"completion", "bash"}, 0, {"soft-reboot", "complete"}},
         {{"shutdown", "UNIT", "--yes"}, 0, {"shutdown"}},
         {{"presets", "UNIT"}, 3, {"No unit answers"}}});
}

TEST_F(Commands, PrintForProgramsWhatTheyPrintForPeople) {
    Zorvic::Preset marked = ClipPreset("Marked");
    marked.Gotos[7].ID = 7;
    marked.Gotos[7].TimeMS = 1500;
    ASSERT_EQ(Unit.Observer->CreatePreset(marked), Zorvic::ZORVIC_STATUS_OK);
    const std::pair<std::vector<std::string>, std::string> table[] = {
        {{"take", "UNIT", "Overture"}, R"({"command":"take","pk":1,"name":"Overture"})"},
        {{"show", "UNIT", "1"}, R"({"name":"Overture","state":"playing","running_time_ms":60000,"link":0})"},
        {{"marks", "UNIT", "5"}, R"({"gotos":[{"id":7,"time_ms":1500,"name":""}],"countdowns":[]})"},
        {{"outputs", "UNIT"}, R"({"outputs":[],"memory":0})"},
        {{"assets", "UNIT"}, R"([{"path":"C:\\Assets\\clip.mov","state":"Ready"}])"},
        {{"disks", "UNIT"}, R"([{"drive":"C","external":false},{"drive":"E","external":true}])"},
        {{"list", "--wait", "0.1"}, "[]"}};
    for (auto [command, expected] : table) {
        command.push_back("--json");
        const auto result = Run(command);
        EXPECT_EQ(result.Status, 0);
        EXPECT_TRUE(Holds(result.Json(), nlohmann::json::parse(expected))) << result.Text;
    }
}

TEST_F(Commands, TellWhatHasHappenedOnTheUnit) {
    Run({"take", "UNIT", "Storm"});
    const auto isTold = [&] {
        return Run({"log", "UNIT", "--since", "1h", "--csv"}).Text.find(",take,2,Storm,") != std::string::npos;
    };
    EXPECT_TRUE(WaitUntil(isTold));
    EXPECT_TRUE(Run({"log", "UNIT", "--json", "--newest", "1"}).Json().contains("number"));
    Run({{{"log", "UNIT"}, 0, {"TIME (UTC)", "unit started", "2 Storm", "zorvicctl on"}},
         {{"log", "UNIT", "--since", "soon"}, 2, {"\"soon\" is no time"}},
         {{"log", "UNIT", "--json", "--csv"}, 2, {"not both"}}});
}

TEST_F(Commands, LeaveNothingBehindInTheUnitAndDoNotDisturbAConsole) {
    const auto process = "/proc/" + std::to_string(Unit.Process->Process().Id());
    const auto held = [&] {
        using Entries = std::filesystem::directory_iterator;
        return std::distance(Entries(process + "/fd"), {}) + std::distance(Entries(process + "/task"), {});
    };
    const auto call = [&](int number) {
        // A console works on one preset while the tool works on another.
        const bool odd = number % 2 != 0;
        EXPECT_EQ(Unit.Observer->Take(1), Zorvic::ZORVIC_STATUS_OK);
        EXPECT_EQ(Run({odd ? "take" : "end", "UNIT", "2"}).Status, 0);
        EXPECT_TRUE(WaitUntil([&] { return State(2).IsPlaying == odd; }));
        EXPECT_TRUE(State(1).IsPlaying);
    };
    for (int number = 0; number < 10; ++number)
        call(number);
    const auto before = held();
    const int calls = static_cast<int>(FromEnvironment("ZORVIC_ROUNDS", 40));
    for (int number = 0; number < calls; ++number)
        call(number);
    // The unit's own threads come and go, too.
    EXPECT_TRUE(WaitUntil([&] { return held() < before + calls / 4; })) << held() << " after " << before;
}

}  // namespace
