#include <zorvic/session.h>

#include "channel.h"
#include "scripted_unit.h"
#include "support/childprocess.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <future>

using namespace Zorvic;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// Counts events; registers for all types.
struct Recorder {
    explicit Recorder(Session& session) {
        for (int type = ZORVIC_STATE_PRESETS; type < ZORVIC_STATE_MAX; ++type)
            session.SetStateEventCallback(static_cast<StateEventType>(type), OnEvent, this);
        EXPECT_TRUE(AllReach(1)) << "a registration is answered at once";
        for (auto& count : Counts)
            count = 0;
    }
    static void OnEvent(StateEventType type, void* user) {
        ++static_cast<Recorder*>(user)->Counts.at(std::size_t(type));
    }
    bool AllReach(int least) {
        return WaitUntil([&] {
            return std::all_of(Counts.begin() + ZORVIC_STATE_PRESETS, Counts.end(), [&](int n) { return n >= least; });
        });
    }
    std::array<std::atomic<int>, ZORVIC_STATE_MAX> Counts{};
};

Preset OnlyPreset(Session& session) {
    std::vector<Preset> presets;
    EXPECT_EQ(session.GetPresets(presets), ZORVIC_STATUS_OK);
    return presets.at(0);
}

}  // namespace

TEST(Host, TextsBecomeTargetsOrNothing) {
    using Internal::ChannelTarget;
    EXPECT_EQ(ChannelTarget("127.0.0.1"), "dns:///127.0.0.1:9477");
    EXPECT_EQ(ChannelTarget("unit-3.local:80"), "dns:///unit-3.local:80");
    EXPECT_EQ(ChannelTarget("[::1]:80"), "dns:///[::1]:80");
    EXPECT_EQ(ChannelTarget("[::1]"), "dns:///[::1]:9477");
    EXPECT_EQ(ChannelTarget("fe80::1%eth0"), "dns:///[fe80::1%25eth0]:9477");
    for (const char* nonsense : {"", " ", ":", ":80", "host:", "host:0", "host:65536", "host:8o", "unix:/tmp/x", "a b",
                                 "[::1", "[]:80", "[::1]80", "http://host", "\xff\xfe"}) {
        EXPECT_EQ(ChannelTarget(nonsense), std::nullopt) << nonsense;
    }
}

TEST(Session, WithoutAUnitEverythingIsANetworkError) {
    setenv("ZORVIC_TLS_DIR", "/nowhere", 1);
    const ScriptedUnit plain;
    EXPECT_FALSE(Session(plain.Host(), 1).Connected()) << "who asks for encryption never gets plaintext";
    unsetenv("ZORVIC_TLS_DIR");
    for (const char* host : {"", "not a host", "127.0.0.1:1", "no-such-name.invalid"}) {
        Session session(host, 1);
        std::vector<Preset> presets;
        EXPECT_FALSE(session.Connected()) << host;
        EXPECT_EQ(session.GetHost(), host);
        EXPECT_EQ(session.GetPresets(presets), ZORVIC_STATUS_NETWORKERROR);
        EXPECT_EQ(session.Take(1), ZORVIC_STATUS_NETWORKERROR);
        EXPECT_EQ(session.UpdatePreset(Preset()), ZORVIC_STATUS_NETWORKERROR);
    }
}

TEST(Session, EditSendsWhatDiffersAndUndoesNobodysEdit) {
    ScriptedUnit unit;
    Wire::Preset stored = NamedPreset(1, "Opening");
    stored.set_freeze_at_end(true);
    unit.Store(stored);
    Session session(unit.Host(), 1);
    Preset copy = OnlyPreset(session);
    EXPECT_EQ(session.UpdatePreset(copy), ZORVIC_STATUS_OK);
    EXPECT_THAT(unit.Updates(), IsEmpty());

    stored.set_notes("another console's");
    unit.Store(stored);
    ASSERT_TRUE(WaitUntil([&] { return OnlyPreset(session).Notes == stored.notes(); })) << "a refresh reads it";
    copy.Name = "Closing";
    EXPECT_EQ(session.UpdatePreset(copy), ZORVIC_STATUS_OK);
    copy.FreezeAtEnd = false;
    EXPECT_EQ(session.UpdatePreset(copy), ZORVIC_STATUS_OK);
    ASSERT_EQ(unit.Updates().size(), 2U);
    EXPECT_THAT(unit.Updates()[0].fields().paths(), ElementsAre("name"));
    EXPECT_THAT(unit.Updates()[1].fields().paths(), ElementsAre("freeze_at_end")) << "the name was sent already";
    EXPECT_EQ(unit.Updates()[1].preset().name(), "") << "what did not change does not travel";
    EXPECT_EQ(unit.Stored(1).notes(), "another console's");
    EXPECT_EQ(unit.Stored(1).name(), "Closing");
    EXPECT_FALSE(unit.Stored(1).freeze_at_end());

    copy.PK = 99;
    EXPECT_EQ(session.UpdatePreset(copy), ZORVIC_STATUS_OK) << "a preset never read is sent whole";
    EXPECT_EQ(unit.Updates()[2].fields().paths_size(), 18);
}

