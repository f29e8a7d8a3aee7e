#include "ctlonunit.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>

namespace {

/// The parameter is the signal that ends it; 0 for the end of its input.
class Fleet : public testing::TestWithParam<int> {};

TEST_P(Fleet, UnitsStandReadyWithPresetsAndEndWithTheProgram) {
    const TemporaryDirectory directory;
    const std::string stores = directory.Path() + "/stores";
    std::filesystem::create_directories(stores + "/Left/Assets");
    MakeClip(stores + "/Left/Assets/clip.mov", 1);
    std::filesystem::copy(stores + "/Left", stores + "/Right", std::filesystem::copy_options::recursive);
    const std::string input = directory.Path() + "/input";
    ASSERT_EQ(mkfifo(input.c_str(), 0600), 0);
    const std::string output = directory.Path() + "/output";
    ChildProcess program({"sh", "-c", "exec \"$0\" \"$@\" <" + input, ZORVIC_CTL_PROGRAM, "fleet", "--json", "--units",
                          "2", stores, "--", "--port", "0"},
                         output);
    const int wish = open(input.c_str(), O_WRONLY);

    nlohmann::json units;
    const auto isReady = [&] {
        units = nlohmann::json::parse(ReadFile(output), nullptr, false);
        return units.is_array() || !program.Running();
    };
    WaitUntil(isReady, std::chrono::seconds(60));
    ASSERT_EQ(units.size(), 2U) << ReadFile(output);
    for (const auto& unit : units) {
        Zorvic::Session session(unit["address"].get<std::string>(), 1);
        std::vector<Zorvic::Preset> presets;
        EXPECT_EQ(session.GetPresets(presets), Zorvic::ZORVIC_STATUS_OK);
        EXPECT_EQ(presets.size(), 1U) << unit;
    }
    if (GetParam() == 0)
        close(wish);
    else
        program.Signal(GetParam());
    EXPECT_EQ(program.Wait(std::chrono::seconds(20)), 0);
    if (GetParam() != 0) close(wish);
    for (const auto& unit : units)
        EXPECT_FALSE(Zorvic::Session(unit["address"].get<std::string>(), 1).Connected());
}
INSTANTIATE_TEST_SUITE_P(InterruptAndEndOfInput, Fleet, testing::Values(SIGINT, 0));

}  // namespace
