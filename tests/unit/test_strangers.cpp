#include "support/unitprocess.h"
#include "unit/raw_client.h"

#include <gmock/gmock.h>
#include <grpcpp/create_channel.h>
#include <zorvic/extras.h>
#include <zorvic/session.h>
#include <zorvic/v1/unit.grpc.pb.h>

#include <atomic>
#include <optional>
#include <thread>

using testing::HasSubstr;
using namespace Zorvic;

namespace {

/// A unit whose network holds more than consoles, and a console on it.
class StrangersTest : public ::testing::Test {
protected:
    std::string Log() const { return ReadFile(Directory.Path() + "/store.log"); }
    std::size_t MegabytesAtMost() {
        const auto status = ReadFile("/proc/" + std::to_string(Unit.Process().Id()) + "/status");
        return std::stoul(status.substr(status.find("VmHWM:") + 6)) / 1024;
    }
    /// The stranger is at it again and again; then a console works as before. (What it notices meanwhile depends on the
    /// machine, and is for a benchmark.)
    template <typename Stranger>
    void WorksBeside(const Stranger& stranger) {
        {
            std::jthread other([&](const std::stop_token& stop) {
                while (!stop.stop_requested())
                    stranger(stop);
            });
            const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(3);
            while (std::chrono::steady_clock::now() < end)
                Console.Take(99);
        }
        EXPECT_TRUE(WaitUntil(
            [&] { return Console.Reconnect("") == ZORVIC_STATUS_OK && Console.Take(99) == ZORVIC_STATUS_FAILED; }));
    }

    /// One connection, until it is over; gives its last stream.
    std::uint32_t Flood(const std::stop_token& stop) const {
        RawClient flood(Unit.Host());
        flood.Greet();
        std::uint32_t stream = 1;
        while (!stop.stop_requested() && flood.Read()) {
            std::string bytes;
            for (int number = 0; number < 64; ++number, stream += 2)
                bytes += RawClient::Headers(stream, "Identify") + RawClient::Reset(stream);
            if (!flood.Send(bytes)) break;
        }
        return stream;
    }

    // Sanitizers take their share of it.
    static constexpr std::size_t MemoryLimit = 900;

