#include "support/childprocess.h"

#include <gmock/gmock.h>

TEST(CommandLine, AnyArgumentButTheOneOptionEndsTheProgramWithAMessage) {
    const std::pair<std::string, std::vector<std::string>> cases[] = {
        {"--NoCustomStyle", {"--NoCustomStyle"}},
        {"x y", {"--nocustomstyle", "--nocustomstyle", "x y", "z"}},
        {"", {""}},
        {"-style", {"-style", "fusion"}}};
    const TemporaryDirectory directory;
    for (const auto& [refused, arguments] : cases) {
        std::vector<std::string> command = {"env", "QT_QPA_PLATFORM=offscreen", "ZORVIC_DISCOVERY=off",
                                            "XDG_RUNTIME_DIR=" + directory.Path(), ZORVIC_CONTROL_PROGRAM};
        command.insert(command.end(), arguments.begin(), arguments.end());
        const std::string output = directory.Path() + "/output of " + refused;
        EXPECT_EQ(ChildProcess(command, output).Wait(std::chrono::seconds(60)), 1) << refused;
        EXPECT_EQ(ReadFile(output), "Invalid command line argument \"" + refused + "\".\n");
    }
}
