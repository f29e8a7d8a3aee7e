#include "metadata_cache.h"

#include "sessionmanager.h"
#include "support/fakezorvic.h"

#include <gmock/gmock.h>

#include <memory>
#include <optional>

namespace {

constexpr const char* Path = "C:\\Assets\\clip.mov";

class AssetMetadataCache : public testing::Test {
protected:
    AssetMetadataCache() {
        FakeZorvic::Reset();
        Unit = &FakeZorvic::AddUnit("10.0.0.1", "guid-1");
        Clip.FullPath = Path;
        Clip.Checksum = "one";
        Clip.Status = Zorvic::ZORVIC_ASSETSTATE_READY;
        Unit->Assets = {Clip};
        SetDuration(1000);
        std::unique_ptr<SessionHandle>(Sessions.CreateSessionByIP("10.0.0.1"));
    }

    void SetDuration(int duration) { Unit->Metadata[Path].Duration = duration; }
    /// The duration that a look-up returns, by record or by path.
    template <typename Key>
    std::optional<int> Look(const Key& key) {
        const std::unique_ptr<Zorvic::AssetMetadata> metadata(Cache.LookupAsset(key));
        return metadata ? std::optional(metadata->Duration) : std::nullopt;
    }
    static std::size_t Probes() { return FakeZorvic::Calls("ReadAssetMetadata").size(); }

    FakeZorvic::Unit* Unit = nullptr;
    Zorvic::Asset Clip;
    SessionManager Sessions;
    MetadataCache Cache{"guid-1"};
};

TEST_F(AssetMetadataCache, ProbesAnUnchangedAssetOnceForBothWaysOfAsking) {
    EXPECT_EQ(Look(Clip), 1000);
    SetDuration(2000);
    Clip.LastModified = Clip.TotalSize = Clip.CurrentSize = 7;
    EXPECT_EQ(Look(Clip), 1000);
    EXPECT_EQ(Look(std::string(Path)), 1000);
    EXPECT_EQ(Probes(), 1U);
}

TEST_F(AssetMetadataCache, ProbesAgainWhenContentOrStatusChanged) {
    EXPECT_EQ(Look(Clip), 1000);
    SetDuration(2000);
    Clip.Checksum = "two";
    EXPECT_EQ(Look(Clip), 2000);
    EXPECT_EQ(Look(Clip), 2000);
    EXPECT_EQ(Probes(), 2U);
    SetDuration(3000);
    Unit->Assets[0] = Clip;
    Unit->Assets[0].Status = Zorvic::ZORVIC_ASSETSTATE_ERROR;
    EXPECT_EQ(Look(std::string(Path)), 3000);
}

TEST_F(AssetMetadataCache, RefusesUnfinishedAssetsByRecordAndProbesThemByPathEveryTime) {
    Clip.Checksum.clear();
    Unit->Assets = {Clip};
    EXPECT_EQ(Look(Clip), std::nullopt);
    EXPECT_EQ(Look(std::string(Path)), 1000);
    SetDuration(2000);
    EXPECT_EQ(Look(std::string(Path)), 2000);
    Clip.Checksum = "one";
    Clip.Status = Zorvic::ZORVIC_ASSETSTATE_INGESTING;
    EXPECT_EQ(Look(Clip), std::nullopt);
    EXPECT_EQ(Probes(), 2U);
}

TEST_F(AssetMetadataCache, AFailedProbeReturnsNothingAndKeepsWhatWasKnown) {
    EXPECT_EQ(Look(Clip), 1000);
    Unit->Fail("ReadAssetMetadata", Zorvic::ZORVIC_STATUS_FAILED);
    Clip.Checksum = "two";
    EXPECT_EQ(Look(Clip), std::nullopt);
    Clip.Checksum = "one";
    EXPECT_EQ(Look(Clip), 1000);
}

TEST_F(AssetMetadataCache, HasNothingForAnUnknownPathAFailedListOrALostUnit) {
    EXPECT_EQ(Look(std::string("C:\\Assets\\other.mov")), std::nullopt);
    Unit->Fail("GetAssets", Zorvic::ZORVIC_STATUS_FAILED);
    EXPECT_EQ(Look(std::string(Path)), std::nullopt);
    Unit->Succeed("GetAssets");
    Sessions.DeleteSessionByGUID("guid-1");
    EXPECT_EQ(Look(Clip), std::nullopt);
    EXPECT_EQ(Look(std::string(Path)), std::nullopt);
    EXPECT_EQ(Probes(), 0U);
}

}  // namespace
