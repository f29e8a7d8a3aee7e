#include <zorvic/layout.h>

#include <gmock/gmock.h>

#include <limits>
#include <memory>

using namespace Zorvic;

namespace {

Preset PresetWithOutputs(const std::vector<std::uint32_t>& outputs) {
    Preset preset;
    for (const auto count : outputs) {
        CanvasInfo canvas;
        canvas.Index = static_cast<std::uint32_t>(preset.Canvases.size());
        canvas.CanvasCfg.NumOutputs = count;
        preset.Canvases.push_back(canvas);
    }
    return preset;
}

Cube Attach(EasyCanvasAlignment alignment, const Size2D& size, const Size2D& canvasSize) {
    CanvasInfo canvas;
    canvas.CanvasCfg.Dimensions = canvasSize;
    EXPECT_EQ(AttachAssetToCanvas(alignment, "C:\\Assets\\a.mov", size, canvas), ZORVIC_STATUS_OK);
    return canvas.Assets.at(0).PinnedCoords;
}

Cube Place(std::int32_t x, std::int32_t y, std::int32_t width, std::int32_t height) {
    return {{{width, height}, {x, y}}, 0, 1};
}

}  // namespace

TEST(Players, GoToCanvasesInOrderOfTheirNumbersUntilTheyAreUsedUp) {
    Preset preset = PresetWithOutputs({1, 2, 0, 3, 1});
    std::swap(preset.Canvases[0], preset.Canvases[1]);
    const std::vector<int> players = {1, 6, 0, 8, 0};
    for (std::uint32_t i = 0; i < players.size(); ++i)
        EXPECT_EQ(preset.GetPlayersForCanvas(i), players[i]) << "canvas " << i;
    EXPECT_EQ(preset.GetActivePlayerForCanvas(1), ZORVIC_PLAYER_2);
    EXPECT_EQ(preset.GetActivePlayerForCanvas(4), ZORVIC_PLAYER_INVALID);
    EXPECT_EQ(preset.GetPlayersForCanvas(99), ZORVIC_PLAYER_INVALID);
    EXPECT_EQ(preset.LookupCanvasByPlayer(ZORVIC_PLAYER_3), &preset.Canvases[0]);
    EXPECT_EQ(preset.LookupCanvasByPlayer(ZORVIC_PLAYER_INVALID), nullptr);
    EXPECT_EQ(preset.LookupCanvasByPlayer(static_cast<Player>(3)), nullptr);
    EXPECT_EQ(PresetWithOutputs({1}).LookupCanvasByPlayer(ZORVIC_PLAYER_2), nullptr);

    constexpr auto Most = std::numeric_limits<std::uint32_t>::max();  // the sum must not wrap around
    const Preset absurd = PresetWithOutputs({1, Most, 1, Most});
    EXPECT_EQ(absurd.GetPlayersForCanvas(1), 14);
    EXPECT_EQ(absurd.GetPlayersForCanvas(2), ZORVIC_PLAYER_INVALID);
}

TEST(Players, RangeIsFirstAndLastNumberOrNull) {
    using Range = std::unique_ptr<std::array<std::uint32_t, 2>>;
    EXPECT_EQ(Range(GetPlayerRange(ZORVIC_PLAYER_INVALID)), nullptr);
    EXPECT_THAT(*Range(GetPlayerRange(ZORVIC_PLAYER_4)), testing::ElementsAre(4U, 4U));
    EXPECT_THAT(*Range(GetPlayerRange(static_cast<Player>(3))), testing::ElementsAre(1U, 2U));
}

