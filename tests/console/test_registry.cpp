#include "fixtures.h"

namespace {

class Registry : public UnitTest {
protected:
    std::string HostOf(SessionHandle* found) {
        const std::unique_ptr<SessionHandle> handle(found);
        return handle ? handle->GetSession()->GetHost() : "none";
    }
};

TEST_F(Registry, FindsAndDeletesASessionByGuidOrByTheHostTextItWasOpenedWith) {
    FakeZorvic::AddUnit("other", "guid-2");
    EXPECT_EQ(HostOf(Sessions.CreateSessionByIP("other")), "other");
    EXPECT_EQ(HostOf(Sessions.GetSessionByGUID("guid")), "host");
    EXPECT_EQ(HostOf(Sessions.GetSessionByIP("host")), "host");
    EXPECT_TRUE(Sessions.DeleteSessionByGUID("guid"));
    EXPECT_EQ(FakeZorvic::LiveSessions("other"), 1);
    EXPECT_TRUE(Sessions.DeleteSessionByIP("other"));
    EXPECT_EQ(FakeZorvic::LiveSessions(), 0);
}

TEST_F(Registry, KeepsOneSessionOfAUnitAndNothingOfOneThatCannotBeUsed) {
    FakeZorvic::AddUnit("stage.local", "guid");
    EXPECT_EQ(HostOf(Sessions.CreateSessionByIP("stage.local")), "stage.local");
    EXPECT_EQ(HostOf(Sessions.GetSessionByGUID("guid")), "stage.local");
    EXPECT_EQ(FakeZorvic::LiveSessions("host"), 0);
    FakeZorvic::AddUnit("unreachable", "guid-1").Reachable = false;
    FakeZorvic::AddUnit("failing", "guid-2").Fail("GetUnitID", Zorvic::ZORVIC_STATUS_FAILED);
    FakeZorvic::AddUnit("nameless", "");
    for (const auto* host : {"unreachable", "failing", "nameless", "nowhere", ""})
        EXPECT_EQ(HostOf(Sessions.CreateSessionByIP(host)), "none") << host;
    EXPECT_EQ(FakeZorvic::LiveSessions(), 1);
}

const std::string Path = "C:\\Assets\\clip.mov";

class AssetMetadataCache : public UnitTest {
protected:
    /// The duration that a look-up by record or by path returns, 0 without metadata.
    template <typename Key>
    int Look(const Key& key) {
        const std::unique_ptr<Zorvic::AssetMetadata> metadata(Cache.LookupAsset(key));
        return metadata ? metadata->Duration : 0;
    }

    Zorvic::Asset Clip = AddAsset(Path);
    int& Duration = Unit.Metadata[Path].Duration = 1000;  ///< what a probe finds
    MetadataCache Cache{"guid"};
};

TEST_F(AssetMetadataCache, ProbesAnAssetAgainOnlyWhenContentOrStatusChanged) {
    EXPECT_EQ(Look(Clip), 1000);
    Duration = 2000;
    Clip.LastModified = Clip.TotalSize = Clip.CurrentSize = 7;
    EXPECT_EQ(Look(Clip), 1000);
    Clip.Checksum = "two";
    EXPECT_EQ(Look(Clip), 2000);
    Duration = 3000;
    Unit.Assets = {Clip};
    Unit.Assets[0].Status = Zorvic::ZORVIC_ASSETSTATE_ERROR;
    EXPECT_EQ(Look(Path), 3000);
}

TEST_F(AssetMetadataCache, RefusesUnfinishedAssetsByRecordAndProbesThemByPathEveryTime) {
    Clip.Checksum.clear();
    EXPECT_EQ(Look(Clip), 0);
    Unit.Assets = {Clip};
    for (Duration = 1000; Duration < 3000; Duration += 1000)
        EXPECT_EQ(Look(Path), Duration);
    Clip.Checksum = "one";
    Clip.Status = Zorvic::ZORVIC_ASSETSTATE_INGESTING;
    EXPECT_EQ(Look(Clip), 0);
}

TEST_F(AssetMetadataCache, HasNothingAfterAFailureButKeepsWhatItKnew) {
    EXPECT_EQ(Look(Clip), 1000);
    auto changed = Clip;
    changed.Checksum = "two";
    Unit.Fail("ReadAssetMetadata", Zorvic::ZORVIC_STATUS_FAILED);
    EXPECT_EQ(Look(changed) + Look(changed), 0);
    EXPECT_EQ(FakeZorvic::Counts()["ReadAssetMetadata"], 2) << "a failure is asked for once";
    EXPECT_EQ(Look(Clip), 1000);
    Disconnect();
    EXPECT_EQ(Look(Path) + Look(changed), 0);
}

}  // namespace
