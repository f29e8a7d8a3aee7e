#include "support/childprocess.h"

#include <gmock/gmock.h>

#include <fstream>
#include <iterator>
#include <string>
#include <vector>

namespace {

struct Case {
    std::vector<std::string> Arguments;
    std::string Refused;
};

TEST(CommandLine, AnyArgumentButTheOneOptionEndsTheProgramWithAMessage) {
    const std::vector<Case> cases = {{{"--bogus"}, "--bogus"},
                                     {{"--NoCustomStyle"}, "--NoCustomStyle"},
                                     {{"--nocustomstyle", "--nocustomstyle", "x y", "z"}, "x y"},
                                     {{""}, ""},
                                     {{"-style", "fusion"}, "-style"}};
    for (const auto& [arguments, refused] : cases) {
        const TemporaryDirectory directory;
        const std::string output = directory.Path() + "/output";
        std::vector<std::string> command = {ZORVIC_CONTROL_PROGRAM};
        command.insert(command.end(), arguments.begin(), arguments.end());
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