TEST(Session, ReadAfterACommandShowsItsEffect) {
    ScriptedUnit unit;
    unit.Store(NamedPreset(1, "Opening"));
    unit.StreamDelay = 30ms;
    Session session(unit.Host(), 1);
    for (Preset copy = OnlyPreset(session); copy.Name.size() < 17; copy.Name += '!') {
        ASSERT_EQ(session.UpdatePreset(copy), ZORVIC_STATUS_OK);
        ASSERT_EQ(OnlyPreset(session).Name, copy.Name);
    }
}

TEST(Session, RefusedCommandAsksThisConsoleToLookAgain) {
    ScriptedUnit unit;
    unit.Store(NamedPreset(1, "Opening"));
    Session session(unit.Host(), 1);
    Recorder recorder(session);
    Preset copy = OnlyPreset(session);
    copy.Name = "Closing";
    const std::pair<grpc::StatusCode, StatusCode> answers[] = {{grpc::INVALID_ARGUMENT, ZORVIC_STATUS_MISUSED},
                                                               {grpc::NOT_FOUND, ZORVIC_STATUS_FAILED},
                                                               {grpc::FAILED_PRECONDITION, ZORVIC_STATUS_FAILED},
                                                               {grpc::RESOURCE_EXHAUSTED, ZORVIC_STATUS_FAILED},
                                                               {grpc::INTERNAL, ZORVIC_STATUS_INTERNALERROR}};
    for (const auto& [wire, expected] : answers) {
        unit.AnswerCommandsWith({wire, "no"});
        const int before = recorder.Counts[ZORVIC_STATE_PRESETSTATES];
        EXPECT_EQ(session.UpdatePreset(copy), expected);
        EXPECT_TRUE(WaitUntil([&] { return recorder.Counts[ZORVIC_STATE_PRESETSTATES] > before; }));
    }
    EXPECT_EQ(session.InstallAsset("E:\\clip.mov"), ZORVIC_STATUS_UNIMPLEMENTED);
    EXPECT_EQ(session.DeleteAsset("\xff"), ZORVIC_STATUS_MISUSED) << "text that the protocol cannot carry";
    EXPECT_GT(recorder.Counts[ZORVIC_STATE_PRESETS], 0);
    EXPECT_EQ(recorder.Counts[ZORVIC_STATE_ASSETS], 0);
    unit.AnswerCommandsWith(grpc::Status::OK);
    EXPECT_EQ(session.UpdatePreset(copy), ZORVIC_STATUS_OK) << "a refused edit still differs";
    EXPECT_EQ(unit.Stored(1).name(), "Closing");
}

TEST(Session, SlowListingFailsAndReadsOfWhatCameOnTheStreamCostNoCall) {
    ScriptedUnit unit;
    Session session(unit.Host(), 1);
    std::vector<ExternalAsset> entries;
    EXPECT_EQ(session.GetDiskAssets(entries, "E", ""), ZORVIC_STATUS_FAILED);
    EXPECT_TRUE(session.Connected());
    TimeCode timeCode;
    EXPECT_EQ(session.GetTimeCode(timeCode, 3), ZORVIC_STATUS_FAILED) << "it does not play";
    Wire::Piece assets;
    assets.mutable_assets()->add_upserted()->set_full_path("C:\\Assets\\raw.mov");
    Wire::Asset& probed = *assets.mutable_assets()->add_upserted();
    probed.set_full_path("C:\\Assets\\a.mov");
    probed.mutable_metadata()->set_duration_ms(10000);
    unit.SendPiece(assets);
    Wire::Piece timeCodes;
    timeCodes.mutable_timecodes()->add_timecodes()->set_pk(3);
    timeCodes.mutable_timecodes()->mutable_timecodes(0)->add_levels(40);
    unit.SendPiece(timeCodes);
    EXPECT_TRUE(WaitUntil([&] { return session.GetTimeCode(timeCode, 3) == ZORVIC_STATUS_OK; }));
    EXPECT_THAT(timeCode.VUData, ElementsAre(40));
    AssetMetadata metadata;
    EXPECT_EQ(session.ReadAssetMetadata("C:\\Assets\\a.mov", metadata), ZORVIC_STATUS_OK);
    EXPECT_EQ(metadata.Duration, 10000);
    EXPECT_EQ(session.ReadAssetMetadata("C:\\Assets\\raw.mov", metadata), ZORVIC_STATUS_UNIMPLEMENTED)
        << "asked the unit";
}

