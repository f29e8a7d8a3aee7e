#include "support/clippreset.h"
#include "support/consolewindows.h"
#include "support/unitprocess.h"
#include "text/picturevalue.h"
#include "widgets/sliderthrottle.h"

#include <zorvic/zorvic.h>

#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QSlider>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <fstream>
#include <vector>

namespace {

/// Left and right volume, and hue as its slider shows it.
using Mix = std::array<int, 3>;
constexpr Mix Before = {65535, 20000, -100};

struct DraggedSlider {
    const char* Name;
    std::size_t Entry;  ///< in Mix
};

/// One console in this process and one in another, on one unit with one preset.
class TwoConsoles : public testing::TestWithParam<DraggedSlider> {
protected:
    TwoConsoles() {
        Zorvic::Preset preset = ClipPreset("Shared");
        preset.Canvases[0].Assets[0].Hue = PictureValue(Before[2]);
        preset.Volume = {Before[0], Before[1]};
        EXPECT_EQ(Observer.CreatePreset(preset), Zorvic::ZORVIC_STATUS_OK);
        Observer.SelectPreset(1);
        Console.Connect(Unit.Host());
        Slider = Console.Find<QSlider>(GetParam().Name);
        QObject::connect(Slider->findChild<SliderThrottle*>(), &SliderThrottle::Changed, Slider,
                         [this](int value) { Sent.push_back(value); });
    }
    /// The other console's last word on its slider.
    int OtherShows() const {
        std::ifstream shown(Directory.Path() + "/shown");
        int last = -1;
        for (std::string word; shown >> word;) {
            if (word == GetParam().Name) shown >> last;
        }
        return last;
    }
    bool OtherComesToShow(int value) const {
        return QTest::qWaitFor([&] { return OtherShows() == value; }, 30000);
    }
    /// Lets the consoles work for a moment, and writes down what the unit has then.
    void Observe() {
        QTest::qWait(10);
        std::vector<Zorvic::Preset> presets;
        ASSERT_EQ(Observer.GetPresets(presets), Zorvic::ZORVIC_STATUS_OK);
        const auto& preset = presets.at(0);
        const Mix mix = {preset.Volume[0], preset.Volume[1], PicturePosition(preset.Canvases[0].Assets[0].Hue)};
        if (mix != (Seen.empty() ? Before : Seen.back())) Seen.push_back(mix);
    }

    TemporaryDirectory Directory;
    UnitProcess Unit{Directory.Path() + "/store", {"--announce", "off"}};
    Zorvic::Session Observer{Unit.Host(), 1};
    ConsoleWindows Console;
    ChildProcess Other{{ZORVIC_WATCHING_CONSOLE, Unit.Host()}, Directory.Path() + "/shown"};
    QSlider* Slider = nullptr;
    std::vector<Mix> Seen;
    std::vector<int> Sent;
};

TEST_P(TwoConsoles, ADragLeavesItsLastValueAndNoEcho) {
    const std::size_t entry = GetParam().Entry;
    ASSERT_TRUE(OtherComesToShow(Before[entry]));
    Slider->setSliderDown(true);
    QElapsedTimer elapsed;
    elapsed.start();
    for (int step = 0; step <= 250; ++step) {  // from the top to the bottom, back and to the middle
        const int percent = std::abs(step % 200 - 100);
        const int position = Slider->minimum() + (Slider->maximum() - Slider->minimum()) / 100 * percent;
        Slider->setSliderPosition(position);
        Observe();
        EXPECT_EQ(Slider->value(), position) << "the knob moved under the mouse";
    }
    const int last = Slider->value();
    Slider->setSliderDown(false);
    EXPECT_LE(static_cast<qint64>(Sent.size()), elapsed.elapsed() / 40 + 3);
    EXPECT_TRUE(OtherComesToShow(last));
    for (int round = 0; round < 50; ++round)
        Observe();
    EXPECT_EQ(Slider->value(), last);
    EXPECT_EQ(OtherShows(), last);

    // The unit went through what this console sent, in that order, and through nothing else.
    EXPECT_GT(Seen.size(), 10U);
    auto next = Sent.begin();
    for (const auto& mix : Seen) {
        next = std::find(next, Sent.end(), mix[entry]);
        ASSERT_NE(next, Sent.end()) << "the unit was set to " << mix[entry] << " by another hand";
        Mix expected = Before;
        expected[entry] = *next;
        EXPECT_EQ(mix, expected);
    }
    EXPECT_EQ(Seen.back()[entry], last);
}
INSTANTIATE_TEST_SUITE_P(, TwoConsoles, testing::Values(DraggedSlider{"LChannel", 0}, DraggedSlider{"HueSel", 2}),
                         [](const auto& test) { return std::string(test.param.Name); });

}  // namespace
