#include <zorvic/session.h>

#include "channel.h"
#include "scripted_unit.h"
#include "support/childprocess.h"

#include <gmock/gmock.h>

#include <cstdlib>

using namespace Zorvic;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// Counts events; registers for all types.
struct Recorder {
    void Follow(Session& session) {
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

/// A session with a unit that has one preset.
struct Linked : testing::Test {
    static std::string Filled(ScriptedUnit& unit) {
        unit.Store("pk: 1 name: 'Opening' freeze_at_end: true");
        return unit.Host();
    }
    Preset OnlyPreset() {
        std::vector<Preset> presets;
        EXPECT_EQ(Client.GetPresets(presets), ZORVIC_STATUS_OK);
        return presets.at(0);
    }
    ScriptedUnit Unit;
    Recorder Events;  // outlives the session that calls it
    Session Client{Filled(Unit), 1};
};

}  // namespace

TEST(Host, TextsBecomeTargetsOrNothing) {
    using Internal::ChannelTarget;
    EXPECT_EQ(ChannelTarget("127.0.0.1"), "dns:///127.0.0.1:9477");
    EXPECT_EQ(ChannelTarget("unit-3.local:80"), "dns:///unit-3.local:80");
    EXPECT_EQ(ChannelTarget("[::1]:80"), "dns:///[::1]:80");
    EXPECT_EQ(ChannelTarget("[::1]"), "dns:///[::1]:9477");
    EXPECT_EQ(ChannelTarget("fe80::1%eth0"), "dns:///[fe80::1%25eth0]:9477");
    for (const char* nonsense : {"", " ", ":", ":80", "host:", "host:0", "host:65536", "host:8o", "unix:/tmp/x", "a b",
                                 "[::1", "[]:80", "[::1]80", "http://host", "\xff\xfe"})
        EXPECT_EQ(ChannelTarget(nonsense), std::nullopt) << nonsense;
}

TEST_F(Linked, WithoutALinkEverythingIsANetworkError) {
    setenv("ZORVIC_TLS_DIR", "/nowhere", 1);
    EXPECT_FALSE(Session(Unit.Host(), 1).Connected()) << "who asks for encryption never gets plaintext";
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

TEST_F(Linked, AnEditSendsWhatDiffersAndUndoesNobodysEdit) {
    Preset copy = OnlyPreset();
    EXPECT_EQ(Client.UpdatePreset(copy), ZORVIC_STATUS_OK);
    EXPECT_THAT(Unit.Updates(), IsEmpty());

    Unit.Store("pk: 1 name: 'Opening' freeze_at_end: true notes: 'by another console'");
    ASSERT_TRUE(WaitUntil([&] { return OnlyPreset().Notes == "by another console"; })) << "a refresh reads it";
    copy.FreezeAtEnd = false;
    EXPECT_EQ(Client.UpdatePreset(copy), ZORVIC_STATUS_OK);
    ASSERT_EQ(Unit.Updates().size(), 1U);
    EXPECT_THAT(Unit.Updates()[0].fields().paths(), ElementsAre("freeze_at_end"));
    EXPECT_EQ(Unit.Updates()[0].preset().name(), "") << "what did not change does not travel";
}

TEST_F(Linked, AnEditKeepsWhatOnlyANewerLibraryKnows) {
    auto stored = FromText<Wire::Preset>(
        "pk: 1 canvases { assets { full_path: 'a' } assets { full_path: 'a' } assets { full_path: 'b' } } "
        "gotos { id: 1 time_ms: 100 } gotos { id: 2 time_ms: 200 }");
    const auto mark = [](google::protobuf::Message& part, std::uint64_t value) {
        part.GetReflection()->MutableUnknownFields(&part)->AddVarint(1'000, value);
    };
    const auto marked = [](const google::protobuf::Message& part) -> std::uint64_t {
        const auto& unknown = part.GetReflection()->GetUnknownFields(part);
        return unknown.empty() ? 0 : unknown.field(0).varint();
    };
    mark(*stored.mutable_canvases(0), 1);
    mark(*stored.mutable_canvases(0)->mutable_assets(1), 2);
    mark(*stored.mutable_canvases(0)->mutable_assets(2), 3);
    mark(*stored.mutable_gotos(1), 4);
    Unit.Store(stored);
    ASSERT_TRUE(WaitUntil([&] { return OnlyPreset().Gotos.size() == 2; }));
    Preset edited = OnlyPreset();
    auto& assets = edited.Canvases.at(0).Assets;
    std::swap(assets.at(0), assets.at(2));
    assets.at(0).PinnedCoords.X = 5;
    edited.Gotos.erase(1);
    ASSERT_EQ(Client.UpdatePreset(edited), ZORVIC_STATUS_OK);
    const auto sent = Unit.Updates().at(0).preset();
    EXPECT_EQ(marked(sent.canvases(0)), 1U);
    EXPECT_EQ(marked(sent.canvases(0).assets(0)), 3U) << "moved, and brought to the front";
    EXPECT_EQ(marked(sent.canvases(0).assets(1)), 0U);
    EXPECT_EQ(marked(sent.canvases(0).assets(2)), 2U) << "the second one of the same file";
    EXPECT_EQ(marked(sent.gotos(0)), 4U);
}

TEST_F(Linked, ALongSnapshotOnASlowLinkGetsItsTime) {
    Unit.SlowFrames = 4;
    const Session slow(Unit.Host(), 1);
    EXPECT_TRUE(WaitUntil([&] { return slow.Connected(); })) << "the attempt goes on as long as something comes";
}

TEST_F(Linked, PauseAsksForTheOppositeOfWhatThisConsoleSawHoweverOftenItIsSent) {
    int trt = 0;
    for (const std::string shown : {"playing: true", "playing: true paused: true", ""}) {
        const auto states = "states { states { pk: 2 " + shown + " trt: " + std::to_string(++trt) + " } }";
        Unit.Send(MakeFrame(10, {FromText<Wire::Piece>(states)}));
        std::vector<PresetState> seen;
        EXPECT_TRUE(WaitUntil([&] { return Client.GetPresetStates(seen), !seen.empty() && seen[0].TRT == trt; }));
        for (int repeated = 0; repeated < 2; ++repeated) {
            EXPECT_EQ(Client.Pause(2), ZORVIC_STATUS_OK);
            EXPECT_EQ(Unit.LastPause, !seen.at(0).IsPaused) << shown;
        }
    }
}

TEST_F(Linked, ARefusedCommandAsksThisConsoleToLookAgain) {
    Events.Follow(Client);
    Preset copy = OnlyPreset();
    copy.Name = "Closing";
    const std::pair<grpc::StatusCode, StatusCode> answers[] = {{grpc::INVALID_ARGUMENT, ZORVIC_STATUS_MISUSED},
                                                               {grpc::NOT_FOUND, ZORVIC_STATUS_FAILED},
                                                               {grpc::FAILED_PRECONDITION, ZORVIC_STATUS_FAILED},
                                                               {grpc::RESOURCE_EXHAUSTED, ZORVIC_STATUS_FAILED},
                                                               {grpc::INTERNAL, ZORVIC_STATUS_INTERNALERROR}};
    for (const auto& [wire, expected] : answers) {
        Unit.UpdateOutcome = wire;
        EXPECT_EQ(Client.UpdatePreset(copy), expected);
    }
    const std::pair<Wire::RefusalReason, StatusCode> reasons[] = {
        {Wire::REFUSAL_REASON_SLOW, ZORVIC_STATUS_FAILED},
        {Wire::REFUSAL_REASON_MISUSED, ZORVIC_STATUS_MISUSED},
        {Wire::RefusalReason(99), ZORVIC_STATUS_NETWORKERROR}};
    Unit.UpdateOutcome = grpc::DEADLINE_EXCEEDED;
    for (const auto& [reason, expected] : reasons) {
        Unit.UpdateReason = reason;
        EXPECT_EQ(Client.UpdatePreset(copy), expected) << "the reason wins over the status code";
    }
    EXPECT_EQ(Client.InstallAsset("E:\\clip.mov"), ZORVIC_STATUS_UNIMPLEMENTED);
    EXPECT_EQ(Client.DeleteAsset("\xff"), ZORVIC_STATUS_MISUSED) << "text that the protocol cannot carry";
    EXPECT_TRUE(WaitUntil([&] { return Events.Counts[ZORVIC_STATE_PRESETS] > 0; }));
    EXPECT_EQ(Events.Counts[ZORVIC_STATE_ASSETS], 0);
    Unit.UpdateOutcome = grpc::OK;
    EXPECT_EQ(Client.UpdatePreset(copy), ZORVIC_STATUS_OK) << "a refused edit still differs";
}

TEST_F(Linked, ASlowListingFailsAndReadsOfWhatCameOnTheStreamCostNoCall) {
    std::vector<ExternalAsset> entries;
    EXPECT_EQ(Client.GetDiskAssets(entries, "E", ""), ZORVIC_STATUS_FAILED);
    EXPECT_TRUE(Client.Connected());
    TimeCode timeCode;
    EXPECT_EQ(Client.GetTimeCode(timeCode, 3), ZORVIC_STATUS_FAILED) << "it does not play";
    Unit.Send(MakeFrame(9, {FromText<Wire::Piece>("assets { upserted { full_path: 'raw.mov' } upserted { "
                                                  "full_path: 'a.mov' metadata { duration_ms: 10000 } } }"),
                            FromText<Wire::Piece>("timecodes { timecodes { pk: 3 levels: 40 } }")}));
    EXPECT_TRUE(WaitUntil([&] { return Client.GetTimeCode(timeCode, 3) == ZORVIC_STATUS_OK; }));
    EXPECT_THAT(timeCode.VUData, ElementsAre(40));
    AssetMetadata metadata;
    EXPECT_EQ(Client.ReadAssetMetadata("a.mov", metadata), ZORVIC_STATUS_OK);
    EXPECT_EQ(metadata.Duration, 10000);
    EXPECT_EQ(Client.ReadAssetMetadata("raw.mov", metadata), ZORVIC_STATUS_UNIMPLEMENTED) << "asked the unit";
}

TEST_F(Linked, GarbageCostsTheLinkWhichComesBackToThisUnitAndToNoOther) {
    const ScriptedUnit stranger("unit-2");
    const ScriptedUnit moved("unit-1");
    Events.Follow(Client);
    Unit.Send(GarbageFrame(100));
    ASSERT_TRUE(WaitUntil([&] { return !Client.Connected(); }));
    for (int i = 0; i < 20; ++i)
        EXPECT_EQ(Client.Reconnect(stranger.Host()), ZORVIC_STATUS_NETWORKERROR);
    EXPECT_TRUE(WaitUntil([&] { return Client.Reconnect(moved.Host()) == ZORVIC_STATUS_OK; }));
    EXPECT_EQ(Client.GetHost(), Unit.Host());
    EXPECT_TRUE(Events.AllReach(1)) << "registrations survive, and each hears of the new snapshot";
}