TEST(Attach, PlacesEveryAlignment) {
    const Size2D hd{1920, 1080};
    const Size2D vga{640, 480};
    EXPECT_EQ(Attach(ZORVIC_ECALIGN_TOPLEFT, vga, hd), Place(0, 0, 640, 480));
    EXPECT_EQ(Attach(ZORVIC_ECALIGN_TOPCENTER, vga, hd), Place(640, 0, 640, 480));
    EXPECT_EQ(Attach(ZORVIC_ECALIGN_TOPRIGHT, vga, hd), Place(1280, 0, 640, 480));
    EXPECT_EQ(Attach(ZORVIC_ECALIGN_BOTTOMLEFT, vga, hd), Place(0, 600, 640, 480));
    EXPECT_EQ(Attach(ZORVIC_ECALIGN_BOTTOMCENTER, vga, hd), Place(640, 600, 640, 480));
    EXPECT_EQ(Attach(ZORVIC_ECALIGN_BOTTOMRIGHT, vga, hd), Place(1280, 600, 640, 480));
    EXPECT_EQ(Attach(ZORVIC_ECALIGN_CENTERRIGHT, vga, hd), Place(1280, 300, 640, 480));
    EXPECT_EQ(Attach(ZORVIC_ECALIGN_CENTERLEFT, vga, hd), Place(0, 300, 640, 480));
    EXPECT_EQ(Attach(ZORVIC_ECALIGN_CENTERED, {3840, 2161}, hd), Place(-960, -541, 3840, 2161));
    EXPECT_EQ(Attach(ZORVIC_ECALIGN_SCALED_CENTERED, vga, hd), Place(240, 0, 1440, 1080));
    EXPECT_EQ(Attach(ZORVIC_ECALIGN_SCALED_LEFT, vga, hd), Place(0, 0, 1440, 1080));
    EXPECT_EQ(Attach(ZORVIC_ECALIGN_SCALED_RIGHT, vga, hd), Place(480, 0, 1440, 1080));
    EXPECT_EQ(Attach(ZORVIC_ECALIGN_SCALED_TOP, {2560, 1080}, hd), Place(0, 0, 1920, 810));
    EXPECT_EQ(Attach(ZORVIC_ECALIGN_SCALED_BOTTOM, {2560, 1080}, hd), Place(0, 270, 1920, 810));
    EXPECT_EQ(Attach(ZORVIC_ECALIGN_STRETCHED, vga, hd), Place(0, 0, 1920, 1080));
}

TEST(Attach, AbsurdSizesStayInRange) {
    constexpr auto Most = std::numeric_limits<std::int32_t>::max();
    constexpr auto Least = std::numeric_limits<std::int32_t>::min();
    EXPECT_EQ(Attach(ZORVIC_ECALIGN_SCALED_CENTERED, {Most, Most}, {Most, Most}), Place(0, 0, Most, Most));
    EXPECT_EQ(Attach(ZORVIC_ECALIGN_SCALED_LEFT, {1, Most}, {1920, 1080}), Place(0, 0, 1, 1080));
    EXPECT_EQ(Attach(ZORVIC_ECALIGN_SCALED_TOP, {Most, 1}, {1920, 1080}), Place(0, 0, 1920, 1));
    EXPECT_EQ(Attach(ZORVIC_ECALIGN_BOTTOMRIGHT, {Most, Most}, {Least, 0}), Place(1 - Most, 1 - Most, Most, Most));
}

TEST(Attach, RefusesNonsenseAndLeavesTheCanvasAlone) {
    CanvasInfo canvas;
    canvas.CanvasCfg.Dimensions = {1920, 1080};
    for (const auto alignment : {ZORVIC_ECALIGN_INVALID, ZORVIC_ECALIGN_MAX}) {
        EXPECT_EQ(AttachAssetToCanvas(alignment, "a", {1, 1}, canvas), ZORVIC_STATUS_MISUSED);
    }
    EXPECT_EQ(AttachAssetToCanvas(ZORVIC_ECALIGN_CENTERED, "", {1, 1}, canvas), ZORVIC_STATUS_MISUSED);
    EXPECT_EQ(AttachAssetToCanvas(ZORVIC_ECALIGN_CENTERED, "a", {0, 1}, canvas), ZORVIC_STATUS_MISUSED);
    EXPECT_EQ(AttachAssetToCanvas(ZORVIC_ECALIGN_CENTERED, "a", {1, -1}, canvas), ZORVIC_STATUS_MISUSED);
    EXPECT_TRUE(canvas.Assets.empty());
    AttachAssetToCanvas(ZORVIC_ECALIGN_CENTERED, "a", {1, 1}, canvas);
    AttachAssetToCanvas(ZORVIC_ECALIGN_CENTERED, "b", {1, 1}, canvas);
    EXPECT_EQ(canvas.Assets.at(1).PinnedCoords.Z, 1) << "above what is there";
}