TEST(Session, FrozenUnitCancelsTheCallInFlightAndReconnectStartsOver) {
    ScriptedUnit unit;
    unit.Store(NamedPreset(1, "Opening"));
    Session session(unit.Host(), 1);
    Recorder recorder(session);
    unit.Frozen = true;
    EXPECT_EQ(session.Take(1), ZORVIC_STATUS_NETWORKERROR);
    EXPECT_TRUE(WaitUntil([&] { return !session.Connected(); }));
    EXPECT_EQ(unit.TakesStarted, 1);
    std::vector<Preset> presets;
    EXPECT_EQ(session.GetPresets(presets), ZORVIC_STATUS_NETWORKERROR);
    EXPECT_EQ(session.Take(1), ZORVIC_STATUS_NETWORKERROR);
    EXPECT_EQ(unit.TakesStarted, 1) << "without a link nothing is sent";
    EXPECT_EQ(session.Reconnect(""), ZORVIC_STATUS_NETWORKERROR);

    unit.Store(NamedPreset(1, "Closing"));
    unit.Frozen = false;
    EXPECT_TRUE(WaitUntil([&] { return session.Connected(); })) << "the attempt went on in the background";
    EXPECT_EQ(OnlyPreset(session).Name, "Closing");
    EXPECT_TRUE(recorder.AllReach(1)) << "registrations survive, and each hears of the new snapshot";
}

TEST(Session, GarbageCostsTheLinkWhichComesBackToThisUnitAndToNoOther) {
    ScriptedUnit unit("unit-1");
    const ScriptedUnit stranger("unit-2");
    const ScriptedUnit moved("unit-1");
    Session session(unit.Host(), 1);
    Wire::Frame garbage = MakeFrame(100, {});
    garbage.add_pieces("\xff\xff\xff");
    unit.Send(garbage);
    ASSERT_TRUE(WaitUntil([&] { return !session.Connected(); }));
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(session.Reconnect(stranger.Host()), ZORVIC_STATUS_NETWORKERROR);
    EXPECT_TRUE(WaitUntil([&] { return session.Reconnect(moved.Host()) == ZORVIC_STATUS_OK; }));
    std::string guid;
    std::string nickname;
    EXPECT_EQ(session.GetUnitID(guid, nickname), ZORVIC_STATUS_OK);
    EXPECT_EQ(guid, "unit-1");
    EXPECT_EQ(session.GetHost(), unit.Host());
}

// Each must end by itself; what it must not do is crash, hang, or call back afterwards.
TEST(Session, MayBeDestroyedInAnyState) {
    ScriptedUnit silent;
    silent.Frozen = true;
    for (const std::string& host : {silent.Host(), std::string("no-such-name.invalid"), std::string("127.0.0.1:1")}) {
        ScriptedUnit unit;
        Session session(unit.Host(), 1);
        ASSERT_TRUE(session.Connected());
        EXPECT_EQ(session.Reconnect(host), ZORVIC_STATUS_NETWORKERROR);
    }
    ScriptedUnit busy;
    busy.Store(NamedPreset(1, "Opening"));
    for (int i = 0; i < 20; ++i) {
        auto session = std::make_unique<Session>(busy.Host(), 1);
        Recorder recorder(*session);
        auto traffic = std::async(std::launch::async, [&] {
            for (int n = 0; n < 50; ++n)
                busy.Store(NamedPreset(1, std::to_string(n)));
        });
        session.reset();
        const int before = recorder.Counts[ZORVIC_STATE_PRESETS];
        traffic.get();
        EXPECT_EQ(recorder.Counts[ZORVIC_STATE_PRESETS], before);
    }
}
