#include "fixtures.h"

using namespace Zorvic;

namespace {

/// The presets 1 and 2 have an asset each on player 1 (hue 0.3) and on player 2 (hue -0.4).
class MixTest : public ViewTest {
protected:
    MixTest() {
        auto& canvases = Preset(1).Canvases;
        canvases = {Canvas(0), Canvas(1)};
        for (auto& canvas : canvases)
            canvas.Assets.resize(1);
        Hue(0) = 0.3F;
        Hue(1) = -0.4F;
        Preset(2).Canvases = canvases;
        Open();
    }
    float& Hue(std::size_t canvas) { return Preset(1).Canvases[canvas].Assets[0].Hue; }
    static void Drag(QSlider* slider, int to) {
        slider->setSliderDown(true);
        slider->setSliderPosition(to / 2);
        slider->setSliderPosition(to);
    }
};

TEST_F(MixTest, ASliderSetsItsChannelOrBothButARefreshNeither) {
    View->RChannel->setValue(40000);
    EXPECT_THAT(Preset(1).Volume, ElementsAre(100, 40000));
    View->BindAudioChannels->setChecked(true);
    View->LChannel->setValue(5);
    EXPECT_THAT(Preset(1).Volume, ElementsAre(5, 5));
    Preset(2).Volume = {1000, 2000};
    SelectElsewhere(2);
    EXPECT_EQ(View->RChannel->value(), 2000);
    EXPECT_THAT(Preset(2).Volume, ElementsAre(1000, 2000));
    Preset(2).Volume = {7};
    Sent();
    View->LChannel->setValue(6);
    EXPECT_THAT(FakeZorvic::Commands(), IsEmpty());
    Pump(ZORVIC_STATE_PRESETS);
    EXPECT_EQ(View->LChannel->value(), 6);
}

TEST_F(MixTest, PictureSlidersAdjustTheChosenPlayersAsset) {
    EXPECT_EQ(View->ActivePlayerSel->currentText(), QStringLiteral("Player 1"));
    EXPECT_EQ(View->HueSel->value(), 30);
    View->ActivePlayerSel->setCurrentText(QStringLiteral("Player 2"));
    EXPECT_EQ(View->HueSel->value(), -40);
    View->HueSel->setValue(-55);
    EXPECT_FLOAT_EQ(Hue(1), -0.55F);
    EXPECT_FLOAT_EQ(Hue(0), 0.3F);
    FakeZorvic::Calls.clear();
    Preset(1).Canvases.push_back(Canvas(2));
    Pump(ZORVIC_STATE_PRESETS);
    EXPECT_THAT(FakeZorvic::Commands(), IsEmpty());
    EXPECT_EQ(View->ActivePlayerSel->count(), 3);
    EXPECT_EQ(View->ActivePlayerSel->currentText(), QStringLiteral("Player 2"));
    for (const auto& [stored, shown] : {std::pair(-0.555F, -55), {1e30F, 100}, {std::nanf(""), 0}}) {
        Hue(1) = stored;  // shown cut towards zero, whatever it is
        Pump(ZORVIC_STATE_PRESETS);
        EXPECT_EQ(View->HueSel->value(), shown);
    }
    Preset(1).Canvases.resize(1);
    Pump(ZORVIC_STATE_PRESETS);
    EXPECT_EQ(View->ActivePlayerSel->currentText(), QStringLiteral("Player 1"));
    EXPECT_EQ(View->HueSel->value(), 30);
    Preset(1).Canvases[0].Assets.resize(2);
    FakeZorvic::Calls.clear();
    View->HueSel->setValue(9);
    EXPECT_THAT(FakeZorvic::Commands(), IsEmpty());
}

TEST_F(MixTest, AHeldKnobStaysUntilItsRelease) {
    Drag(View->LChannel, 2000);
    View->LChannel->setSliderDown(false);
    EXPECT_THAT(Preset(1).Volume, ElementsAre(2000, 200)) << "the last position is sent";
    QEvent dialogOpens(QEvent::WindowBlocked);
    const std::vector<std::function<void()>> releases = {
        [this] { View->LChannel->setSliderDown(false); },
        [&] { QApplication::sendEvent(View.get(), &dialogOpens); },
        [this] { View->hide(); },
    };
    int value = 2000;
    for (const auto& release : releases) {
        View->LChannel->setSliderDown(true);
        Preset(1).Volume = {static_cast<std::uint16_t>(value + 500), 40000};
        Pump(ZORVIC_STATE_PRESETS);
        EXPECT_EQ(View->LChannel->value(), value);
        EXPECT_EQ(View->RChannel->value(), 40000);
        release();
        Pump(ZORVIC_STATE_PRESETS);
        EXPECT_EQ(View->LChannel->value(), value += 500);
    }
}

TEST_F(MixTest, ADragEndsWhereItsPlayerOrItsPresetDoes) {
    View->ActivePlayerSel->setCurrentText(QStringLiteral("Player 2"));
    Drag(View->HueSel, 60);
    Preset(1).Canvases.resize(1);
    Pump(ZORVIC_STATE_PRESETS);
    View->HueSel->setSliderDown(false);
    EXPECT_FLOAT_EQ(Hue(0), 0.3F);
    EXPECT_EQ(View->HueSel->value(), 30);

    Drag(View->LChannel, 2000);
    SelectElsewhere(2);
    View->LChannel->setSliderPosition(3000);
    View->LChannel->setSliderDown(false);
    EXPECT_THAT(Preset(2).Volume, ElementsAre(100, 200));
    EXPECT_EQ(View->LChannel->value(), 100);
}

}  // namespace
