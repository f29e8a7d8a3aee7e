#include "announce/announce_places.h"
#include "announce/announcer.h"
#include "discovery_names.h"
#include "discovery_service.h"
#include "scripted_unit.h"
#include "support/childprocess.h"

#include <gmock/gmock.h>
#include <zorvic/discovery.h>

using namespace Zorvic;
using namespace Zorvic::Internal;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

AnnouncedUnit Announced(const std::string& key, const std::string& address = "127.0.0.1", int port = 9477) {
    return {key, address, static_cast<std::uint16_t>(port), {}};
}

LANZorvic Identity(const std::string& guid, const std::string& nickname = "n") {
    LANZorvic unit;
    unit.GUID = guid;
    unit.Nickname = nickname;
    return unit;
}

std::string Text(const LANZorvic& unit) {
    return unit.GUID + '|' + unit.Nickname + '|' + std::to_string(unit.CurrentRole) + '|' + std::to_string(unit.Type) +
           '|' + unit.APIVersion + '|' + unit.CommunicatorVersion + '|' + unit.IP;
}

auto HasGUID(const char* guid) {
    return testing::Field(&LANZorvic::GUID, guid);
}

/// A browser that a test speaks for through the listener.
struct FakeBrowser final : ServiceBrowser {
    FakeBrowser() { ++Running; }
    ~FakeBrowser() override { --Running; }
    static inline std::atomic<int> Running = 0;
};

class Tracker : public testing::Test {
protected:
    void AnswerAll(const std::optional<LANZorvic>& answer) {
        for (const auto& question : Subject.TakeDue(Now))
            Subject.Answer(question.ID, answer, Now);
    }
    static std::string Address(int number) {
        return "10.1." + std::to_string(number / 250) + '.' + std::to_string(number % 250);
    }
    UnitTracker Subject;
    UnitTracker::TimePoint Now{1h};
};

}  // namespace

TEST(Announcement, SurvivesGarbageAndFillsTheGapsOfTheUnitsOwnAnswer) {
    const AnnouncedUnit announced = {
        "k",
        "10.0.0.7",
        9500,
        {"GUID=g", "nickname=a=b", "role=77", "type=9x", "api", "=", "", "version=\xff", "guid=second"}};
    EXPECT_EQ(Text(FromAnnouncement(announced)), "g|a=b|77|0||\xff|10.0.0.7:9500");
    LANZorvic answer = Identity("real", "");
    answer.Type = ZORVIC_UTYPE_LUMEN;
    EXPECT_EQ(Text(Merge(announced, answer)), "real|a=b|77|3||\xff|10.0.0.7:9500");
}

TEST(Announcement, GoesWhereTheAddressIsReached) {
    using Places = std::vector<ZorvicUnit::InterfaceAddress>;
    const Places present = {
        {"lo", 1, "127.0.0.1", true}, {"eth0", 2, "10.0.0.7", false}, {"eth1", 3, "10.1.0.7", false}};
    const auto places = [&](const char* listen, const char* interface) {
        return ZorvicUnit::PlacesToAnnounce(listen, interface, present);
    };
    EXPECT_EQ(places("127.0.0.2", ""), (Places{{"lo", 1, "127.0.0.2", true}}));
    EXPECT_EQ(places("0.0.0.0", ""), (Places{present[1], present[2]}));
    EXPECT_EQ(places("0.0.0.0", "lo"), Places{present[0]});
    EXPECT_EQ(places("10.1.0.7", ""), Places{present[2]});
    EXPECT_EQ(places("10.1.0.7", "eth0"), Places());
}

TEST_F(Tracker, AUnitIsListedWhileItAnswersAndGoesAtTheSecondMiss) {
    Subject.Announce(Announced("k"), Now);
    AnswerAll(std::nullopt);
    EXPECT_THAT(Subject.Units(), IsEmpty());
    for (int round = 0; round < 2; ++round) {  // it comes back, too
        Now += 2s;
        AnswerAll(Identity("g"));
        EXPECT_THAT(Subject.Units(), ElementsAre(HasGUID("g")));
        EXPECT_EQ(Subject.NextDue(), Now + UnitTracker::Interval);
        Now += 2s;
        AnswerAll(std::nullopt);
        EXPECT_EQ(Subject.Units().size(), 1U);
        AnswerAll(std::nullopt);
        EXPECT_THAT(Subject.Units(), IsEmpty());
        EXPECT_THAT(Subject.TakeDue(Now), IsEmpty());
    }
}

