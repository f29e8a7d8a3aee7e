#include "conversions.h"
#include "support/unitprocess.h"
#include "unit/raw_client.h"
#include "unit/unitfakes.h"

#include <zorvic/extras.h>

#include <atomic>
#include <fstream>
#include <regex>
#include <thread>

using namespace Zorvic;

namespace {

/// A venue's certificates, and a unit that asks for them.
class EncryptionTest : public ::testing::Test {
protected:
    EncryptionTest() {
        // The first start gives the store its identifier.
        UnitProcess(Store, {"--announce", "off"}).Kill();
        Make({Room, "--store", Store, "--console", "all"});
        Unit.emplace(Store, std::vector<std::string>{"--announce", "off", "--tls-dir", UnitDirectory()});
    }
    ~EncryptionTest() override { unsetenv("ZORVIC_TLS_DIR"); }

    void Make(std::vector<std::string> arguments) {
        arguments.insert(arguments.begin(), {ZORVIC_UNIT_PROGRAM, "certificates"});
        EXPECT_EQ(ChildProcess(arguments, Log).Wait(std::chrono::seconds(20)), 0) << ReadFile(Log);
    }
    std::string UnitDirectory() const { return std::filesystem::directory_iterator(Room + "/units")->path().string(); }
    /// A link with the certificate of this console; without any when it is empty.
    std::unique_ptr<Session> Link(const std::string& directory) {
        unsetenv("ZORVIC_TLS_DIR");
        if (!directory.empty()) setenv("ZORVIC_TLS_DIR", directory.c_str(), 1);
        return std::make_unique<Session>(Unit->Host(), 1);
    }
    std::string Console(const std::string& name) const { return Room + "/consoles/" + name; }
    static StatusCode Create(Session& console) {
        return console.CreatePreset(Internal::FromWire(PresetWith(0, "C:\\Assets\\a.mov")));
    }

