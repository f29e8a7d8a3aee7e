#include <zorvic/layout.h>

#include <gmock/gmock.h>

#include <limits>

using namespace Zorvic;

namespace {

constexpr auto Most = std::numeric_limits<std::int32_t>::max();
constexpr auto Least = std::numeric_limits<std::int32_t>::min();

Preset PresetWithOutputs(const std::vector<std::uint32_t>& outputs) {
    Preset preset;
    for (const auto count : outputs) {
        CanvasInfo& canvas = preset.Canvases.emplace_back();
        canvas.Index = static_cast<std::uint32_t>(preset.Canvases.size() - 1);
        canvas.CanvasCfg.NumOutputs = count;
    }
    return preset;
}

}  // namespace

TEST(Players, GoToCanvasesInOrderOfTheirNumbersUntilTheyAreUsedUp) {
    Preset preset = PresetWithOutputs({1, 2, 0, 3, 1});
    std::swap(preset.Canvases[0], preset.Canvases[1]);
    const std::vector<int> players = {1, 6, 0, 8, 0};
    for (std::uint32_t i = 0; i < players.size(); ++i)
        EXPECT_EQ(preset.GetPlayersForCanvas(i), players[i]) << "canvas " << i;
    EXPECT_EQ(preset.GetActivePlayerForCanvas(1), ZORVIC_PLAYER_2);
    EXPECT_EQ(preset.GetPlayersForCanvas(99), ZORVIC_PLAYER_INVALID);
    EXPECT_EQ(preset.LookupCanvasByPlayer(ZORVIC_PLAYER_3), &preset.Canvases[0]);
    EXPECT_EQ(PresetWithOutputs({1}).LookupCanvasByPlayer(ZORVIC_PLAYER_2), nullptr);

    constexpr auto TooMany = std::numeric_limits<std::uint32_t>::max();  // the sum must not wrap around
    const Preset absurd = PresetWithOutputs({1, TooMany, 1, TooMany});
    EXPECT_EQ(absurd.GetPlayersForCanvas(1), 14);
    EXPECT_EQ(absurd.GetPlayersForCanvas(2), ZORVIC_PLAYER_INVALID);
}

TEST(Players, RangeIsFirstAndLastNumberOrNull) {
    using Range = std::unique_ptr<std::array<std::uint32_t, 2>>;
    EXPECT_EQ(Range(GetPlayerRange(ZORVIC_PLAYER_INVALID)), nullptr);
    EXPECT_THAT(*Range(GetPlayerRange(ZORVIC_PLAYER_4)), testing::ElementsAre(4U, 4U));
    EXPECT_THAT(*Range(GetPlayerRange(static_cast<Player>(3))), testing::ElementsAre(1U, 2U));
}

TEST(Attach, PlacesEveryAlignmentAndKeepsAbsurdSizesInRange) {
    const Size2D hd{1920, 1080};
    const Size2D vga{640, 480};
    const Size2D wide{2560, 1080};
    const std::tuple<EasyCanvasAlignment, Size2D, Size2D, Rect> cases[] = {
        {ZORVIC_ECALIGN_TOPCENTER, vga, hd, {{640, 480}, {640, 0}}},
        {ZORVIC_ECALIGN_TOPRIGHT, vga, hd, {{640, 480}, {1280, 0}}},
        {ZORVIC_ECALIGN_BOTTOMCENTER, vga, hd, {{640, 480}, {640, 600}}},
        {ZORVIC_ECALIGN_BOTTOMRIGHT, vga, hd, {{640, 480}, {1280, 600}}},
        {ZORVIC_ECALIGN_CENTERRIGHT, vga, hd, {{640, 480}, {1280, 300}}},
        {ZORVIC_ECALIGN_CENTERLEFT, vga, hd, {{640, 480}, {0, 300}}},
        {ZORVIC_ECALIGN_CENTERED, {3840, 2161}, hd, {{3840, 2161}, {-960, -541}}},
        {ZORVIC_ECALIGN_SCALED_CENTERED, vga, hd, {{1440, 1080}, {240, 0}}},
        {ZORVIC_ECALIGN_SCALED_LEFT, vga, hd, {{1440, 1080}, {0, 0}}},
        {ZORVIC_ECALIGN_SCALED_RIGHT, vga, hd, {{1440, 1080}, {480, 0}}},
        {ZORVIC_ECALIGN_SCALED_TOP, wide, hd, {{1920, 810}, {0, 0}}},
        {ZORVIC_ECALIGN_SCALED_BOTTOM, wide, hd, {{1920, 810}, {0, 270}}},
        {ZORVIC_ECALIGN_STRETCHED, vga, hd, {{1920, 1080}, {0, 0}}},
        {ZORVIC_ECALIGN_CENTERED, {0, 0}, hd, {}},  // sound
        {ZORVIC_ECALIGN_SCALED_CENTERED, {Most, Most}, {Most, Most}, {{Most, Most}, {0, 0}}},
        {ZORVIC_ECALIGN_SCALED_TOP, {Most, 1}, hd, {{1920, 1}, {0, 0}}},
        {ZORVIC_ECALIGN_BOTTOMRIGHT, {Most, Most}, {Least, 0}, {{Most, Most}, {1 - Most, 1 - Most}}},
    };
    for (const auto& [alignment, asset, size, place] : cases) {
        CanvasInfo canvas;
        canvas.CanvasCfg.Dimensions = size;
        for (int z = 0; z < 2; ++z) {  // above what is there
            EXPECT_EQ(AttachAssetToCanvas(alignment, "a.mov", asset, canvas), ZORVIC_STATUS_OK);
            EXPECT_EQ(canvas.Assets.back().PinnedCoords, (Cube{place, z, 1})) << "alignment " << alignment;
        }
    }
}

TEST(Attach, RefusesNonsenseAndLeavesTheCanvasAlone) {
    CanvasInfo canvas;
    const std::tuple<EasyCanvasAlignment, const char*, Size2D> nonsense[] = {
        {ZORVIC_ECALIGN_INVALID, "a", {1, 1}},  {ZORVIC_ECALIGN_MAX, "a", {1, 1}},
        {ZORVIC_ECALIGN_CENTERED, "", {1, 1}},  {ZORVIC_ECALIGN_CENTERED, "a", {0, 1}},
        {ZORVIC_ECALIGN_CENTERED, "a", {1, 0}}, {ZORVIC_ECALIGN_CENTERED, "a", {-1, -1}}};
    for (const auto& [alignment, path, size] : nonsense)
        EXPECT_EQ(AttachAssetToCanvas(alignment, path, size, canvas), ZORVIC_STATUS_MISUSED);
    EXPECT_TRUE(canvas.Assets.empty());
}
