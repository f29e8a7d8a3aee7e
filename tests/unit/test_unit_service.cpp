#include "assets/asset_store.h"
#include "conversions.h"
#include "daemon/ticker.h"
#include "feed/feed.h"
#include "model/asset_link.h"
#include "model/unit_model.h"
#include "outputs/previews.h"
#include "rpc/server.h"
#include "rpc/unit_service.h"
#include "store/database.h"
#include "support/childprocess.h"
#include "support/wallclock.h"
#include "unit/unitfakes.h"

#include <grpcpp/create_channel.h>
#include <zorvic/extras.h>
#include <zorvic/preview.h>
#include <zorvic/session.h>

#include <fstream>
#include <future>
#include <thread>

using namespace ZorvicUnit;
using Zorvic::Session;

namespace {

constexpr auto Clip = "C:\\Assets\\clip.mov";

/// Makes a command slow that has been written already.
struct SlowCatalog : FakeCatalog {
    SlowCatalog() { Durations[Clip] = 10'000; }
    std::optional<std::int32_t> DurationMS(const std::string& path) const override {
        while (Slow)
            SleepBriefly();
        return FakeCatalog::DurationMS(path);
    }
    std::atomic<bool> Slow = false;
};

UnitModel::Profile NamedProfile() {
    UnitModel::Profile profile;
    profile.Identity.set_guid("unit-1");
    return profile;
}

zorvic::v1::Identity FromVersionOne() {
    zorvic::v1::Identity identity;
    identity.set_api_version("1.1");
    return identity;
}

std::vector<Zorvic::Preset> PresetsOf(Session& session) {
    std::vector<Zorvic::Preset> presets;
    EXPECT_EQ(session.GetPresets(presets), Zorvic::ZORVIC_STATUS_OK);
    return presets;
}

/// Remaining time; -1 when there is none.
int PositionOf(Session& session, int pk) {
    Zorvic::TimeCode code;
    return session.GetTimeCode(code, pk) == Zorvic::ZORVIC_STATUS_OK ? code.Time : -1;
}

zorvic::render::PreviewPicture PictureOf(char grey, int ageMS) {
    zorvic::render::PreviewPicture picture;
    picture.set_output(2);
    picture.set_width(2);
    picture.set_height(1);
    picture.set_rgb(std::string(6, grey));
    picture.set_signal(true);
    const auto at = std::chrono::steady_clock::now() - std::chrono::milliseconds(ageMS);
    picture.set_at(std::chrono::nanoseconds(at.time_since_epoch()).count());
    return picture;
}

/// A unit in the test's own process, with one preset of 10 s, and a console on it.
class ServedUnitTest : public ::testing::Test {
protected:
    ServedUnitTest() { Client.CreatePreset(Zorvic::Internal::FromWire(PresetWith(0, Clip))); }

