#include "conversions.h"
#include "preset_edits.h"
#include "scripted_unit.h"

#include <gmock/gmock.h>

#include <cmath>

using namespace Zorvic;
using namespace Zorvic::Internal;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

/// Every field of the protocol, none at its default.
Wire::Preset Whole() {
    return FromText<Wire::Preset>(R"(
    pk: 7 name: "Opening" notes: "n" color: "#fff" volume: 100 volume: 65535 tab_order { tab_id: 2 index: 3 }
    loop: -1 link: 4 dissolve_in_ms: 5 dissolve_out_ms: 6 fade_in_ms: 7 fade_out_ms: 8
    in_position: 9 out_position: 10 dissolve: 11 freeze_at_end: true
    gotos { id: 2 time_ms: 2000 name: "g" } gotos { id: 9 time_ms: 9000 } countdowns { id: 3 time_ms: 30 name: "c" }
    canvases { index: 1 orientation: 77 custom_x: 1 custom_y: 2 width: -5 height: 1080 num_outputs: 2 sink_types: 10
               assets { full_path: "a.mov" width: 1 height: 2 x: 3 y: 4 z: 5 depth: 6
                        hue: 0.1 saturation: 0.2 brightness: 0.3 contrast: 0.4 } })");
}

}  // namespace

TEST(Conversions, APresetSurvivesTheWire) {
    EXPECT_EQ(ToWire(FromWire(Whole())).SerializeAsString(), Whole().SerializeAsString());
    Preset preset;
    for (const int id : {5, 2, 9})
        preset.Gotos[id].TimeMS = id;
    EXPECT_EQ(ToWire(preset).gotos(0).id(), 2) << "marks travel in order of id";
}

TEST(Conversions, WhatARecordHasNoRoomForIsLimited) {
    EXPECT_THAT(FromWire(FromText<Wire::Preset>("volume: 70000")).Volume, ElementsAre(65535));
    Wire::HardwareState hardware;
    hardware.mutable_resolutions()->Resize(6, 99);
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
        PresetList list;
        list.Set(std::make_shared<Preset>(version));
        Edits.HandedOut(list.Share(), Now);
    }
    auto Sent(const Preset& edited) { return Edits.Request(edited, Now).fields().paths(); }

    PresetEdits Edits;
    PresetEdits::TimePoint Now{1h};
    Preset Copy = FromWire(Whole());
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
    for (int refresh = 1; refresh < 6; ++refresh, Now += 100ms) {
        others.Notes = std::to_string(refresh);
        others.Loop = refresh;
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
