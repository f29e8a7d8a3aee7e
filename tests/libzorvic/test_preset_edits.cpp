#include "conversions.h"
#include "preset_edits.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>

using namespace Zorvic;
using namespace Zorvic::Internal;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

Preset FullPreset() {
    Preset preset;
    preset.PK = 7;
    preset.Name = "Opening";
    preset.Volume = {100, 65535};
    preset.Canvases.resize(1);
    preset.Canvases[0].CanvasCfg.Dimensions = {3840, 1080};
    preset.Canvases[0].SinkTypes = static_cast<SinkType>(ZORVIC_SINK_KONA | ZORVIC_SINK_BMD);
    preset.Canvases[0].Assets.resize(1);
    preset.Canvases[0].Assets[0].FullPath = "C:\\Assets\\clip.mov";
    for (const int id : {5, 2, 9})
        preset.Gotos[id].TimeMS = id * 1000;
    preset.TabDisplayOrder[0] = TabOrdering(0, 3);
    preset.FreezeAtEnd = true;
    return preset;
}

}  // namespace

TEST(Conversions, PresetSurvivesTheWire) {
    const Wire::Preset wire = ToWire(FullPreset());
    EXPECT_EQ(ToWire(FromWire(wire)).SerializeAsString(), wire.SerializeAsString());
    ASSERT_EQ(wire.gotos_size(), 3);
    EXPECT_EQ(wire.gotos(0).id(), 2) << "marks travel in order of id";
    EXPECT_EQ(FromWire(wire).Gotos.at(9).TimeMS, 9000);
}

TEST(Conversions, StrangeValuesPassThroughOrAreLimited) {
    Wire::Preset wire;
    wire.add_volume(70000);
    wire.add_canvases()->set_orientation(77);
    wire.mutable_canvases(0)->set_width(-5);
    const Preset preset = FromWire(wire);
    EXPECT_THAT(preset.Volume, ElementsAre(65535));
    EXPECT_EQ(static_cast<int>(preset.Canvases[0].CanvasCfg.Orientation.Orientation), 77);
    EXPECT_EQ(preset.Canvases[0].CanvasCfg.Dimensions.Width, -5);
    Wire::HardwareState hardware;
    hardware.mutable_resolutions()->Resize(6, 99);  // more than there is room for
    EXPECT_EQ(static_cast<int>(FromWire(hardware).Resolutions[3]), 99);
}

TEST(PictureValues, EverySliderPositionReadsBackAsItWasSet) {
    for (int k = -100; k <= 100; ++k) {
        for (const float sent : {static_cast<float>(k) / 100.0F, static_cast<float>(k) * 0.01F,
                                 static_cast<float>(k / 100.0 + 9e-7), static_cast<float>(k / 100.0 - 9e-7)}) {
            const float stored = StoredPictureValue(sent);
            EXPECT_EQ(static_cast<int>(static_cast<double>(stored) * 100.0), k) << sent;
            EXPECT_EQ(StoredPictureValue(stored), stored) << sent;
            EXPECT_LT(std::abs(static_cast<double>(stored) - k / 100.0), 1.2e-7) << sent;
        }
    }
    for (const float other : {0.295F, 0.29001F, 1e30F, INFINITY})
        EXPECT_EQ(StoredPictureValue(other), other);
    EXPECT_TRUE(std::isnan(StoredPictureValue(NAN)));
}

/// What an edit sends after a history of versions that the session handed out or wrote.
class PresetEditing : public testing::Test {
protected:
    void HandOut(const Preset& version) {
        Edits.HandedOut(std::make_shared<PresetList>(PresetList{std::make_shared<Preset>(version)}), Now);
    }
    auto Sent(const Preset& edited) { return Edits.Request(edited, Now).fields().paths(); }

    PresetEdits Edits;
    PresetEdits::TimePoint Now{1h};
    Preset Copy = FullPreset();
};

TEST_F(PresetEditing, RoundingAloneIsNoChange) {
    Preset base = Copy;
    float& stored = base.Canvases[0].Assets[0].Hue;
    float& slider = Copy.Canvases[0].Assets[0].Hue;
    const auto sentOver = [&](float value) {
        stored = value;
        HandOut(base);
        return Sent(Copy);
    };
    slider = 0.29F;
    ASSERT_NE(StoredPictureValue(slider), slider);
    EXPECT_THAT(sentOver(StoredPictureValue(slider)), IsEmpty()) << "the unit holds what sending would make of it";
    EXPECT_THAT(sentOver(slider), IsEmpty()) << "the unit's own unrounded value was not touched";
    EXPECT_THAT(sentOver(std::nextafter(slider, 0.0F)), ElementsAre("canvases"));
}

TEST_F(PresetEditing, RefreshesBetweenReadingAndWritingChangeNothing) {
    HandOut(Copy);
    Preset others = Copy;
    Now += 1h;
    for (int refresh = 0; refresh < 5; ++refresh, Now += 100ms) {
        others.Notes = std::to_string(refresh);
        others.Loop = 1;
        HandOut(others);
        HandOut(others);
    }
    Copy.Name = "Closing";
    EXPECT_THAT(Sent(Copy), ElementsAre("name"));
    others.Name = "Closing";
    others.Link = 3;
    EXPECT_THAT(Sent(others), ElementsAre("name", "link")) << "a copy of the newest";
    Edits.Written(Copy);
    HandOut(others);
    Copy.FreezeAtEnd = false;
    EXPECT_THAT(Sent(Copy), ElementsAre("freeze_at_end")) << "its writer goes on with it";
    Now += PresetEdits::Grace;
    EXPECT_THAT(Sent(Copy), ElementsAre("notes", "loop", "link", "freeze_at_end")) << "held for long: it wins";
}

TEST_F(PresetEditing, SettingBackWhatWasChangedIsAlwaysSent) {
    HandOut(Copy);
    Preset trimmed = Copy;
    trimmed.InPosition = 9000;
    HandOut(trimmed);
    trimmed.OutPosition = 1000;
    HandOut(trimmed);
    EXPECT_THAT(Sent(Copy), ElementsAre("in_position", "out_position")) << "somebody else's trim, reset at once";
    Copy.Name = "Closing";
    Now += PresetEdits::Grace;
    EXPECT_THAT(Sent(Copy), ElementsAre("name", "in_position", "out_position")) << "with something new, once seen";
    HandOut(Copy);
    Edits.Written(trimmed);
    Copy.Notes = "untrimmed";
    EXPECT_THAT(Sent(Copy), ElementsAre("name", "notes", "in_position", "out_position")) << "the own trim";
}
