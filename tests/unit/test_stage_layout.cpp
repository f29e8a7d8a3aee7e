#include "unit/stage_fixture.h"

#include <cmath>

using ::testing::Each;
using ::testing::Le;

namespace ZorvicRender {
namespace {

class LayoutTest : public StageTest {
protected:
    /// A still of these colours in equal columns, or rows when the filter turns it.
    std::filesystem::path Still(const std::string& name, const std::string& source, const std::string& more = "") {
        const auto file = Files / name;
        EXPECT_TRUE(ZorvicUnit::Encode("-f lavfi -i \"" + source + "\" -frames:v 1 " + more, file)) << name;
        return file;
    }
    void ShowStill(const std::filesystem::path& file, const std::string& preset, int pk = 1) {
        ShowStills({{file, preset}}, pk);
    }
    void ShowStills(const std::vector<Shown>& stills, int pk = 1) {
        std::vector<zorvic::render::Layer> layers;
        for (const Shown& still : stills) {
            layers.push_back(Layer(pk++, still));
            AddSpan(layers.back(), {}, std::chrono::hours(1), {}, false);
        }
        Show(std::move(layers));
        FollowAt(milliseconds(0));
        // Each source has its picture.
        for (int i = 0; i < 3000; ++i) {
            std::size_t complete = 0;
            for (const auto* layer : Stagehand.ReadyLayers(Playing))
                complete += layer == nullptr ? 0 : 1;
            if (complete == stills.size()) break;
            std::this_thread::sleep_for(milliseconds(1));
        }
        FollowAt(milliseconds(20));
    }
    /// Columns of red, green, blue and white.
    std::filesystem::path Columns() {
        return Still(
            "columns.png",
            "color=s=160x90,format=rgb24,geq=r='255*(lt(X,40)+gte(X,120))':g='255*(gte(X,40)*lt(X,80)+gte(X,120))':"
            "b='255*gte(X,80)'");
    }
    Rgb On(std::size_t output, int x, int y) { return PixelAt(Draw(output), x, y); }

