#include "announce/announce_places.h"
#include "announce/announcer.h"
#include "discovery_service.h"
#include "scripted_unit.h"
#include "support/childprocess.h"

#include <gmock/gmock.h>
#include <zorvic/discovery.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>

using namespace Zorvic;
using namespace Zorvic::Internal;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

AnnouncedUnit Announced(const std::string& key, const std::string& address = "127.0.0.1") {
    return {key, address, 9477, {}};
}

LANZorvic Identity(const std::string& guid, const std::string& nickname) {
    LANZorvic unit;
    unit.GUID = guid;
    unit.Nickname = nickname;
    return unit;
}

std::vector<std::string> GUIDs(const std::vector<LANZorvic>& units) {
    std::vector<std::string> guids;
    guids.reserve(units.size());
    for (const auto& unit : units)
        guids.push_back(unit.GUID);
    return guids;
}

/// Answers with the host as GUID while the units are alive, inside Ask().
struct FakeProber final : UnitProber {
    std::atomic<bool> Alive = true;
    void Ask(const std::string& host, Done done) override {
        done(Alive ? std::optional(Identity(host, host)) : std::nullopt);
    }
};

/// A browser that a test speaks for through the listener. Counts itself.
struct FakeBrowser final : ServiceBrowser {
    explicit FakeBrowser(std::atomic<int>& running) : Running(running) { ++Running; }
    ~FakeBrowser() override { --Running; }
    std::atomic<int>& Running;
};

class Tracker : public testing::Test {
protected:
    void AnswerAll(const std::optional<LANZorvic>& answer) {
        for (const auto& question : Subject.TakeDue(Now))
            Subject.Answer(question.ID, answer, Now);
    }
    UnitTracker Subject;
    UnitTracker::TimePoint Now{1h};
};

}  // namespace

TEST(Announcement, SurvivesGarbageAndKeepsUnknownNumbers) {
    const std::vector<std::string> text = {
        "GUID=g",     "nickname=a=b", "role=77", "type=9x", "api", "=", "", std::string("version=\0\xff", 10),
        "guid=second"};
    const auto unit = FromAnnouncement({"k", "10.0.0.7", 9500, text});
    EXPECT_EQ(unit.GUID, "g");
    EXPECT_EQ(unit.Nickname, "a=b");
    EXPECT_EQ(unit.CurrentRole, 77);
    EXPECT_EQ(unit.Type, ZORVIC_UTYPE_INVALID);
    EXPECT_EQ(unit.APIVersion, "");
    EXPECT_EQ(unit.CommunicatorVersion, std::string("\0\xff", 2));
    EXPECT_EQ(unit.IP, "10.0.0.7:9500");
    EXPECT_EQ(FromAnnouncement({"k", "10.0.0.7", 9477, {"role=99999999999"}}).CurrentRole, ZORVIC_ROLE_INVALID);
}

TEST(Announcement, AnswerWinsAndLeavesGapsToTheAnnouncement) {
    LANZorvic answer = Identity("real", "Real");
    answer.CurrentRole = ZORVIC_ROLE_MIRROR;
    const auto unit = Merge({"k", "10.0.0.7", 9477, {"guid=forged", "role=1", "type=2"}}, answer);
    EXPECT_EQ(unit.GUID, "real");
    EXPECT_EQ(unit.CurrentRole, ZORVIC_ROLE_MIRROR);
    EXPECT_EQ(unit.Type, ZORVIC_UTYPE_SERVER_M20X);
    EXPECT_EQ(unit.IP, "10.0.0.7");
}

TEST(Announcement, ListIsOrderedAndNamesAUnitOnce) {
    std::vector<LANZorvic> units = {Identity("3", "b"), Identity("2", "b"), Identity("9", "a"), Identity("", "c"),
                                    Identity("3", "b")};
    SortAndUnite(units);
    EXPECT_THAT(GUIDs(units), ElementsAre("9", "2", "3"));
}

TEST(Announcement, GoesWhereTheAddressIsReached) {
    const std::vector<ZorvicUnit::InterfaceAddress> present = {
        {"lo", 1, "127.0.0.1", true}, {"eth0", 2, "10.0.0.7", false}, {"eth1", 3, "10.1.0.7", false}};
    using ZorvicUnit::PlacesToAnnounce;
    const ZorvicUnit::InterfaceAddress second{"lo", 1, "127.0.0.2", true};
    EXPECT_THAT(PlacesToAnnounce("127.0.0.2", "", present), ElementsAre(second));
    EXPECT_THAT(PlacesToAnnounce("127.0.0.2", "eth0", present), IsEmpty());
    EXPECT_THAT(PlacesToAnnounce("0.0.0.0", "", present), ElementsAre(present[1], present[2]));
    EXPECT_THAT(PlacesToAnnounce("0.0.0.0", "lo", present), ElementsAre(present[0]));
    EXPECT_THAT(PlacesToAnnounce("10.1.0.7", "", present), ElementsAre(present[2]));
    EXPECT_THAT(PlacesToAnnounce("10.1.0.7", "eth0", present), IsEmpty());
}

