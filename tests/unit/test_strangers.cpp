#include "support/unitprocess.h"

#include <gmock/gmock.h>
#include <zorvic/session.h>

#include <string>
#include <vector>

using testing::HasSubstr;
using namespace Zorvic;

namespace {

/// A unit whose network holds more than consoles, and a console on it.
class StrangersTest : public ::testing::Test {
protected:
    std::string Log() const { return ReadFile(Directory.Path() + "/store.log"); }

    TemporaryDirectory Directory;
    UnitProcess Unit{Directory.Path() + "/store", {"--announce", "off"}};
    Session Console{Unit.Host(), 1};
};

TEST_F(StrangersTest, LongAndManyRefusalsCostNeitherLinkNorDisk) {
    std::string path = "C:\\Assets\\";
    while (path.size() < 900'000)
        path += "é\n";
    for (int number = 0; number < 300; ++number)
        ASSERT_EQ(Console.DeleteAsset(number % 10 == 0 ? path : path.substr(0, 3'012)), ZORVIC_STATUS_MISUSED);
    EXPECT_EQ(Console.DeleteAsset(path + path), ZORVIC_STATUS_MISUSED) << "too large to be sent";
    EXPECT_TRUE(Console.Connected());
    EXPECT_LT(Log().size(), 250'000U);
    EXPECT_TRUE(WaitUntil([&] {
        Console.Take(99);
        return Log().find("take preset 99: no such preset (and ") != std::string::npos;
    })) << "what is left out is counted";
}

}  // namespace
