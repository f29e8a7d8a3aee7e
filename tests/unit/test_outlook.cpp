#include "fault.h"
#include "playback/playback.h"
#include "unit/unitfakes.h"

#include <random>

using std::chrono::milliseconds;
using std::chrono::nanoseconds;
using testing::ElementsAre;
using testing::IsEmpty;
using ZorvicUnit::Outlook;
using ZorvicUnit::Playback;

namespace {

struct FineClock final : ZorvicUnit::Clock {
    TimePoint Now() const override { return At; }
    TimePoint At{std::chrono::hours(1)};
};

std::string Asset(int number) {
    return "C:\\Assets\\" + std::to_string(number);
}

/// What an outlook says of one moment, from the bottom: key, run, elapsed time, moves, waits, first and last pass.
using Moment = std::vector<std::tuple<std::int32_t, std::uint64_t, nanoseconds, bool, bool, bool, bool>>;

Moment MomentOf(const Outlook& outlook, FineClock::TimePoint at) {
    Moment moment;
    for (const auto& layer : outlook.Layers) {
        for (const auto& span : layer.Spans) {
            if (at < span.From || at >= span.Until) continue;
            const auto elapsed = span.Elapsed + (span.Moves ? at - span.From : nanoseconds(0));
            moment.emplace_back(layer.Preset->pk(), layer.Run, elapsed, span.Moves, span.Waits, span.First, span.Last);
        }
    }
    return moment;
}

class OutlookProperty : public ::testing::TestWithParam<unsigned> {
protected:
    static constexpr int Presets = 6;