TEST_F(Tracker, AUnitIsListedWhileItAnswersAndGoesAtTheSecondMiss) {
    Subject.Announce(Announced("k"), Now);
    AnswerAll(std::nullopt);
    EXPECT_THAT(Subject.Units(), IsEmpty());
    for (int round = 0; round < 2; ++round) {  // it comes back, too
        Now += 2s;
        AnswerAll(Identity("g", "n"));
        EXPECT_THAT(GUIDs(Subject.Units()), ElementsAre("g"));
        EXPECT_EQ(Subject.NextDue(), Now + UnitTracker::Interval);
        Now += 2s;
        AnswerAll(std::nullopt);
        EXPECT_EQ(Subject.Units().size(), 1U);
        AnswerAll(std::nullopt);
        EXPECT_THAT(Subject.Units(), IsEmpty());
        EXPECT_THAT(Subject.TakeDue(Now), IsEmpty());
    }
}

TEST_F(Tracker, LateAnswerOfAnEarlierPlaceIsIgnored) {
    Subject.Announce(Announced("k", "10.0.0.1"), Now);
    const auto first = Subject.TakeDue(Now).at(0);
    EXPECT_THAT(Subject.TakeDue(Now), IsEmpty());
    Subject.Announce(Announced("k", "10.0.0.2"), Now);
    Subject.Answer(first.ID, Identity("old", "old"), Now);
    EXPECT_THAT(Subject.Units(), IsEmpty());
    Subject.Clear();
    Subject.Announce(Announced("k"), Now);
    EXPECT_NE(Subject.TakeDue(Now).at(0).ID, first.ID);
}

TEST(Service, FollowsUnitsThatComeAndGoAndRestsWhenNobodyAsks) {
    auto owned = std::make_unique<FakeProber>();
    auto& prober = *owned;
    std::atomic<int> running{0};
    std::atomic<ServiceListener*> listener{nullptr};
    DiscoveryService service(
        [&](ServiceListener& given) {
            listener = &given;
            return std::make_unique<FakeBrowser>(running);
        },
        std::move(owned), 200ms);
    EXPECT_EQ(running, 0);
    ASSERT_TRUE(WaitUntil([&] { return service.Units().empty() && running == 1 && listener.load() != nullptr; }));
    for (const char* host : {"10.0.0.1", "10.0.0.2"})
        listener.load()->OnAnnounced(Announced(host, host));
    EXPECT_TRUE(WaitUntil([&] { return service.Units().size() == 2; }));
    listener.load()->OnWithdrawn("10.0.0.2");
    EXPECT_THAT(GUIDs(service.Units()), ElementsAre("10.0.0.1"));
    prober.Alive = false;
    EXPECT_TRUE(WaitUntil([&] { return service.Units().empty(); }));
    EXPECT_TRUE(WaitUntil([&] { return running == 0; }));
}

TEST(Service, SaysOnceWhyItCannotSearchAndStaysUsable) {
    testing::internal::CaptureStderr();
    {
        std::atomic<int> tries{0};
        DiscoveryService service(
            [&](ServiceListener&) -> std::unique_ptr<ServiceBrowser> {
                ++tries;
                throw std::runtime_error("the port is taken");
            },
            std::make_unique<FakeProber>(), 200ms);
        EXPECT_TRUE(WaitUntil([&] { return service.Units().empty() && tries == 1; }));
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "libzorvic: the network cannot be searched for units: the port is taken\n");
}

TEST(Prober, TellsALivingUnitFromADeadOneAndFromGarbage) {
    std::atomic<int> living = 0;
    std::atomic<int> dead = 0;
    const auto count = [&](const auto& answer) { ++(answer && answer->Nickname == "Left wing" ? living : dead); };
    auto prober = MakeUnitProber();
    const ScriptedUnit unit;
    for (const std::string& host : {unit.Host(), std::string("127.0.0.1:1"), std::string("not a host")})
        prober->Ask(host, count);
    EXPECT_TRUE(WaitUntil([&] { return living == 1 && dead == 2; }));
    prober->Ask(unit.Host(), count);
    prober.reset();  // answers what is under way
    EXPECT_EQ(living + dead, 4);
}

TEST(Loopback, AnnouncedUnitIsFoundAndLeavesWithItsGoodbye) {
    setenv("ZORVIC_DISCOVERY", "lo", 1);
    const ScriptedUnit server("guid-of-the-answer");
    ZorvicUnit::AnnouncerConfig config;
    config.Address = "127.0.0.1";
    config.Port = static_cast<std::uint16_t>(server.ListeningPort());
    config.GUID = "guid-of-the-answer";
    config.Nickname = std::string(300, 'n');
    config.Type = ZORVIC_UTYPE_LUMEN;
    // Other units may be announced on this machine meanwhile.
    LANZorvic unit;
    const auto isThere = [&] {
        const auto units = GetLANZorvics();
        const auto ours = std::ranges::find(units, config.GUID, &LANZorvic::GUID);
        if (ours != units.end()) unit = *ours;
        return ours != units.end();
    };
    {
        // A unit with the same id, as after copying a store: it takes another name and takes nothing from the first.
        const ZorvicUnit::Announcer announcer(config);
        config.Port = 1;
        const ZorvicUnit::Announcer twin(config);
        ASSERT_TRUE(WaitUntil(isThere)) << "does lo pass multicast on this machine?";
        EXPECT_EQ(unit.Nickname, "Left wing");
        EXPECT_EQ(unit.Type, ZORVIC_UTYPE_LUMEN);
        EXPECT_EQ(unit.IP, server.Host());
    }
    EXPECT_TRUE(WaitUntil([&] { return !isThere(); }));
}