    const ZorvicUnit::MediaDirectory Files;
};

constexpr std::array<int, 3> Red{255, 0, 0};
constexpr std::array<int, 3> Green{0, 255, 0};
constexpr std::array<int, 3> Blue{0, 0, 255};
constexpr std::array<int, 3> White{255, 255, 255};
constexpr std::array<int, 3> Black{0, 0, 0};

TEST_F(LayoutTest, CanvasesTakeOutputsInOrderAndAreCutByOrientation) {
    const auto columns = Columns();
    const std::string pin = "assets { full_path: 'a' width: 320 height: 90 } ";
    ShowStill(columns, "canvases { orientation: 4 num_outputs: 2 width: 320 height: 90 " + pin + "}");
    EXPECT_EQ(On(0, 20, 45), Red);
    EXPECT_EQ(On(0, 140, 45), Green);
    EXPECT_EQ(On(1, 20, 45), Blue);
    EXPECT_EQ(On(1, 140, 45), White);

    const std::string tall = "assets { full_path: 'a' width: 160 height: 180 } ";
    ShowStill(columns, "canvases { orientation: 5 num_outputs: 2 width: 160 height: 180 " + tall + "}", 2);
    EXPECT_EQ(On(0, 20, 45), Red);
    EXPECT_EQ(On(1, 140, 45), White);

    // The canvas with the lower index comes first, wherever it stands in the list.
    const std::string whole = "assets { full_path: 'a' width: 160 height: 90 } ";
    ShowStill(columns,
              "canvases { index: 7 num_outputs: 1 width: 160 height: 90 } "
              "canvases { index: 2 num_outputs: 1 width: 160 height: 90 " +
                  whole + "}",
              3);
    EXPECT_EQ(On(0, 20, 45), Red);
    EXPECT_EQ(On(1, 20, 45), Black);
}

TEST_F(LayoutTest, PlacesClipsAndStacks) {
    const auto columns = Columns();
    const auto glass = Still("glass.png", "color=c=0x0000FF@0.5:s=160x90,format=rgba");
    // Half of it hangs over the left edge; the place has two pixels for each of the picture.
    ShowStill(columns,
              "canvases { num_outputs: 1 width: 160 height: 90 "
              "assets { full_path: 'a' x: -160 y: 45 width: 320 height: 45 } }");
    EXPECT_EQ(On(0, 40, 70), Blue);
    EXPECT_EQ(On(0, 120, 70), White);
    EXPECT_EQ(On(0, 40, 20), Black);

    // The layer on top covers the one below, half of it with alpha one half.
    ShowStills({{columns,
                 "canvases { num_outputs: 1 width: 160 height: 90 "
                 "assets { full_path: 'a' width: 160 height: 90 } }"},
                {glass,
                 "canvases { num_outputs: 1 width: 160 height: 90 "
                 "assets { full_path: 'a' width: 160 height: 45 } }"}},
               10);
    const Rgb mixed = On(0, 20, 20);
    EXPECT_NEAR(mixed[0], 127, 2);
    EXPECT_NEAR(mixed[2], 128, 2);
    EXPECT_EQ(On(0, 20, 70), Red);

    // Within a preset: Z, then the order of pinning.
    ShowStill(columns,
              "canvases { num_outputs: 1 width: 160 height: 90 "
              "assets { full_path: 'a' width: 160 height: 90 z: 1 } "
              "assets { full_path: 'a' x: 80 width: 160 height: 90 } }",
              20);
    EXPECT_EQ(On(0, 140, 45), White) << "the higher one was pinned first";
}

TEST_F(LayoutTest, TurnsAsTheFileAsks) {
    const auto flat = Files / "flat.mp4";
    ASSERT_TRUE(
        ZorvicUnit::Encode("-f lavfi -i color=c=white:s=64x64:r=25:d=0.2 -vf "
                           "\"format=yuv444p,geq=lum='if(lt(Y,32),235,16)':cb=128:cr=128\" -c:v libx264 -qp 1",
                           flat));
    const std::string preset =
        "canvases { num_outputs: 1 width: 160 height: 90 assets { full_path: 'a' width: 160 height: 90 } }";
    int pk = 0;
    // Degrees against the clock in the file; where the white half comes to lie.
    for (const auto& [degrees, x, y] : {std::tuple{"0", 80, 20}, {"90", 20, 45}, {"180", 80, 70}, {"270", 140, 45}}) {
        SCOPED_TRACE(degrees);
        const auto turned = Files / (std::string("turned") + degrees + ".mp4");
        ASSERT_TRUE(ZorvicUnit::Encode("-i " + flat.string() + " -c copy -metadata:s:v rotate=" + degrees, turned));
        ShowStill(turned, preset, ++pk);
        EXPECT_GT(On(0, x, y)[0], 200);
        EXPECT_LT(On(0, 160 - x, 90 - y)[0], 50);
    }
}

TEST_F(LayoutTest, ColoursOfFlatPatchesComeOutAsTagged) {
    struct Coding {
        const char* Name;
        const char* Filter;
        const char* Encoder;
    };
    const std::vector<Coding> codings = {
        {"601.mp4", "scale=out_color_matrix=bt601:out_range=tv:flags=accurate_rnd,format=yuv444p",
         "-colorspace smpte170m -color_range tv -c:v libx264 -qp 0"},
        {"709.mp4", "scale=out_color_matrix=bt709:out_range=tv:flags=accurate_rnd,format=yuv444p",
         "-colorspace bt709 -color_range tv -c:v libx264 -qp 0"},
        {"709full.mp4", "scale=out_color_matrix=bt709:out_range=pc:flags=accurate_rnd,format=yuv444p",
         "-colorspace bt709 -color_range pc -c:v libx264 -qp 0"},
        {"601full.mp4", "scale=out_color_matrix=bt601:out_range=pc:flags=accurate_rnd,format=yuv420p",
         "-colorspace smpte170m -color_range pc -c:v libx264 -qp 0"},
        {"709ten.mp4", "scale=out_color_matrix=bt709:out_range=tv:flags=accurate_rnd,format=yuv420p10le",
         "-colorspace bt709 -color_range tv -c:v libx264 -qp 0"},
        {"untagged.mp4", "scale=out_color_matrix=bt601:out_range=tv:flags=accurate_rnd,format=yuv444p",
         "-c:v libx264 -qp 0"},
    };
    int pk = 0;
    for (const Coding& coding : codings) {
        for (const auto& [text, colour] : {std::pair{"0xC08040", Rgb{192, 128, 64}},
                                           {"0x2050D0", Rgb{32, 80, 208}},
                                           {"0xFFFFFF", White},
                                           {"0x101010", Rgb{16, 16, 16}}}) {
            SCOPED_TRACE(std::string(coding.Name) + " " + text);
            const auto file = Files / (std::to_string(++pk) + coding.Name);
            if (!ZorvicUnit::Encode("-f lavfi -i color=c=" + std::string(text) +
                                        ":s=160x90:r=25:d=0.2,format=gbrp -vf " + coding.Filter + " " + coding.Encoder,
                                    file))
                continue;
            ShowStill(
                file,
                "canvases { num_outputs: 1 width: 160 height: 90 assets { full_path: 'a' width: 160 height: 90 } }",
                pk);
            const Rgb shown = On(0, 80, 45);
            for (std::size_t channel = 0; channel < 3; ++channel)
                EXPECT_NEAR(shown[channel], colour[channel], 2);
        }
    }
}

TEST_F(LayoutTest, PictureControlsTurnColoursAsPromised) {
    const auto file = Still("grey.png", "color=c=0x806040:s=160x90,format=rgb24");
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
    int pk = 0;
    for (const auto& [controls, colour] : cases) {
        SCOPED_TRACE(controls);
        ShowStill(file,
                  "canvases { num_outputs: 1 width: 160 height: 90 assets { full_path: 'a' width: 160 height: 90 " +
                      controls + " } }",
                  ++pk);
        const Rgb shown = On(0, 80, 45);
        for (std::size_t channel = 0; channel < 3; ++channel)
            EXPECT_NEAR(shown[channel], colour[channel], 2);
    }
}

}  // namespace
}  // namespace ZorvicRender
