#include "picturevalue.h"
#include "viewfixture.h"

using namespace Zorvic;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

namespace {

class MixTest : public ViewTest {
protected:
    MixTest() {
        for (const int pk : {1, 2}) {
            auto& canvases = Preset(pk).Canvases;
            canvases.resize(2);
            for (std::uint32_t i = 0; i < 2; ++i) {
                canvases[i].Index = i;
                canvases[i].CanvasCfg.NumOutputs = 1;
                canvases[i].Assets.resize(1);
                canvases[i].Assets[0].Hue = i == 0 ? 0.3F : -0.4F;
            }
        }
        Open();
    }
    PinnedAsset& Picture(int pk, std::size_t canvas) { return Preset(pk).Canvases[canvas].Assets[0]; }
    static std::vector<std::uint16_t> SentVolume() { return FakeZorvic::LastCall("UpdatePreset").Sent->Volume; }
};

TEST(PictureValue, TruncatesTowardsZeroAndSurvivesAnything) {
    EXPECT_EQ(PicturePosition(-0.555F), -55);
    EXPECT_EQ(PicturePosition(1e30F), 100);
    EXPECT_EQ(PicturePosition(std::nanf("")), 0);
    EXPECT_FLOAT_EQ(PictureValue(-55), -0.55F);
}

TEST_F(MixTest, ASliderSetsItsChannelOrBothButARefreshNeither) {
    View->RChannel->setValue(40000);
    EXPECT_THAT(SentVolume(), ElementsAre(100, 40000));
    View->BindAudioChannels->setChecked(true);
    View->LChannel->setValue(5);
    EXPECT_THAT(SentVolume(), ElementsAre(5, 5));
    Preset(1).Volume = {1000, 2000};
    Pump(ZORVIC_STATE_PRESETS);
    EXPECT_THAT(SentVolume(), ElementsAre(1000, 2000));
    EXPECT_THAT(Preset(1).Volume, ElementsAre(1000, 2000));
    Preset(1).Volume = {7};
    FakeZorvic::ClearCalls();
    View->LChannel->setValue(6);
    EXPECT_THAT(FakeZorvic::Commands(), IsEmpty());
    Pump(ZORVIC_STATE_PRESETS);
    EXPECT_EQ(View->LChannel->value(), 6);
}

TEST_F(MixTest, ARefreshDoesNotUndoWhatAnotherConsoleSetMeanwhile) {
    const auto older = Unit.Presets;
    Preset(1).Volume = {3000, 4000};
    Picture(1, 0).Hue = 0.7F;
    View->AcceptPresets(older);  // nothing differs from what is shown
    auto changed = older;
    changed[0].Volume = {1000, 2000};
    changed[0].Canvases[0].Assets[0].Hue = 0.5F;
    View->AcceptPresets(changed);
    EXPECT_THAT(Preset(1).Volume, ElementsAre(3000, 4000));
    EXPECT_FLOAT_EQ(Picture(1, 0).Hue, 0.7F);
}

TEST_F(MixTest, PictureSlidersAdjustTheChosenPlayersAsset) {
    EXPECT_THAT(View->ActivePlayerSel->currentText(), QStringLiteral("Player 1"));
    EXPECT_EQ(View->HueSel->value(), 30);
    View->ActivePlayerSel->setCurrentText(QStringLiteral("Player 2"));
    EXPECT_EQ(View->HueSel->value(), -40);
    View->HueSel->setValue(-55);
    EXPECT_FLOAT_EQ(Picture(1, 1).Hue, -0.55F);
    EXPECT_FLOAT_EQ(Picture(1, 0).Hue, 0.3F);
    Pump(ZORVIC_STATE_PRESETS);
    EXPECT_EQ(View->ActivePlayerSel->currentText(), QStringLiteral("Player 2"));
    Preset(1).Canvases.resize(1);
    Pump(ZORVIC_STATE_PRESETS);
    EXPECT_EQ(View->ActivePlayerSel->currentText(), QStringLiteral("Player 1"));
    EXPECT_EQ(View->HueSel->value(), 30);
    Preset(1).Canvases[0].Assets.resize(2);
    FakeZorvic::ClearCalls();
    View->HueSel->setValue(9);
    EXPECT_THAT(FakeZorvic::Commands(), IsEmpty());
}

TEST_F(MixTest, AHeldKnobStaysUntilItIsReleased) {
    View->LChannel->setSliderDown(true);
    Preset(1).Volume = {30000, 40000};
    Pump(ZORVIC_STATE_PRESETS);
    EXPECT_EQ(View->LChannel->value(), 100);
    EXPECT_EQ(View->RChannel->value(), 40000);
    View->LChannel->setSliderDown(false);
    EXPECT_EQ(View->LChannel->value(), 30000);
}

TEST_F(MixTest, AFastDragSendsFewValuesButTheLast) {
    View->LChannel->setSliderDown(true);
    for (int value = 1000; value <= 30000; value += 100)
        View->LChannel->setSliderPosition(value);
    EXPECT_THAT(FakeZorvic::Commands(), SizeIs(testing::Lt(30)));
    View->LChannel->setSliderDown(false);
    EXPECT_EQ(Preset(1).Volume[0], 30000);
    EXPECT_EQ(View->LChannel->value(), 30000);
}

TEST_F(MixTest, ADragEndsWhereThePresetDoes) {
    View->LChannel->setSliderDown(true);
    View->LChannel->setSliderPosition(1000);
    View->LChannel->setSliderPosition(2000);
    SelectOnUnit(2);
    Pump(ZORVIC_STATE_PRESETSTATES);
    View->LChannel->setSliderPosition(3000);
    View->LChannel->setSliderDown(false);
    EXPECT_THAT(Preset(2).Volume, ElementsAre(100, 200));
    EXPECT_EQ(View->LChannel->value(), 100);
}

}  // namespace
