#pragma once

#include "render/gl/compositor.h"
#include "render/gl/gl_context.h"
#include "render/stage/stage.h"
#include "unit/media_samples.h"

#include <gmock/gmock.h>
#include <google/protobuf/text_format.h>

#include <algorithm>
#include <map>
#include <thread>

namespace ZorvicRender {

using std::chrono::milliseconds;

constexpr Nanoseconds Tick = milliseconds(20);
constexpr PixelSize OutputSize{160, 90};
constexpr int CodeBits = 10;
constexpr int BitWidth = OutputSize.Width / CodeBits;

/// Encodes a clip whose pictures carry their own number as bars of black and white, lowest bit at the left. 25 a
/// second.
inline bool EncodeNumbered(const std::string& encoder, int pictures, const std::filesystem::path& file) {
    const std::string seconds = std::to_string(pictures / 25.0);
    return ZorvicUnit::Encode(
        "-f lavfi -i color=s=160x90:r=25:d=" + seconds +
            " -vf \"format=yuv420p,geq=lum='if(mod(floor(N/pow(2,floor(X/16))),2),235,16)':cb=128:cr=128\" " + encoder,
        file);
}

/// Two small outputs side by side without windows, and a clock that the test moves.
class StageTest : public ::testing::Test {
protected:
    using Rgb = std::array<int, 3>;

    static constexpr auto WholeOutput =
        "canvases { num_outputs: 1 width: 160 height: 90 assets { full_path: 'a' width: 160 height: 90 } }";
    /// One layer that shows the file.
    struct Shown {
        std::filesystem::path File;
        std::string Preset = WholeOutput;
    };

    static TimePoint At(Nanoseconds sinceStart) { return TimePoint(std::chrono::hours(1) + sinceStart); }

    static zorvic::render::Layer Layer(int pk, const Shown& shown) {
        zorvic::render::Layer layer;
        layer.set_pk(pk);
        layer.set_run(1);
        EXPECT_TRUE(google::protobuf::TextFormat::ParseFromString(shown.Preset, layer.mutable_preset()));
        auto& medium = *layer.add_media();
        medium.set_path("a");
        medium.set_file(shown.File);
        return layer;
    }

    static void AddSpan(zorvic::render::Layer& layer, Nanoseconds from, Nanoseconds until, Nanoseconds position,
                        bool moves, Nanoseconds windowStart = {}, Nanoseconds windowEnd = std::chrono::hours(1)) {
        auto& span = *layer.add_spans();
        span.set_from(At(from).time_since_epoch().count());
        span.set_until(At(until).time_since_epoch().count());
        span.set_position(position.count());
        span.set_moves(moves);
        span.set_window_start(windowStart.count());
        span.set_window_end(windowEnd.count());
    }

    void Show(std::vector<zorvic::render::Layer> layers, Nanoseconds until = std::chrono::hours(1)) {
        zorvic::render::Outlook outlook;
        outlook.set_until(At(until).time_since_epoch().count());
        for (auto& layer : layers)
            *outlook.add_layers() = std::move(layer);
        Playing = NextScene(Playing, outlook);
    }

    /// Follows the scene at this moment until everything that it shows is there; how often a picture was missing at
    /// first does not count here.
    void FollowAt(Nanoseconds moment) {
        for (int attempt = 0; attempt < 5000; ++attempt) {
            const auto before = Stagehand.Counted().Repeated;
            Stagehand.Follow(Playing, At(moment), Tick);
            const bool shows = std::ranges::any_of(Playing.Layers, [&](const auto& l) { return l->At(At(moment)); });
            const bool black = Stagehand.Shown(0).empty() && Stagehand.Shown(1).empty();
            if (Stagehand.Counted().Repeated == before && !(shows && black)) return;
            std::this_thread::sleep_for(milliseconds(1));
        }
        FAIL() << "no picture came";
    }

    std::vector<std::uint8_t> Draw(std::size_t output) {
        Surface.Bind();
        Painter.Draw(Stagehand.Shown(output), OutputSize, {0, 0, OutputSize.Width, OutputSize.Height});
        return Surface.Read();
    }

    static Rgb PixelAt(const std::vector<std::uint8_t>& pixels, int x, int y) {
        const auto at = static_cast<std::size_t>(y * OutputSize.Width + x) * 4;
        return {pixels[at], pixels[at + 1], pixels[at + 2]};
    }

    /// The number that the picture on output 1 carries; -1 for black.
    int NumberAt(Nanoseconds moment) {
        FollowAt(moment);
        if (Stagehand.Shown(0).empty()) return -1;
        const auto pixels = Draw(0);
        int number = 0;
        for (int bit = 0; bit < CodeBits; ++bit)
            number |= (PixelAt(pixels, bit * BitWidth + BitWidth / 2, 45)[0] > 128 ? 1 : 0) << bit;
        return number;
    }

    std::vector<std::string> Troubles;
    Scene Playing;
    HeadlessContext Context;
    Stage Stagehand{{{1, OutputSize, OutputSize}, {2, OutputSize, OutputSize}},
                    [this](const std::string& text) { Troubles.push_back(text); }};
    Compositor Painter;
    Canvas Surface{OutputSize};
};

}  // namespace ZorvicRender