    TemporaryDirectory Directory;
    UnitProcess Unit{Directory.Path() + "/store", {"--announce", "off"}};
    Session Console{Unit.Host(), 1};
};

TEST_F(StrangersTest, LongAndManyRefusalsCostNeitherLinkNorDisk) {
    std::string path = "C:\\Assets\\";
    while (path.size() < 900'000)
        path += "é\n";
    const auto start = std::chrono::steady_clock::now();
    int late = 0;  // as on a machine that stands still for 2 s
    for (int number = 0; number < 300; ++number) {
        const auto answer = Console.DeleteAsset(number % 10 == 0 ? path : path.substr(0, 3'012));
        if (answer != ZORVIC_STATUS_MISUSED) ++late;
        ASSERT_TRUE(Console.Connected());
    }
    EXPECT_LT(late, 3);
    EXPECT_EQ(Console.DeleteAsset(path + path), ZORVIC_STATUS_MISUSED) << "too large to be sent";
    EXPECT_TRUE(Console.Connected());
    EXPECT_THAT(Log(), HasSubstr("not larger than 16384 bytes"));
    const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - start;
    EXPECT_THAT(Log(), HasSubstr("delete asset C:\\Assets\\é?é?"));
    EXPECT_LT(double(Log().size()), (110 + 10 * passed.count()) * 2'200);
    EXPECT_TRUE(WaitUntil([&] {
        Console.Take(99);
        return Log().find("take preset 99: no such preset (and ") != std::string::npos;
    })) << "what is left out is counted";
}

TEST_F(StrangersTest, FloodsOfResetsAreCutOff) {
    std::atomic<std::uint32_t> most = 0;
    WorksBeside([&](const std::stop_token& stop) { most = std::max<std::uint32_t>(most, Flood(stop)); });
    EXPECT_GT(most, 400U);
    EXPECT_THAT(Log(), HasSubstr("gives up too many requests"));
    EXPECT_LT(MegabytesAtMost(), MemoryLimit);
}

TEST_F(StrangersTest, FloodsThatWaitKeepNoConsoleOfTheirHostOut) {
    const std::stop_source never;
    Flood(never.get_token());
    ASSERT_TRUE(WaitUntil([&] { return Log().find("gives up too many requests") != std::string::npos; }));
    // What is left of it may hold all of the server's threads for a moment.
    ASSERT_TRUE(WaitUntil([&] { return Session(Unit.Host(), 1).Connected(); }));
    std::string bytes;
    for (std::uint32_t stream = 1; bytes.size() < 40'000; stream += 2)
        bytes += RawClient::Headers(stream, "Identify") + RawClient::Reset(stream);
    std::vector<RawClient> floods;
    for (int number = 0; number < 40; ++number)
        floods.emplace_back(Unit.Host()).Greet(bytes);
    EXPECT_TRUE(WaitUntil([&] { return Session(Unit.Host(), 1).Connected(); }, std::chrono::seconds(1)));
}

TEST_F(StrangersTest, AMessageThatClaimsToBeHugeIsNotAwaited) {
    const std::string part = RawClient::Frame(0, 0, 1, std::string(16'000, 'x'));
    WorksBeside([&](const std::stop_token& stop) {
        RawClient client(Unit.Host());
        client.Greet();
        client.Send(RawClient::Headers(1, "CreatePreset") + RawClient::Frame(0, 0, 1, std::string("\0\x60\0\0\0", 5)));
        for (std::int64_t sent = 16'005; !stop.stop_requested() && client.Read();)
            while (sent <= std::min(client.Window, client.StreamWindow) && client.Send(part))
                sent += 16'000;
    });
    EXPECT_THAT(Log(), HasSubstr("sends more than its requests may hold"));
    EXPECT_LT(MegabytesAtMost(), MemoryLimit);
}

TEST_F(StrangersTest, PackedMessagesAreNotUnpacked) {
    const auto stub = zorvic::v1::Unit::NewStub(grpc::CreateChannel(Unit.Host(), grpc::InsecureChannelCredentials()));
    zorvic::v1::CreatePresetRequest request;
    request.mutable_preset()->set_notes(std::string(200'000'000, 'n'));
    grpc::ClientContext context;
    context.set_compression_algorithm(GRPC_COMPRESS_GZIP);
    zorvic::v1::CommandReply reply;
    const std::size_t before = MegabytesAtMost();
    EXPECT_FALSE(stub->CreatePreset(&context, request, &reply).ok());
    EXPECT_LT(MegabytesAtMost(), before + 100);
    EXPECT_EQ(Console.Take(99), ZORVIC_STATUS_FAILED);
}

TEST_F(StrangersTest, CrowdsOfIdleConnectionsKeepNoConsoleOut) {
    std::vector<RawClient> crowd;
    for (int number = 0; number < 1'500; ++number) {
        crowd.emplace_back(Unit.Host());
        if (number % 2 == 0) crowd.back().Greet();
    }
    EXPECT_TRUE(WaitUntil([&] { return Session(Unit.Host(), 1).Connected(); }));
    EXPECT_EQ(Console.Take(99), ZORVIC_STATUS_FAILED);
}

TEST_F(StrangersTest, CrowdsThatAskNowAndThenKeepNoConsoleOut) {
    std::atomic<bool> full = false;
    std::jthread crowd([&](const std::stop_token& stop) {
        std::vector<std::optional<RawClient>> clients(640);
        for (std::uint32_t stream = 1; !stop.stop_requested(); stream += 2) {
            for (unsigned number = 0; number < clients.size() && !stop.stop_requested(); ++number) {
                auto& client = clients[number];
                if (!client || !client->Read()) client.emplace(Unit.Host(), 2 + number % 8).Greet();
                client->Send(RawClient::Call(stream, number % 2 == 0 ? "Identify" : "ReadFigures"));
            }
            full = stream > 1;
            std::this_thread::sleep_for(std::chrono::milliseconds(300));
        }
    });
    ASSERT_TRUE(WaitUntil([&] { return full.load(); }));
    for (int number = 0; number < 3; ++number) {
        const auto start = std::chrono::steady_clock::now();
        Session late(Unit.Host(), 1);
        EXPECT_EQ(late.Take(99), ZORVIC_STATUS_FAILED) << LinkProblem(late);
        EXPECT_TRUE(late.Connected());
        EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(2)) << "slow as it is when sanitized";
        EXPECT_TRUE(Console.Connected());
        std::this_thread::sleep_for(std::chrono::milliseconds(500));
        EXPECT_TRUE(late.Connected()) << "and stays";
    }
}

}  // namespace