TEST_F(Tracker, ThousandsOfForgedAnnouncementsCostFewQuestionsAndKeepNoUnitOut) {
    Subject.Announce(Announced("first"), Now);
    AnswerAll(Identity("first"));
    for (int number = 0; number < 2'000; ++number)
        Subject.Announce(Announced("forged " + std::to_string(number), Address(number)), Now);
    const auto questions = Subject.TakeDue(Now);
    EXPECT_EQ(questions.size(), UnitTracker::MostAsked);
    EXPECT_EQ(Subject.NextDue(), std::nullopt) << "there is nothing to wake up for";
    for (const auto& question : questions)
        Subject.Answer(question.ID, std::nullopt, Now);
    Subject.Announce(Announced("real", "10.0.0.7"), Now);
    for (std::size_t round = 0; round <= UnitTracker::MostEntries / UnitTracker::MostAsked; ++round)
        for (const auto& question : Subject.TakeDue(Now += 1ms))
            Subject.Answer(question.ID, question.Host == "10.0.0.7" ? std::optional(Identity("real")) : std::nullopt,
                           Now);
    EXPECT_THAT(Subject.Units(), ElementsAre(HasGUID("first"), HasGUID("real")));
}

TEST_F(Tracker, ManyNamesOrAddressesOfOneUnitKeepNoOtherOut) {
    const auto name = [](int number) { return "name " + std::to_string(number); };
    for (int number = 0; number < 300; ++number)
        Subject.Announce(Announced(name(number)), Now);
    EXPECT_EQ(Subject.TakeDue(Now).size(), 1U) << "one question to one address";
    for (int number = 0; number < 299; ++number)
        Subject.Withdraw(name(number));
    AnswerAll(std::nullopt);
    const auto answerFor = [&](const char* guid) {
        for (bool asked = true; asked; Now += 1ms) {
            const auto questions = Subject.TakeDue(Now);
            asked = !questions.empty();
            for (const auto& question : questions)
                Subject.Answer(question.ID, Identity(question.Host.starts_with("10.0.") ? question.Host : guid), Now);
        }
    };
    for (int number = 0; number < 300; ++number)
        Subject.Announce(Announced("address " + name(number), Address(number)), Now);
    answerFor("one");
    Subject.Announce(Announced("other", "10.0.0.7"), Now);
    answerFor("one");
    EXPECT_THAT(Subject.Units(), testing::IsSupersetOf({HasGUID("one"), HasGUID("10.0.0.7")}));

    for (int number = 0; number < 300; ++number)
        Subject.Announce(Announced("port " + name(number), "10.0.0.9", 1'000 + number), Now);
    Subject.Announce(Announced("third", "10.0.0.8"), Now);
    std::map<std::string, std::size_t> asked;
    for (const auto& question : Subject.TakeDue(Now))
        ++asked[question.Host.substr(0, question.Host.find(':'))];
    EXPECT_EQ(asked["10.0.0.9"], UnitTracker::MostAskedOfOne);
    EXPECT_EQ(asked["10.0.0.8"], 1U);
}

TEST(Names, OfWhoHasMostMakeRoom) {
    AnnouncedNames names;
    names.Add("first");
    names.SetPlace("first", "10.0.0.1");
    for (std::size_t number = 1; number < AnnouncedNames::Most; ++number) {
        EXPECT_EQ(names.Add(std::to_string(number)), std::nullopt);
        if (number < 400) names.SetPlace(std::to_string(number), "10.0.0.9");
    }
    EXPECT_EQ(names.Add("second"), "399") << "of the machine that has most";
    names.SetPlace("second", "10.0.0.2");
    for (std::size_t number = 0; number < AnnouncedNames::Most; ++number)
        names.Add("forged " + std::to_string(number));
    EXPECT_NE(names.Add("forged again"), "forged again") << "the oldest of which nothing is known goes";
    EXPECT_EQ(names.Add("first"), std::nullopt);
    EXPECT_EQ(names.Add("second"), std::nullopt);
}

TEST_F(Tracker, LateAnswerOfAnEarlierPlaceIsIgnored) {
    Subject.Announce(Announced("k", "10.0.0.1"), Now);
    const auto first = Subject.TakeDue(Now).at(0);
    EXPECT_THAT(Subject.TakeDue(Now), IsEmpty());
    Subject.Announce(Announced("k", "10.0.0.2"), Now);
    Subject.Answer(first.ID, Identity("old"), Now);
    EXPECT_THAT(Subject.Units(), IsEmpty());
}

TEST(Service, ListsWhoAnswersAndRestsWhenNobodyAsks) {
    auto first = std::make_unique<ScriptedUnit>("unit-1");
    const ScriptedUnit second("unit-2");
    const std::vector<AnnouncedUnit> announced = {
        Announced("1", "127.0.0.1", first->Port), Announced("2", "127.0.0.1", second.Port),
        Announced("dead", "127.0.0.1", 1), Announced("garbage", "not a host", 1)};
    std::atomic<ServiceListener*> listener{nullptr};
    DiscoveryService service(
        [&](ServiceListener& given) {
            listener = &given;
            for (const auto& unit : announced)
                given.OnAnnounced(unit);
            return std::make_unique<FakeBrowser>();
        },
        MakeUnitProber(), 1s);
    EXPECT_EQ(FakeBrowser::Running, 0);
    ASSERT_TRUE(WaitUntil([&] { return service.Units().size() == 2; }));
    EXPECT_EQ(FakeBrowser::Running, 1);
    listener.load()->OnWithdrawn("2");
    EXPECT_THAT(service.Units(), ElementsAre(HasGUID("unit-1")));
    first.reset();
    EXPECT_TRUE(WaitUntil([&] { return service.Units().empty(); }));
    EXPECT_TRUE(WaitUntil([&] { return FakeBrowser::Running == 0; }));
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
            MakeUnitProber(), 200ms);
        EXPECT_TRUE(WaitUntil([&] { return service.Units().empty() && tries == 1; }));
    }
    EXPECT_EQ(testing::internal::GetCapturedStderr(),
              "libzorvic: the network cannot be searched for units: the port is taken\n");
}

TEST(Loopback, AnnouncedUnitIsFoundAndLeavesWithItsGoodbye) {
    setenv("ZORVIC_DISCOVERY", "lo", 1);
    const ScriptedUnit server("guid-of-the-answer");
    ZorvicUnit::AnnouncerConfig config;
    config.Address = "127.0.0.1";
    config.Port = static_cast<std::uint16_t>(server.Port);
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
