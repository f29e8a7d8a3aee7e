#include "consoleonunit.h"

#include <QElapsedTimer>
#include <QSlider>

#include <cmath>
#include <fstream>

namespace {

/// Left and right volume, and hue as its slider shows it.
using Mix = std::array<int, 3>;
constexpr Mix Before = {65535, 20000, -100};

/// One console in this process and one in another, on one unit with one preset. The parameter is an entry of Mix.
class TwoConsoles : public ConsoleOnUnit, public testing::WithParamInterface<std::size_t> {
protected:
    TwoConsoles() {
        Zorvic::Preset preset = ClipPreset("Shared");
        preset.Canvases[0].Assets[0].Hue = -1.0F;
        preset.Volume = {Before[0], Before[1]};
        EXPECT_EQ(Unit.Observer->CreatePreset(preset), Zorvic::ZORVIC_STATUS_OK);
        Unit.Observer->SelectPreset(1);
        Connect();
        Slider = Console.Find<QSlider>(Name);
    }
    /// The other console's last word on its slider.
    int OtherShows() const {
        std::ifstream shown(Unit.Directory.Path() + "/shown");
        int last = -1;
        for (std::string word; shown >> word;)
            if (word == Name) shown >> last;
        return last;
    }
    /// Lets the consoles work for a moment, and writes down what the unit has then.
    void Observe() {
        QTest::qWait(10);
        const auto preset = Unit.Preset();
        const auto hue = std::lround(preset.Canvases.at(0).Assets.at(0).Hue * 100);
        const Mix mix = {preset.Volume[0], preset.Volume[1], static_cast<int>(hue)};
        if (mix != Seen.back()) Seen.push_back(mix);
    }

    const std::size_t Entry = GetParam();
    const char* const Name = std::array{"LChannel", "RChannel", "HueSel"}.at(Entry);
    ChildProcess Other{{ZORVIC_WATCHING_CONSOLE, Unit.Process->Host()}, Unit.Directory.Path() + "/shown"};
    QSlider* Slider = nullptr;
    std::vector<Mix> Seen = {Before};
};

TEST_P(TwoConsoles, ADragLeavesItsLastValueAndNoEcho) {
    ASSERT_TRUE(Becomes([this] { return OtherShows() == Before[Entry]; }));
    Slider->setSliderDown(true);
    std::vector<int> positions = {Before[Entry]};
    QElapsedTimer elapsed;
    elapsed.start();
    for (int step = 0; step <= 250; ++step) {  // from the top to the bottom, back and to the middle
        const int percent = std::abs(step % 200 - 100);
        positions.push_back(Slider->minimum() + (Slider->maximum() - Slider->minimum()) / 100 * percent);
        Slider->setSliderPosition(positions.back());
        Observe();
        EXPECT_EQ(Slider->value(), positions.back()) << "the knob moved under the mouse";
    }
    Slider->setSliderDown(false);
    EXPECT_GT(Seen.size(), 10U);
    EXPECT_LE(static_cast<qint64>(Seen.size()), elapsed.elapsed() / 40 + 4) << "not every position is sent";
    const int last = positions.back();
    EXPECT_TRUE(Becomes([&] { return OtherShows() == last; }));
    for (int round = 0; round < 50; ++round)
        Observe();
    EXPECT_EQ(Slider->value(), last);
    EXPECT_EQ(OtherShows(), last);

    // The unit went through what this console's slider did, in that order, and through nothing else.
    auto next = positions.cbegin();
    for (const auto& mix : Seen) {
        next = std::find(next, positions.cend(), mix[Entry]);
        ASSERT_NE(next, positions.cend()) << "the unit was set to " << mix[Entry] << " by another hand";
        Mix expected = Before;
        expected[Entry] = *next;
        EXPECT_EQ(mix, expected);
    }
    EXPECT_EQ(Seen.back()[Entry], last);
}
INSTANTIATE_TEST_SUITE_P(VolumeAndHue, TwoConsoles, testing::Values(0, 2));

}  // namespace
