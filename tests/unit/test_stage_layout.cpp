#include "unit/stage_fixture.h"

namespace ZorvicRender {
namespace {

class LayoutTest : public StageTest {
protected:
    void ShowStill(const std::filesystem::path& file, const std::string& preset = WholeOutput) {
        ShowStills({{file, preset}});
    }
    void ShowStills(const std::vector<Shown>& stills) {
        std::vector<zorvic::render::Layer> layers;
        for (const Shown& still : stills) {
            layers.push_back(Layer(++Presets, still));
            AddSpan(layers.back(), {}, std::chrono::hours(1), {}, false);
        }
        Show(std::move(layers));
        FollowAt(milliseconds(0));
        EXPECT_TRUE(WaitUntil([&] { return Stagehand.ReadyRuns(Playing, At({})).size() == stills.size(); }));
        FollowAt(milliseconds(20));
    }
    /// A preset of one canvas on the first output.
    static std::string Canvas(const std::string& pins) {
        return "canvases { num_outputs: 1 width: 160 height: 90 " + pins + " }";
    }
    Rgb On(std::size_t output, int x, int y) { return PixelAt(Draw(output), x, y); }
    void ExpectNear(const Rgb& colour, int x) {
        const Rgb shown = On(0, x, 45);
        for (std::size_t channel = 0; channel < 3; ++channel)
            EXPECT_NEAR(shown[channel], colour[channel], 2);
    }

