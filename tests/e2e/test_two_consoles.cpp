#include "picturevalue.h"
#include "sliderthrottle.h"
#include "support/consolewindows.h"
#include "support/unitprocess.h"

#include <zorvic/zorvic.h>

#include <gmock/gmock.h>

#include <QCheckBox>
#include <QElapsedTimer>
#include <QMouseEvent>
#include <QScopedValueRollback>
#include <QSlider>
#include <QTreeWidget>

#include <algorithm>
#include <array>
#include <fstream>
#include <memory>
#include <mutex>
#include <semaphore>
#include <thread>
#include <vector>

namespace {

using testing::ElementsAre;
using namespace std::chrono_literals;

constexpr int DragMS = 2500;
constexpr int LimitMS = 30000;

/// Left and right volume, and hue as its slider shows it.
using Mix = std::array<int, 3>;

/// Writes down everything that a preset of the unit goes through.
class Recorder {
public:
    Recorder(const std::string& host, int pk)
        : PK(pk), Unit(host, 1), Thread([this](const std::stop_token& stop) { Run(stop); }) {
        Unit.SetStateEventCallback(Zorvic::ZORVIC_STATE_PRESETS, &Recorder::OnEvent, this);
    }
    std::vector<Mix> Seen() {
        const std::scoped_lock lock(Lock);
        return Values;
    }

private:
    static void OnEvent(Zorvic::StateEventType /*type*/, void* self) {
        static_cast<Recorder*>(self)->Changed.release();
    }
    void Run(const std::stop_token& stop) {
        while (!stop.stop_requested()) {
            std::vector<Zorvic::Preset> presets;
            if (!Changed.try_acquire_for(50ms) || Unit.GetPresets(presets) != Zorvic::ZORVIC_STATUS_OK) continue;
            const auto preset = std::ranges::find(presets, PK, &Zorvic::Preset::PK);
            if (preset == presets.end()) continue;
            const Mix mix = {preset->Volume[0], preset->Volume[1], PicturePosition(preset->Canvases[0].Assets[0].Hue)};
            const std::scoped_lock lock(Lock);
            if (Values.empty() || Values.back() != mix) Values.push_back(mix);
        }
    }

    int PK;
    std::counting_semaphore<> Changed{0};
    std::mutex Lock;  ///< guards Values
    std::vector<Mix> Values;
    Zorvic::Session Unit;
    std::jthread Thread;
};

/// One console in this process and one in another, on one unit with the presets 1 (selected) and 2.
class TwoConsoles : public testing::Test {
protected:
    TwoConsoles() {
        Zorvic::Session session(Unit.Host(), 1);
        Zorvic::Preset preset;
        preset.Canvases.resize(1);
        preset.Canvases[0].CanvasCfg.Orientation = {Zorvic::CanvasOrientationEnum::Single, nullptr};
        preset.Canvases[0].CanvasCfg.NumOutputs = 1;
        preset.Canvases[0].CanvasCfg.Dimensions = {1920, 1080};
        Zorvic::AttachAssetToCanvas(Zorvic::ZORVIC_ECALIGN_STRETCHED, "C:\\Assets\\clip.mov", {1920, 1080},
                                    preset.Canvases[0]);
        preset.Canvases[0].Assets[0].Hue = -1;
        for (const auto& volume : {std::vector<std::uint16_t>{65535, 20000}, {30000, 40000}}) {
            preset.Volume = volume;
            EXPECT_EQ(session.CreatePreset(preset), Zorvic::ZORVIC_STATUS_OK);
        }
        session.SelectPreset(1);
        Console.Connect(Unit.Host());
        Other = std::make_unique<ChildProcess>(std::vector<std::string>{ZORVIC_WATCHING_CONSOLE, Unit.Host()},
                                               Directory.Path() + "/shown");
    }
    /// The other console's last word on one of its sliders.
    int OtherShows(const std::string& slider) const {
        std::ifstream shown(Directory.Path() + "/shown");
        int last = -1;
        for (std::string line; std::getline(shown, line);) {
            if (line.starts_with(slider + ' ')) last = std::stoi(line.substr(slider.size() + 1));
        }
        return last;
    }
    bool OtherComesToShow(const char* slider, int value) const {
        return QTest::qWaitFor([&] { return OtherShows(slider) == value; }, LimitMS);
    }