    int Any(int last) { return std::uniform_int_distribution(0, last)(Random); }
    /// Mostly short, so that one look ahead meets many ends.
    int AnyLength() { return 1 + Any(Any(3) ? 3'000 : 20); }

    void PutAny(std::int32_t pk) {
        auto preset = std::make_shared<zorvic::v1::Preset>(PresetWith(pk, Asset(Any(Presets))));
        if (Any(9) == 0) preset->clear_canvases();
        preset->set_loop(Any(4) - 1);
        preset->set_link(Any(Presets + 1));
        preset->set_freeze_at_end(Any(5) == 0);
        if (Any(1)) preset->set_in_position(Any(3'000));
        if (Any(1)) preset->set_out_position(Any(3'000));
        for (Playback* play : Both)
            play->Put(preset);
    }
    void CommandAny() {
        const std::int32_t pk = 1 + Any(Presets - 1);
        const int command = Any(9), number = Any(3'500);
        const auto next = First.NextRun(pk, Time.At);
        if (command == 0) return PutAny(pk);
        if (command == 1) Catalog.Durations[Asset(number % Presets)] = AnyLength();
        for (Playback* play : Both) {
            FaultOf([&] {
                if (command == 1) play->AssetsChanged(std::vector<std::string>{Asset(number % Presets)});
                if (command == 2) play->Pause(pk);
                if (command == 3) play->Seek(pk, static_cast<std::uint32_t>(number));
                if (command == 4) play->End(pk);
                if (command == 5 && number % 4 < 2) play->SetRetired(pk, number % 4);
                if (command == 5 && number % 4 == 2) play->HoldAsset(Asset(pk));
                if (command == 5 && number % 4 == 3) play->ReleaseAsset(Asset(pk));
                if (command == 6 && number % 3 == 0) play->HoldColdTakes(number % 12, milliseconds(number % 2 * 20));
                if (command == 6 && number % 3 == 1 && next) play->MediaReady(pk, next->Run - 1);
                if (command == 6 && number % 3 == 2 && next)
                    play->SetPrimed({{pk, next->Run, next->Spans.front().Elapsed}});
                if (command > 6) play->Take(pk);
            });
        }
    }
    /// Whoever shows the outlook asks for a new one only when it is told to.
    void CommandAndCount() {
        const auto version = First.OutlookVersion();
        const auto before = First.Outlook(Time.At + milliseconds(3'000));
        CommandAny();
        if (First.OutlookVersion() != version) return;
        const auto after = First.Outlook(before.Until);
        for (auto at = Time.At; at < before.Until; at += milliseconds(50))
            ASSERT_EQ(MomentOf(before, at), MomentOf(after, at));
    }
    /// The other one carries out in small steps what the outlook of the first foretells, and the first all at once.
    void CompareWithSteps(const Outlook& outlook) {
        const auto version = Stepped.OutlookVersion();
        for (Time.At += nanoseconds(Any(20'000'000)); Time.At < outlook.Until;
             Time.At += nanoseconds(Any(60'000'000))) {
            Stepped.Advance();
            const Moment moment = MomentOf(Stepped.Outlook(Time.At + nanoseconds(1)), Time.At);
            ASSERT_EQ(MomentOf(outlook, Time.At), moment);
            std::map<std::int32_t, std::int64_t> foretold, shown;
            for (const auto& [pk, run, elapsed, moves, waits, first, last] : moment) {
                const std::int64_t trt = Stepped.StateOf(pk).TRT;
                foretold[pk] = std::clamp<std::int64_t>(trt - duration_cast<milliseconds>(elapsed).count(), 0, trt);
            }
            for (const auto& position : Stepped.Positions()) {
                if (Stepped.StateOf(position.PK).Playing) shown[position.PK] = position.RemainingMS;
            }
            ASSERT_EQ(foretold, shown);
        }
        EXPECT_EQ(Stepped.OutlookVersion(), version);  // all of it was foretold
        for (Playback* play : Both)
            play->Advance();
    }

    std::mt19937 Random{GetParam()};
    FineClock Time;
    FakeCatalog Catalog;
    Playback First{Time, Catalog}, Stepped{Time, Catalog};
    const std::array<Playback*, 2> Both{&First, &Stepped};
};

TEST_P(OutlookProperty, ForetellsWhatTheClockWillDo) {
    for (int number = 1; number < Presets; ++number)  // 0 and the last are unknown at first
        Catalog.Durations[Asset(number)] = AnyLength();
    for (std::int32_t pk = 1; pk <= Presets; ++pk)
        PutAny(pk);
    for (int round = 0; round < 40; ++round) {
        for (int count = Any(4); count >= 0; --count)
            CommandAndCount();
        const auto outlook = First.Outlook(Time.At + milliseconds(Any(5'000)));
        std::size_t spans = 0;
        for (const auto& layer : outlook.Layers) {
            ASSERT_FALSE(layer.Spans.empty());
            spans += layer.Spans.size();
            for (std::size_t at = 0; at < layer.Spans.size(); ++at) {
                ASSERT_LT(layer.Spans[at].From, layer.Spans[at].Until);
                ASSERT_TRUE(at == 0 || layer.Spans[at - 1].Until == layer.Spans[at].From);
            }
        }
        ASSERT_LE(spans, 512U + Presets);
        CompareWithSteps(outlook);
        if (HasFatalFailure()) return;
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, OutlookProperty, testing::Range(1U, 16U));

TEST(OutlookTest, TheLastTakeIsOnTopAndALinkInheritsThePlace) {
    FineClock time;
    FakeCatalog catalog;
    catalog.Durations[Asset(1)] = 10'000;
    Playback play(time, catalog);
    for (const std::int32_t pk : {1, 2, 3, 4}) {
        zorvic::v1::Preset preset = PresetWith(pk, Asset(1));
        if (pk < 3) preset.set_link(pk + 1);
        play.Put(std::make_shared<zorvic::v1::Preset>(preset));
    }
    using Layer = std::pair<std::int32_t, std::uint64_t>;
    const auto stackAfter = [&](std::int64_t seconds) {
        const auto at = time.At + std::chrono::seconds(seconds);
        std::vector<Layer> stack;
        for (const auto& layer : MomentOf(play.Outlook(at + nanoseconds(1)), at))
            stack.emplace_back(std::get<0>(layer), std::get<1>(layer));
        return stack;
    };
    for (const std::int32_t pk : {2, 1, 4})
        play.Take(pk);
    time.At += milliseconds(4'000);
    play.Take(2);
    EXPECT_THAT(stackAfter(0), ElementsAre(Layer(1, 1), Layer(4, 1), Layer(2, 2)));
    play.Pause(1);
    play.Take(1);
    play.Take(4);
    // The link of 1 ends the run of 2 and begins another below all others.
    EXPECT_THAT(stackAfter(6), ElementsAre(Layer(2, 3), Layer(4, 2)));
    EXPECT_THAT(stackAfter(16), ElementsAre(Layer(3, 1)));
}

}  // namespace