    TemporaryDirectory Directory;
    TemporaryDirectory Usb;
    Database Store{Directory.Path() + "/zorvic.db"};
    FakeClock Time;
    SlowCatalog Catalog;
    Feed Updates;
    UnitModel Model{NamedProfile(), Store, Time, Catalog, Updates};
    AssetStore Assets{{.StoreDirectory = Directory.Path(), .Drives = {{"E", Usb.Path()}}, .Watch = false}, Store, Time};
    AssetLink Link{Assets, Model};
    Previews Pictures;
    UnitService Service{FromVersionOne(), Model,    Assets,      Link,
                        Updates,          Pictures, [](auto) {}, std::chrono::milliseconds(400)};
    Server Requests{Service, "127.0.0.1", 0};
    Session Client{Requests.Address(), 1};
};

TEST_F(ServedUnitTest, EveryConsoleHearsOfEveryCueAndPausedPosition) {
    std::atomic<int> heard = 0;
    Session other(Requests.Address(), 1);
    const auto count = [](auto, void* user) { ++*static_cast<std::atomic<int>*>(user); };
    other.SetStateEventCallback(Zorvic::ZORVIC_STATE_TIMECODE, count, &heard);
    EXPECT_TRUE(WaitUntil([&] { return heard == 1; })) << "the registration is answered";
    const auto take = [&] {
        Client.Take(1);
        Time.Pass(500);
        Model.Tick();
        return Client.SelectPreset(1);  // waits for what the tick has sent
    };
    const std::vector<std::tuple<const char*, std::function<Zorvic::StatusCode()>, int>> steps = {
        {"set", [&] { return Client.SeekTo(1, 4'000); }, 4'000},
        {"dropped", [&] { return Client.End(1); }, -1},
        {"used up", take, 9'500},
        {"paused and moved", [&] { return Client.Pause(1), Client.SeekTo(1, 7'000); }, 7'000},
        {"ended", [&] { return Client.End(1); }, -1}};
    for (const auto& [step, command, position] : steps) {
        SCOPED_TRACE(step);
        const int expected = position;
        const int before = heard;
        EXPECT_EQ(command(), Zorvic::ZORVIC_STATUS_OK);
        EXPECT_EQ(PositionOf(Client, 1), expected) << "on return";
        EXPECT_TRUE(WaitUntil([&] { return heard > before && PositionOf(other, 1) == expected; }));
        Session fresh(Requests.Address(), 1);
        EXPECT_EQ(PositionOf(fresh, 1), expected);
        const auto revision = Model.Revision();
        Model.Tick();
        EXPECT_EQ(Model.Revision(), revision) << "what does not move is not sent again";
    }
    other.SetStateEventCallback(Zorvic::ZORVIC_STATE_TIMECODE, nullptr, nullptr);
}

TEST_F(ServedUnitTest, WhoCommandsIsAnsweredAtOnceHoweverManyWatch) {
    std::vector<std::unique_ptr<Feed::Subscription>> crowd(200);  // each is told of changes every 50 ms
    for (auto& one : crowd)
        one = std::make_unique<Feed::Subscription>(Updates);
    std::vector<std::chrono::steady_clock::duration> took;
    for (std::uint32_t number = 1; number <= 10; ++number) {
        const auto begin = std::chrono::steady_clock::now();
        EXPECT_EQ(Client.SeekTo(1, 100 * number), Zorvic::ZORVIC_STATUS_OK);
        took.push_back(std::chrono::steady_clock::now() - begin);
        EXPECT_EQ(PositionOf(Client, 1), int(100 * number));
    }
    std::ranges::sort(took);
    EXPECT_LT(took[2], std::chrono::milliseconds(30)) << "the machine itself may be slow now and then";
}

TEST_F(ServedUnitTest, ASlowDiskDelaysNoTakeAndAWriteThatIsGivenUpIsNotDone) {
    Session editor(Requests.Address(), 1);
    std::optional<Transaction> slow(std::in_place, Store);
    auto late = std::async(std::launch::async, [&] { return editor.CreateGoto(1, 500, "late"); });
    EXPECT_EQ(Client.Take(1), Zorvic::ZORVIC_STATUS_OK);
    Time.Pass(500);
    Model.Tick();
    EXPECT_TRUE(WaitUntil([&] { return PositionOf(Client, 1) == 9'500; }));
    EXPECT_EQ(late.get(), Zorvic::ZORVIC_STATUS_NETWORKERROR);
    EXPECT_TRUE(editor.Connected());
    slow.reset();
    Service.Drain(std::chrono::seconds(20));
    EXPECT_TRUE(PresetsOf(editor)[0].Gotos.empty());
    Session fresh(Requests.Address(), 1);
    EXPECT_TRUE(PresetsOf(fresh)[0].Gotos.empty());
}

TEST_F(ServedUnitTest, ADeletionThatIsGivenUpBehindASlowDiskHoldsUpNoTakeAndEndsNoImport) {
    Assets.Start();
    std::ofstream(Usb / "clip.mov") << "RIFF";
    std::filesystem::resize_file(Usb / "clip.mov", 200'000'000);
    ASSERT_EQ(Client.InstallAsset("E:\\clip.mov"), Zorvic::ZORVIC_STATUS_OK);
    Session editor(Requests.Address(), 1);
    std::optional<Transaction> slow(std::in_place, Store);
    auto late = std::async(std::launch::async, [&] { return editor.DeleteAsset(Clip); });
    std::this_thread::sleep_for(std::chrono::milliseconds(200));
    EXPECT_EQ(Client.Take(1), Zorvic::ZORVIC_STATUS_OK);
    EXPECT_EQ(late.get(), Zorvic::ZORVIC_STATUS_NETWORKERROR);
    slow.reset();
    Service.Drain(std::chrono::seconds(20));
    EXPECT_EQ(Store.Number("SELECT count(*) FROM imports"), 1) << "on its way, or failed";
    EXPECT_THAT(Assets.TakeChanges().Removed, testing::IsEmpty());
}

// Neither the link's liveness nor the limits of commands, of one that hangs least of all.
TEST_F(ServedUnitTest, NobodyNoticesThatTheWallClockIsSet) {
    const std::jthread setter([](const std::stop_token& stop) {
        for (int hours = 0; !stop.stop_requested(); hours = (hours + 7) % 24) {
            SetWallClock(std::chrono::hours(hours));
            SleepBriefly();
        }
        SetWallClock({});
    });
    std::optional<Transaction> slow(std::in_place, Store);
    EXPECT_EQ(Client.CreateGoto(1, 500, "late"), Zorvic::ZORVIC_STATUS_NETWORKERROR);
    slow.reset();
    for (int time = 1'000; time < 1'020; ++time)
        ASSERT_EQ(Client.CreateGoto(1, time, "on time"), Zorvic::ZORVIC_STATUS_OK) << time;
}

TEST_F(ServedUnitTest, ACreationWhoseAnswerIsLostIsDoneOnceHoweverOftenItIsTried) {
    Zorvic::Preset preset = PresetsOf(Client)[0];
    Catalog.Slow = true;
    EXPECT_EQ(Client.CreatePreset(preset), Zorvic::ZORVIC_STATUS_NETWORKERROR);
    EXPECT_EQ(Client.CreatePreset(preset), Zorvic::ZORVIC_STATUS_NETWORKERROR);
    Catalog.Slow = false;
    EXPECT_EQ(Client.CreatePreset(preset), Zorvic::ZORVIC_STATUS_OK);
    EXPECT_EQ(LastCreatedPreset(Client), 2) << "which was made by the first one";
    EXPECT_EQ(PresetsOf(Client).size(), 2U);
    EXPECT_EQ(Client.CreatePreset(preset), Zorvic::ZORVIC_STATUS_OK);
    EXPECT_EQ(PresetsOf(Client).size(), 3U) << "a clone of the clone, asked for after the answer";
}

// A thread that sends heartbeats while the model is stuck would hide that from everybody.
TEST_F(ServedUnitTest, AModelThatStandsStillLosesItsConsoles) {
    const Ticker ticker(Model);
    EXPECT_FALSE(WaitUntil([&] { return !Client.Connected(); }, std::chrono::seconds(3))) << "idle is not stuck";
    Catalog.Slow = true;
    const std::jthread stuck([&] { Model.CreatePreset(PresetWith(0, Clip)); });
    EXPECT_TRUE(WaitUntil([&] { return !Client.Connected(); }));
    Catalog.Slow = false;
    EXPECT_TRUE(WaitUntil([&] { return Client.Reconnect("") == Zorvic::ZORVIC_STATUS_OK; }));
}

TEST_F(ServedUnitTest, PicturesAreMadeWhileSomebodyWatchesAndCarryTheirAge) {
    std::optional<Zorvic::OutputPreview> early(std::in_place, Requests.Address());
    std::atomic<int> heard = 0;
    Pictures.SetListener([&] { ++heard; });
    EXPECT_TRUE(WaitUntil([&] { return heard == 1 && Pictures.Wanted(); })) << "asks again when there are outputs";
    Pictures.Put(PictureOf(7, 0));
    EXPECT_TRUE(WaitUntil([&] { return early->Latest().size() == 1; }));
    const auto first = early->Latest().at(0);
    EXPECT_EQ(*first.RGB, std::vector<std::uint8_t>(6, 7));
    EXPECT_TRUE(first.Output == 2 && first.Width == 2 && first.Height == 1 && first.Signal);
    Pictures.Put(PictureOf(7, 60'000));
    EXPECT_TRUE(WaitUntil([&] { return early->Latest().at(0).Age >= std::chrono::seconds(60); }));
    EXPECT_EQ(early->Latest().at(0).RGB, first.RGB) << "not sent again";
    {
        const Zorvic::OutputPreview late(Requests.Address());
        EXPECT_TRUE(WaitUntil([&] { return late.Latest().size() == 1; })) << "without a new picture";
    }
    early.reset();
    EXPECT_TRUE(WaitUntil([&] { return heard == 2 && !Pictures.Wanted(); }));

    const Zorvic::OutputPreview last(Requests.Address());
    EXPECT_TRUE(WaitUntil([&] { return Pictures.Wanted(); }));
    Pictures.Close();
    EXPECT_TRUE(WaitUntil([&] { return !Pictures.Wanted(); })) << "no handler stays behind";
    EXPECT_TRUE(last.Latest().empty()) << "a picture of an earlier watch is not shown";
    Pictures.SetListener({});
}

TEST_F(ServedUnitTest, WatchersGetTheirShareOfPlacesAndLoseThemWhenTheyDoNotRead) {
    const auto stub =
        zorvic::v1::Unit::NewStub(grpc::CreateChannel(Requests.Address(), grpc::InsecureChannelCredentials()));
    std::vector<grpc::ClientContext> contexts(Places::PerConnection + 1);
    std::vector<std::unique_ptr<grpc::ClientReader<zorvic::v1::Frame>>> watchers;
    zorvic::v1::Frame frame;
    for (auto& context : contexts) {
        watchers.push_back(stub->Watch(&context, {}));
        const bool granted = watchers.size() <= Places::PerConnection;
        ASSERT_EQ(watchers.back()->Read(&frame), granted);
    }
    EXPECT_EQ(watchers.back()->Finish().error_code(), grpc::StatusCode::FAILED_PRECONDITION);
    Pictures.SetListener([] {});
    grpc::ClientContext beside;
    zorvic::v1::PreviewFrame picture;
    EXPECT_TRUE(stub->WatchPreview(&beside, {})->Read(&picture)) << "one kind leaves the others theirs";
    Pictures.SetListener({});
    Zorvic::Preset large = PresetsOf(Client)[0];
    large.Notes = std::string(60'000, 'n');
    // How much finds room on its way before a write gets stuck grows while the link is busy.
    EXPECT_TRUE(WaitUntil([&] {
        for (int number = 0; number < 10; ++number)
            EXPECT_EQ(Client.CreatePreset(large), Zorvic::ZORVIC_STATUS_OK);
        grpc::ClientContext context;
        return stub->Watch(&context, {})->Read(&frame);
    })) << "a place is free again";
    EXPECT_TRUE(Client.Connected());
}

TEST(Places, AreLeftForAHostThatHasNoneYet) {
    Places places(8, "all are taken");
    std::map<std::string, std::unique_ptr<Places::Place>> taken;
    std::map<std::string, std::future<void>> leaving;
    const auto take = [&](const std::string& host, const std::string& port) {
        const Peer peer{.Name = host + ':' + port, .Host = host};
        auto& place = taken[peer.Name];
        place = std::make_unique<Places::Place>(places, peer, [&, peer] {
            leaving[peer.Name] = std::async(std::launch::async, [&place] { place.reset(); });
        });
    };
    for (const char* port : {"1", "2", "3", "4", "5", "6", "7"})
        take("many", port);
    EXPECT_THROW(take("many", "8"), Fault) << "its share";
    take("one", "1");
    EXPECT_THROW(take("one", "2"), Fault) << "it has one";
    EXPECT_TRUE(leaving.empty());
    for (const char* host : {"a", "b"})
        take(host, "1");
    for (const char* port : {"6", "7"})
        EXPECT_EQ(leaving.count("many:" + std::string(port)), 1U) << port;
    EXPECT_EQ(leaving.size(), 2U);
    for (const char* host : {"c", "d", "e", "f"})
        take(host, "1");
    EXPECT_THROW(take("g", "1"), Fault) << "each keeps one";
}

TEST_F(ServedUnitTest, AConsoleOfAnotherMajorVersionIsToldWhatToDo) {
    const auto stub =
        zorvic::v1::Unit::NewStub(grpc::CreateChannel(Requests.Address(), grpc::InsecureChannelCredentials()));
    zorvic::v1::WatchRequest request;
    request.set_api_version("2.0");
    grpc::ClientContext context;
    const grpc::Status refused = stub->Watch(&context, request)->Finish();
    EXPECT_THAT(refused.error_message(), testing::HasSubstr("version 1.1 of the protocol and the console version 2.0"));
    zorvic::v1::Refusal refusal;
    EXPECT_TRUE(refusal.ParseFromString(refused.error_details()));
    EXPECT_EQ(refusal.reason(), zorvic::v1::REFUSAL_REASON_NOT_NOW);
}

}  // namespace