    TemporaryDirectory Directory;
    UnitProcess Unit{Directory.Path() + "/store", {"--announce", "off"}};
    ConsoleWindows Console;
    std::unique_ptr<ChildProcess> Other;
};

struct DraggedSlider {
    const char* Name;
    std::size_t Entry;  ///< in Mix
    QPoint Step;        ///< along the groove, away from the end where the knob starts
};

class DragAgainstAnotherConsole : public TwoConsoles, public testing::WithParamInterface<DraggedSlider> {
protected:
    DragAgainstAnotherConsole() : Slider(Console.Find<QSlider>(GetParam().Name)) {
        QObject::connect(Slider->findChild<SliderThrottle*>(), &SliderThrottle::Changed, Slider,
                         [this](int value) { Sent.push_back(value); });
        QObject::connect(Slider, &QSlider::valueChanged, Slider,
                         [this] { Jumps += Slider->isSliderDown() && !InMouseEvent ? 1 : 0; });
    }
    /// To and fro over the whole range until the time is over, then to the middle, where the knob is let go.
    void Drag() {
        Send(QEvent::MouseButtonPress, 0);
        ASSERT_TRUE(Slider->isSliderDown());
        const int length = std::max(Slider->width(), Slider->height());
        Elapsed.start();
        for (int i = 1; !Elapsed.hasExpired(DragMS); ++i) {
            const int distance = (i * 5) % (2 * length);
            Send(QEvent::MouseMove, std::min(distance, 2 * length - distance));
            QTest::qWait(8);
        }
        Send(QEvent::MouseMove, length / 2);
        LeftAt = Slider->value();
        Send(QEvent::MouseButtonRelease, length / 2);
        ASSERT_FALSE(Slider->isSliderDown());
    }

    QSlider* Slider;
    QElapsedTimer Elapsed;
    std::vector<int> Sent;
    int Jumps = 0;
    int LeftAt = -1;

private:
    /// Straight to the slider, so that nothing else runs in between.
    void Send(QEvent::Type type, int distance) {
        const QPoint step = GetParam().Step;
        const QPoint start(step.x() != 0 ? 8 : Slider->width() / 2, step.x() != 0 ? Slider->height() / 2 : 8);
        const auto button = type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton;
        const auto held = type == QEvent::MouseButtonRelease ? Qt::NoButton : Qt::LeftButton;
        QMouseEvent event(type, start + step * distance, button, held, Qt::NoModifier);
        const QScopedValueRollback<bool> inside(InMouseEvent, true);
        QApplication::sendEvent(Slider, &event);
    }

    bool InMouseEvent = false;
};

TEST_P(DragAgainstAnotherConsole, LeavesTheLastValueAndNoEcho) {
    const auto& dragged = GetParam();
    Recorder recorder(Unit.Host(), 1);
    ASSERT_TRUE(OtherComesToShow(dragged.Name, Slider->value()));
    const Mix before = {65535, 20000, -100};
    Drag();
    EXPECT_EQ(Jumps, 0) << "the knob moved under the mouse";
    EXPECT_LE(static_cast<qint64>(Sent.size()), Elapsed.elapsed() / 40 + 3);
    EXPECT_TRUE(OtherComesToShow(dragged.Name, LeftAt));
    QTest::qWait(500);  // several rounds of both consoles
    EXPECT_EQ(Slider->value(), LeftAt);
    EXPECT_EQ(OtherShows(dragged.Name), LeftAt);

    // The unit went through what this console sent, in that order, and through nothing else.
    const auto seen = recorder.Seen();
    EXPECT_GT(seen.size(), 10U);
    auto next = Sent.begin();
    for (auto mix = seen.begin() + 1; mix != seen.end(); ++mix) {
        next = std::find(next, Sent.end(), (*mix)[dragged.Entry]);
        ASSERT_NE(next, Sent.end()) << "the unit was set to " << (*mix)[dragged.Entry] << " by another hand";
        Mix expected = before;
        expected[dragged.Entry] = *next;
        EXPECT_EQ(*mix, expected);
    }
    EXPECT_EQ(seen.back()[dragged.Entry], LeftAt);
}
INSTANTIATE_TEST_SUITE_P(, DragAgainstAnotherConsole,
                         testing::Values(DraggedSlider{"LChannel", 0, {0, 1}}, DraggedSlider{"HueSel", 2, {1, 0}}),
                         [](const auto& test) { return std::string(test.param.Name); });

TEST_F(TwoConsoles, SelectingAPresetOverwritesNeitherOfItsBoundChannels) {
    Recorder recorder(Unit.Host(), 2);
    Console.Find<QCheckBox>("BindAudioChannels")->setChecked(true);
    ASSERT_TRUE(OtherComesToShow("RChannel", 20000));
    auto* const presets = Console.Find<QTreeWidget>("PresetsView");
    presets->setCurrentItem(presets->topLevelItem(1));
    EXPECT_TRUE(OtherComesToShow("LChannel", 30000));
    EXPECT_TRUE(OtherComesToShow("RChannel", 40000));
    QTest::qWait(500);  // several rounds of both consoles
    EXPECT_EQ(Console.Find<QSlider>("RChannel")->value(), 40000);
    EXPECT_THAT(recorder.Seen(), ElementsAre(Mix{30000, 40000, -100}));
}

}  // namespace