    static constexpr Rgb Red{255, 0, 0}, Green{0, 255, 0}, Blue{0, 0, 255}, White{255, 255, 255}, Black{0, 0, 0};
    const TemporaryDirectory Files;
    int Presets = 0;  ///< each shows another one
};

/// Four columns of flat colours, for ffmpeg.
std::string Columns(const std::array<std::array<int, 3>, 4>& colours) {
    std::string source = "-f lavfi -i \"color=s=160x90:r=25:d=0.2,format=gbrp,geq=";
    for (std::size_t channel = 0; channel < 3; ++channel) {
        source += std::string(1, "rgb"[channel]) + "='0";
        for (std::size_t column = 0; column < 4; ++column)
            source +=
                "+" + std::to_string(colours[column][channel]) + "*eq(floor(X/40)," + std::to_string(column) + ")";
        source += "':";
    }
    source.back() = '"';
    return source;
}

TEST_F(LayoutTest, CanvasesTakeOutputsInOrderAndAreCutByOrientation) {
    const auto columns = Files / "columns.png";
    ASSERT_TRUE(ZorvicUnit::Encode(Columns({Red, Green, Blue, White}) + " -frames:v 1", columns));
    const std::string pin = "assets { full_path: 'a' width: 320 height: 90 } ";
    ShowStill(columns, "canvases { orientation: 4 num_outputs: 2 width: 320 height: 90 " + pin + "}");
    EXPECT_EQ(On(0, 20, 45), Red);
    EXPECT_EQ(On(0, 140, 45), Green);
    EXPECT_EQ(On(1, 20, 45), Blue);
    EXPECT_EQ(On(1, 140, 45), White);

    const std::string tall = "assets { full_path: 'a' width: 160 height: 180 } ";
    ShowStill(columns, "canvases { orientation: 5 num_outputs: 2 width: 160 height: 180 " + tall + "}");
    EXPECT_EQ(On(0, 20, 45), Red);
    EXPECT_EQ(On(1, 140, 45), White);

    // The canvas with the lower index comes first, wherever it stands in the list.
    ShowStill(columns, Canvas("index: 7") + Canvas("index: 2 assets { full_path: 'a' width: 160 height: 90 }"));
    EXPECT_EQ(On(0, 20, 45), Red);
    EXPECT_EQ(On(1, 20, 45), Black);

    // Half of it hangs over the left edge; the place has two pixels for each of the picture.
    ShowStill(columns, Canvas("assets { full_path: 'a' x: -160 y: 45 width: 320 height: 45 }"));
    EXPECT_EQ(On(0, 40, 70), Blue);
    EXPECT_EQ(On(0, 120, 70), White);
    EXPECT_EQ(On(0, 40, 20), Black);

    // The layer on top covers the one below, half of it with alpha one half.
    const auto glass = Files / "glass.png";
    ASSERT_TRUE(ZorvicUnit::Encode("-f lavfi -i color=c=0x0000FF@0.5:s=160x90,format=rgba -frames:v 1", glass));
    ShowStills({{columns}, {glass, Canvas("assets { full_path: 'a' width: 160 height: 45 }")}});
    const Rgb mixed = On(0, 20, 20);
    EXPECT_NEAR(mixed[0], 127, 2);
    EXPECT_NEAR(mixed[2], 128, 2);
    EXPECT_EQ(On(0, 20, 70), Red);

    // Within a preset: Z, then the order of pinning.
    ShowStill(columns, Canvas("assets { full_path: 'a' width: 160 height: 90 z: 1 } "
                              "assets { full_path: 'a' x: 80 width: 160 height: 90 }"));
    EXPECT_EQ(On(0, 140, 45), White) << "the higher one was pinned first";
}

TEST_F(LayoutTest, TurnsAsTheFileAsks) {
    const auto flat = Files / "flat.mp4";
    ASSERT_TRUE(
        ZorvicUnit::Encode("-f lavfi -i color=c=white:s=64x64:r=25:d=0.2 -vf "
                           "\"format=yuv444p,geq=lum='if(lt(Y,32),235,16)':cb=128:cr=128\" -c:v libx264 -qp 1",
                           flat));
    // Degrees against the clock in the file; where the white half comes to lie.
    for (const auto& [degrees, x, y] : {std::tuple{"0", 80, 20}, {"90", 20, 45}, {"180", 80, 70}, {"270", 140, 45}}) {
        SCOPED_TRACE(degrees);
        const auto turned = Files / (std::string("turned") + degrees + ".mp4");
        ASSERT_TRUE(ZorvicUnit::Encode("-i " + flat.string() + " -c copy -metadata:s:v rotate=" + degrees, turned));
        ShowStill(turned);
        EXPECT_GT(On(0, x, y)[0], 200);
        EXPECT_LT(On(0, 160 - x, 90 - y)[0], 50);
    }
}

TEST_F(LayoutTest, FlatColoursComeOutAsTagged) {
    const std::array<Rgb, 4> colours{Rgb{192, 128, 64}, {32, 80, 208}, White, {16, 16, 16}};
    // How colours become luma and chroma, and what the file says of that.
    for (const auto& [matrix, range, format, tags] :
         {std::tuple{"bt601", "tv", "yuv444p", "-colorspace smpte170m -color_range tv"},
          {"bt709", "tv", "yuv444p", "-colorspace bt709 -color_range tv"},
          {"bt709", "pc", "yuv444p", "-colorspace bt709 -color_range pc"},
          {"bt601", "pc", "yuv420p", "-colorspace smpte170m -color_range pc"},
          {"bt709", "tv", "yuv420p10le", "-colorspace bt709 -color_range tv"},
          {"bt601", "tv", "yuv444p", ""}}) {
        SCOPED_TRACE(std::string(matrix) + range + format + tags);
        const auto file = Files / (std::to_string(Presets) + ".mp4");
        const std::string scale = std::string(" -vf scale=out_color_matrix=") + matrix + ":out_range=" + range +
                                  ":flags=accurate_rnd,format=" + format + " ";
        if (!ZorvicUnit::Encode(Columns(colours) + scale + tags + " -c:v libx264 -qp 0", file)) continue;
        ShowStill(file);
        for (std::size_t column = 0; column < colours.size(); ++column)
            ExpectNear(colours[column], 20 + 40 * static_cast<int>(column));
    }
}

TEST_F(LayoutTest, PictureControlsTurnColoursAsPromised) {
    const auto file = Files / "brown.png";
    ASSERT_TRUE(ZorvicUnit::Encode("-f lavfi -i color=c=0x806040:s=160x90,format=rgb24 -frames:v 1", file));
    // Luma of the colour by BT.709 is 0.2126 * 128 + 0.7152 * 96 + 0.0722 * 64 = 100.5.
    const std::vector<std::pair<std::string, Rgb>> cases = {
        {"", {128, 96, 64}},
        {"contrast: 1", {128, 64, 1}},  // 127.5 + 2 * (c - 127.5)
        {"contrast: -1", {128, 128, 128}},
        {"brightness: 1", {255, 224, 192}},  // + 127.5
        {"brightness: -0.5", {64, 32, 0}},
        {"saturation: -1", {100, 100, 100}},
        {"saturation: 1", {156, 92, 28}},  // luma + 2 * (c - luma)
        {"hue: 1", {73, 105, 137}},        // luma - (c - luma)
    };
    for (const auto& [controls, colour] : cases) {
        SCOPED_TRACE(controls);
        ShowStill(file, Canvas("assets { full_path: 'a' width: 160 height: 90 " + controls + " }"));
        ExpectNear(colour, 80);
    }
}

}  // namespace
}  // namespace ZorvicRender
