#include "door/conduct.h"
#include "door/door.h"
#include "door/guests.h"
#include "door/peer.h"
#include "support/childprocess.h"
#include "unit/raw_client.h"

#include <gmock/gmock.h>

#include <sys/resource.h>

#include <mutex>

using namespace ZorvicUnit;
using namespace std::chrono_literals;

namespace {

TEST(Peers, AreNamedAlikeByTheLibraryAndTheirSockets) {
    EXPECT_EQ(PeerFromName("ipv6:%5Bfe80::1%252%5D:443").Name, "ipv6:[fe80::1%2]:443");
    EXPECT_EQ(PeerFromName("ipv6:%5B::1%5D:443").Host, "ipv6:[::1]");
    EXPECT_EQ(PeerFromName("ipv4:192.0.2.1:50000").Host, "ipv4:192.0.2.1");
}

TEST(Conduct, ToleratesConsolesAndNoFloods) {
    const auto stream = [](std::uint64_t count, std::uint64_t answered, std::uint64_t bytes) {
        return [=](Traffic& traffic) {
            traffic.Started += count;
            traffic.Succeeded += answered;
            traffic.Failed += count - answered;
            traffic.BytesReceived += bytes;
        };
    };
    const auto watching = [](Traffic& traffic) {
        traffic.Started = 1;
        traffic.MessagesSent += 7;
        traffic.BytesReceived += 100;
    };
    // What one second brings, and the verdict; without one it goes on for ever.
    const std::tuple<const char*, const char*, std::function<void(Traffic&)>> cases[] = {
        {"a console that only watches", nullptr, watching},
        {"a benchmark", nullptr, stream(5'000, 5'000, 5'000'000)},
        {"a restore of large presets", nullptr, stream(50, 50, 50'000'000)},
        {"listings of a slow drive", nullptr, stream(7, 0, 2'000)},
        {"a flood of resets", "it gives up too many requests", stream(10'000, 0, 300'000)},
        {"one that answers hide", "it gives up too many requests", stream(10'000, 5'000, 300'000)},
        {"a message without end", "it sends more than its requests may hold", stream(0, 0, 20'000'000)},
        {"half a request", "its requests do not come to an end", [](Traffic& traffic) { traffic.Started = 1; }},
    };
    for (const auto& [what, expected, bring] : cases) {
        Conduct conduct;
        Traffic traffic;
        Conduct::TimePoint now{};
        const char* verdict = nullptr;
        for (int second = 0; second < 600 && !verdict; ++second) {
            bring(traffic);
            verdict = conduct.Judge(traffic, now += 1s);
        }
        EXPECT_STREQ(verdict, expected) << what;
    }
}

TEST(Guests, GiveUpPlacesAsTheyNeedThemLeast) {
    Guests inside;
    const Guests::TimePoint start{};
    const auto add = [&](int number, const char* host, Standing standing) {
        inside.Add(number, host, start + number * 1ms);
        inside.SetStanding(number, standing, start + number * 1ms);
    };
    add(1, "few", Standing::Asks);
    for (const int number : {2, 3})
        add(number, "many", Standing::Asks);
    add(4, "few", Standing::Mute);
    add(5, "slow", Standing::Arriving);
    for (const int number : {6, 7, 8})
        add(number, "consoles", Standing::Watches);
    const auto leaves = [&](const char* host, Shortage shortage = Shortage::NoPlace) {
        const auto first = inside.WhoMakesRoom(host, shortage, start + 3s);
        inside.Remove(first.value_or(0));
        return first.value_or(0);
    };
    EXPECT_EQ(inside.WhoMakesRoom("new", Shortage::NoPlace, start), std::nullopt) << "nobody is judged at once";
    EXPECT_EQ(leaves("consoles", Shortage::HostHasItsShare), 0);
    EXPECT_EQ(leaves("many", Shortage::TooManyArrive), 5);
    EXPECT_EQ(leaves("new", Shortage::TooManyArrive), 0);
    EXPECT_EQ(leaves("many"), 4);
    EXPECT_EQ(leaves("consoles"), 2) << "who holds most";
    EXPECT_EQ(leaves("few"), 1) << "not of those that have as few";
    EXPECT_EQ(leaves("consoles"), 3) << "those that watch are not counted";
    EXPECT_EQ(leaves("consoles"), 0);
    EXPECT_EQ(leaves(""), 0);
    EXPECT_EQ(leaves("new"), 8);
    EXPECT_EQ(leaves("new"), 7);
    EXPECT_EQ(leaves("new"), 0) << "each host keeps one";
}

TEST(Guests, WaitInSharesPerHost) {
    Guests waiting;
    const Guests::TimePoint start{};
    for (const int number : {1, 2, 3})
        waiting.Add(number, number == 1 ? "few" : "many", start + number * 1ms);
    waiting.SetStanding(2, Standing::Asks, start);
    EXPECT_EQ(waiting.WhoStopsWaiting("new"), 3);
    EXPECT_EQ(waiting.WhoStopsWaiting("many"), 3);
    waiting.SetStanding(3, Standing::Asks, start + 1s);
    EXPECT_EQ(waiting.WhoStopsWaiting("new"), 2);
    EXPECT_EQ(waiting.WhoStopsWaiting("few"), 1);
    EXPECT_EQ(waiting.WhoStopsWaiting("many"), std::nullopt);
}

/// A door to a room in which nobody serves: who gets in stays.
class DoorTest : public ::testing::Test {
protected:
    std::size_t Inside() {
        const std::scoped_lock lock(Lock);
        return Guests.size();
    }
    bool GetsIn(RawClient& client) {
        const std::size_t before = Inside();
        client.Greet();
        return WaitUntil([&] { return Inside() > before; });
    }

    ListeningSocket Socket{"127.0.0.1", 0};
    std::mutex Lock;  // guards Guests
    std::vector<Descriptor> Guests;
    Door Entrance{Socket, {.Connections = 8, .PerHost = 4, .Waiting = 8}, [this](int socket) {
                      const std::scoped_lock lock(Lock);
                      Guests.emplace_back(socket);
                  }};
};

TEST_F(DoorTest, WhoSaysNothingTakesNobodysPlace) {
    std::vector<RawClient> mute;
    for (int number = 0; number < 100; ++number)
        mute.emplace_back(Socket.Address());
    RawClient client(Socket.Address());
    EXPECT_TRUE(GetsIn(client));
    EXPECT_EQ(Inside(), 1U);
    EXPECT_TRUE(WaitUntil([&] { return std::ranges::none_of(mute, &RawClient::Read); })) << "none is kept for ever";
    EXPECT_TRUE(client.Read());
}

TEST_F(DoorTest, AcceptsAgainAfterDescriptorsRanOut) {
    RawClient first(Socket.Address());
    RawClient second(Socket.Address());
    ASSERT_TRUE(GetsIn(first));
    rlimit before{};
    getrlimit(RLIMIT_NOFILE, &before);
    const rlimit none{0, before.rlim_max};
    RawClient early(Socket.Address());
    setrlimit(RLIMIT_NOFILE, &none);
    early.Greet();
    second.Greet();
    EXPECT_TRUE(WaitUntil([&] { return !early.Read() || !second.Read(); })) << "nobody is left standing";
    setrlimit(RLIMIT_NOFILE, &before);
    RawClient late(Socket.Address());
    EXPECT_TRUE(GetsIn(late));
}

}  // namespace
