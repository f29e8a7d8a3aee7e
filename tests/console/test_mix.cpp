#include "text/picturevalue.h"
#include "viewfixture.h"

using namespace Zorvic;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// The presets 1 and 2 have an asset each on player 1 (hue 0.3) and on player 2 (hue -0.4).
class MixTest : public ViewTest {
protected:
    MixTest() {
        auto& canvases = Preset(1).Canvases;
        canvases.resize(2);
        for (auto& canvas : canvases) {
            canvas.CanvasCfg.NumOutputs = 1;
            canvas.Assets.resize(1);
        }
        canvases[1].Index = 1;
        Hue(0) = 0.3F;
        Hue(1) = -0.4F;
        Preset(2).Canvases = canvases;
        Open();
    }
    float& Hue(std::size_t canvas) { return Preset(1).Canvases[canvas].Assets[0].Hue; }
};

TEST(PictureValue, TruncatesTowardsZeroAndSurvivesAnything) {
    EXPECT_EQ(PicturePosition(-0.555F), -55);
    EXPECT_EQ(PicturePosition(1e30F), 100);
    EXPECT_EQ(PicturePosition(std::nanf("")), 0);
    EXPECT_FLOAT_EQ(PictureValue(-55), -0.55F);
}

TEST_F(MixTest, ASliderSetsItsChannelOrBothButARefreshNeither) {
    View->RChannel->setValue(40000);
    EXPECT_THAT(Preset(1).Volume, ElementsAre(100, 40000));
    View->BindAudioChannels->setChecked(true);
    View->LChannel->setValue(5);
    EXPECT_THAT(Preset(1).Volume, ElementsAre(5, 5));
    Preset(2).Volume = {1000, 2000};
    SelectOnUnit(2);
    Pump(ZORVIC_STATE_PRESETSTATES);
    EXPECT_EQ(View->RChannel->value(), 2000);
    EXPECT_THAT(Preset(2).Volume, ElementsAre(1000, 2000));
    Preset(2).Volume = {7};
    FakeZorvic::ClearCalls();
    View->LChannel->setValue(6);
    EXPECT_THAT(FakeZorvic::Commands(), IsEmpty());
    Pump(ZORVIC_STATE_PRESETS);
    EXPECT_EQ(View->LChannel->value(), 6);
}

TEST_F(MixTest, ARefreshDoesNotUndoWhatAnotherConsoleSetMeanwhile) {
    auto older = Unit.Presets;
    Preset(1).Volume = {3000, 4000};
    Hue(0) = 0.7F;
    older[0].Volume = {1000, 2000};
    older[0].Canvases[0].Assets[0].Hue = 0.5F;
    View->AcceptPresets(older);
    EXPECT_THAT(Preset(1).Volume, ElementsAre(3000, 4000));
    EXPECT_FLOAT_EQ(Hue(0), 0.7F);
}

TEST_F(MixTest, PictureSlidersAdjustTheChosenPlayersAsset) {
    EXPECT_EQ(View->ActivePlayerSel->currentText(), QStringLiteral("Player 1"));
    EXPECT_EQ(View->HueSel->value(), 30);
    View->ActivePlayerSel->setCurrentText(QStringLiteral("Player 2"));
    EXPECT_EQ(View->HueSel->value(), -40);
    View->HueSel->setValue(-55);
    EXPECT_FLOAT_EQ(Hue(1), -0.55F);
    EXPECT_FLOAT_EQ(Hue(0), 0.3F);
    FakeZorvic::ClearCalls();
    Preset(1).Canvases.emplace_back().Index = 2;
    Preset(1).Canvases[2].CanvasCfg.NumOutputs = 1;
    Pump(ZORVIC_STATE_PRESETS);
    EXPECT_EQ(View->ActivePlayerSel->count(), 3);
    EXPECT_THAT(FakeZorvic::Commands(), IsEmpty());
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

TEST_F(MixTest, AHeldKnobStaysAndItsLastPositionIsSentOnRelease) {
    View->LChannel->setSliderDown(true);
    View->LChannel->setSliderPosition(1000);
    View->LChannel->setSliderPosition(2000);
    View->LChannel->setSliderDown(false);
    EXPECT_THAT(Preset(1).Volume, ElementsAre(2000, 200));
    View->LChannel->setSliderDown(true);
    Preset(1).Volume = {30000, 40000};
    Pump(ZORVIC_STATE_PRESETS);
    EXPECT_EQ(View->LChannel->value(), 2000);
    EXPECT_EQ(View->RChannel->value(), 40000);
    View->LChannel->setSliderDown(false);
    EXPECT_EQ(View->LChannel->value(), 30000);

    View->LChannel->setSliderDown(true);
    QEvent dialogOpens(QEvent::WindowBlocked);
    QApplication::sendEvent(View.get(), &dialogOpens);
    Preset(1).Volume[0] = 500;
    Pump(ZORVIC_STATE_PRESETS);
    EXPECT_EQ(View->LChannel->value(), 500);

    View->LChannel->setSliderDown(true);
    View->hide();
    Preset(1).Volume[0] = 600;
    Pump(ZORVIC_STATE_PRESETS);
    EXPECT_EQ(View->LChannel->value(), 600);
}

TEST_F(MixTest, ADragEndsWhereItsPlayerOrItsPresetDoes) {
    View->ActivePlayerSel->setCurrentText(QStringLiteral("Player 2"));
    View->HueSel->setSliderDown(true);
    View->HueSel->setSliderPosition(50);
    View->HueSel->setSliderPosition(60);
    Preset(1).Canvases.resize(1);
    Pump(ZORVIC_STATE_PRESETS);
    View->HueSel->setSliderDown(false);
    EXPECT_FLOAT_EQ(Hue(0), 0.3F);
    EXPECT_EQ(View->HueSel->value(), 30);

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
