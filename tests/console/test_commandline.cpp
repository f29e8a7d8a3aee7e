#include "support/childprocess.h"

#include <gmock/gmock.h>

#include <fstream>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

namespace {

TEST(CommandLine, AnyArgumentButTheOneOptionEndsTheProgramWithAMessage) {
    const std::vector<std::pair<std::string, std::vector<std::string>>> cases = {
        {"--NoCustomStyle", {"--NoCustomStyle"}},
        {"x y", {"--nocustomstyle", "--nocustomstyle", "x y", "z"}},
        {"", {""}},
        {"-style", {"-style", "fusion"}}};
    for (const auto& [refused, arguments] : cases) {
        const TemporaryDirectory directory;
        const std::string output = directory.Path() + "/output";
        std::vector<std::string> command = arguments;
        command.insert(command.begin(), ZORVIC_CONTROL_PROGRAM);
        ChildProcess program(
            command, output,
            {"QT_QPA_PLATFORM=offscreen", "ZORVIC_DISCOVERY=off", "XDG_RUNTIME_DIR=" + directory.Path()});
        EXPECT_EQ(program.Wait(std::chrono::seconds(60)), 1) << refused;
        std::ifstream file(output);
        const std::string said{std::istreambuf_iterator<char>(file), {}};
        EXPECT_EQ(said, "Invalid command line argument \"" + refused + "\".\n");
    }
}

}  // namespace