    const TemporaryDirectory Directory;
    const std::string Store = Directory.Path() + "/store";
    const std::string Room = Directory.Path() + "/certificates";
    const std::string Log = Directory.Path() + "/log";
    std::optional<UnitProcess> Unit;
};

TEST_F(EncryptionTest, LetsInWhomTheAuthorityKnowsAndNobodyElse) {
    Make({Room, "--console", "late", "--days", "-1"});
    Make({Directory.Path() + "/strangers", "--console", "other"});
    const std::string mixed = Directory.Path() + "/mixed";
    std::filesystem::copy(Directory.Path() + "/strangers/consoles/other", mixed);
    std::filesystem::copy_file(Room + "/ca.pem", mixed + "/ca.pem", std::filesystem::copy_options::overwrite_existing);
    const std::map<std::string, const char*> strangers = {
        {"", "it may want a certificate"},
        {Console("late"), "the console's certificate is over"},
        {Directory.Path() + "/strangers/consoles/other", "its certificate is not of the authority"},
        {mixed, "it may not accept the certificate"},
        {UnitDirectory(), "cannot read"}};
    for (const auto& [stranger, problem] : strangers) {
        const auto link = Link(stranger);
        EXPECT_FALSE(link->Connected()) << stranger;
        EXPECT_THAT(LinkProblem(*link), testing::HasSubstr(problem));
    }
    const auto console = Link(Console("all"));
    ASSERT_TRUE(console->Connected());
    EXPECT_EQ(Create(*console), ZORVIC_STATUS_OK);

    Unit->Kill();
    EXPECT_TRUE(WaitUntil([&] { return !console->Connected(); }));
    EXPECT_EQ(LinkProblem(*console), "") << "that it is gone says nothing about certificates";

    const std::string text = ReadFile(Log) + ReadFile(Store + ".log");
    EXPECT_EQ(text.find("PRIVATE KEY"), std::string::npos);
    EXPECT_EQ(std::filesystem::status(Console("all") + "/console.key").permissions(),
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

TEST_F(EncryptionTest, AllowsWhatTheCertificateSaysUntilItIsRevoked) {
    Make({Room, "--console", "desk", "--role", "operate"});
    std::smatch serial;
    const std::string made = ReadFile(Log);
    ASSERT_TRUE(std::regex_search(made, serial, std::regex("desk, serial number ([0-9A-F]+)")));
    ASSERT_EQ(Create(*Link(Console("all"))), ZORVIC_STATUS_OK);
    const auto console = Link(Console("desk"));
    ASSERT_TRUE(console->Connected());
    EXPECT_EQ(console->SelectPreset(1), ZORVIC_STATUS_OK);
    EXPECT_EQ(Create(*console), ZORVIC_STATUS_FAILED);
    EXPECT_EQ(console->ShutdownZorvic(), ZORVIC_STATUS_FAILED);

    ChildProcess mistyped({ZORVIC_UNIT_PROGRAM, "certificates", Room, "--revoke", "be"}, Log);
    EXPECT_EQ(mistyped.Wait(std::chrono::seconds(20)), 2);
    EXPECT_TRUE(Link(Console("desk"))->Connected());
    Make({Room, "--revoke", serial[1]});
    EXPECT_TRUE(WaitUntil([&] { return !console->Connected(); })) << "also who watches already";
    const auto again = Link(Console("desk"));
    EXPECT_FALSE(again->Connected());
    for (const auto* refused : {console.get(), again.get()})
        EXPECT_EQ(LinkProblem(*refused), "this console's certificate is revoked");
    EXPECT_TRUE(Link(Console("all"))->Connected());
}

TEST_F(EncryptionTest, AListThatCannotBeReadLetsNobodyInAgain) {
    const auto list = UnitDirectory() + "/revoked";
    Make({Room, "--console", "desk"});
    std::smatch serial;
    const std::string made = ReadFile(Log);
    ASSERT_TRUE(std::regex_search(made, serial, std::regex("desk, serial number ([0-9A-F]+)")));
    Make({Room, "--revoke", serial[1]});
    EXPECT_TRUE(WaitUntil([&] { return !Link(Console("desk"))->Connected(); }));
    const std::vector<std::pair<std::string, std::function<void()>>> troubles = {
        {"ends within a line", [&] { std::ofstream(list) << serial[1].str().substr(0, 9); }},
        {"is gone", [&] { std::filesystem::remove(list); }},
        {"Is a directory", [&] { std::filesystem::create_directory(list); }}};
    for (const auto& [said, make] : troubles) {
        make();
        EXPECT_TRUE(WaitUntil([&, text = said] { return ReadFile(Store + ".log").find(text) != std::string::npos; }))
            << said;
        EXPECT_FALSE(Link(Console("desk"))->Connected()) << said;
        EXPECT_TRUE(Link(Console("all"))->Connected()) << said;
    }
    std::filesystem::remove(list);
    std::ofstream(list) << "00" << std::endl;
    EXPECT_TRUE(WaitUntil([&] { return Link(Console("desk"))->Connected(); })) << "taken from a whole list";
    Unit->Kill();
    std::filesystem::remove(list);
    std::filesystem::create_directory(list);
    ChildProcess again({ZORVIC_UNIT_PROGRAM, "--store", Store, "--port", "0", "--tls-dir", UnitDirectory()}, Log);
    EXPECT_EQ(again.Wait(std::chrono::seconds(20)), 2);
    EXPECT_THAT(ReadFile(Log), testing::HasSubstr("cannot read " + list));
}

TEST_F(EncryptionTest, AUnitStartsWithACertificateOfItsOwnOnly) {
    Unit->Kill();
    Make({Room, "--guid", "00000000-0000-4000-8000-000000000000"});
    Make({Room, "--store", Store, "--days", "-1"});
    for (const auto& [directory, reason] :
         std::map<std::string, std::string>{{Room + "/units/00000000-0000-4000-8000-000000000000", "of another unit"},
                                            {UnitDirectory(), ""},
                                            {Room, "cannot read"}}) {
        ChildProcess unit(
            {ZORVIC_UNIT_PROGRAM, "--store", Store, "--port", "0", "--announce", "off", "--tls-dir", directory}, Log);
        EXPECT_EQ(unit.Wait(std::chrono::seconds(20)), 2) << directory;
        EXPECT_THAT(ReadFile(Log), testing::HasSubstr("--tls-dir " + directory + ": "));
        EXPECT_THAT(ReadFile(Log), testing::HasSubstr(reason));
    }
}

TEST_F(EncryptionTest, WhoNeverFinishesAHandshakeMakesRoomForOthers) {
    std::atomic<int> rounds = 0;
    const std::jthread crowd([&](const std::stop_token& stop) {
        std::vector<std::optional<RawClient>> clients(640);
        for (; !stop.stop_requested(); ++rounds) {
            for (unsigned number = 0; number < clients.size() && !stop.stop_requested(); ++number) {
                auto& client = clients[number];
                if (!client || !client->Read()) client.emplace(Unit->Host(), 2 + number % 8).Send("\x16\x03\x01\x02");
            }
            SleepBriefly();
        }
    });
    ASSERT_TRUE(WaitUntil([&] { return rounds > 1; }));
    for (int number = 0; number < 3; ++number) {
        const auto start = std::chrono::steady_clock::now();
        EXPECT_TRUE(Link(Console("all"))->Connected());
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2)) << "slow as it is when sanitized";
    }
}

}  // namespace
