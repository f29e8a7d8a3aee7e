// The link on loopback against a real unit in a process of its own: commands with their effect read back, and reads.

#include <benchmark/benchmark.h>

#include <zorvic/zorvic.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <memory>
#include <vector>

#include "support/unitprocess.h"

namespace {

/// One unit and one session for all cases; holds as many presets as the widest case asks for.
class Link {
public:
    static Link& Instance() {
        static Link link;
        return link;
    }

    Zorvic::Session& Session() { return *Client; }

    void FillUpTo(std::size_t count) {
        Zorvic::Preset preset;
        preset.Name = "Preset with a name of usual length";
        preset.Notes = std::string(300, 'n');
        preset.Volume.assign(16, 65535);
        for (int id = 1; id <= 10; ++id) {
            preset.Gotos[id].ID = preset.Countdowns[id].ID = id;
            preset.Gotos[id].TimeMS = preset.Countdowns[id].TimeMS = id * 1000;
            preset.Gotos[id].Name = preset.Countdowns[id].Name = "A mark's name";
        }
        std::vector<Zorvic::Preset> presets;
        Client->GetPresets(presets);
        for (std::size_t present = presets.size(); present < count; ++present)
            Client->CreatePreset(preset);
    }

private:
    Link() : Unit(Directory.Path(), {"--announce", "off"}), Client(std::make_unique<Zorvic::Session>(Unit.Host(), 1)) {
        FillUpTo(2);
    }

    TemporaryDirectory Directory;
    UnitProcess Unit;
    std::unique_ptr<Zorvic::Session> Client;
};

/// A question and its answer alone, what everything else is compared with.
void PlainCall(benchmark::State& state) {
    Zorvic::Session& session = Link::Instance().Session();
    Zorvic::AssetMetadata metadata;
    for (auto _ : state) {
        if (session.ReadAssetMetadata("none", metadata) != Zorvic::ZORVIC_STATUS_FAILED)
            state.SkipWithError("no answer");
    }
}
BENCHMARK(PlainCall)->Unit(benchmark::kMicrosecond)->UseRealTime()->Repetitions(9)->ReportAggregatesOnly();

/// When the latest event came.
struct Heard {
    std::atomic<int> Count = 0;
    std::atomic<std::chrono::steady_clock::time_point> At;
};

/// From a command to the event in the callback of another console.
void CommandToEvent(benchmark::State& state) {
    using Clock = std::chrono::steady_clock;
    Zorvic::Session& session = Link::Instance().Session();
    Zorvic::Session other(session.GetHost(), 1);
    Heard heard;
    const auto hear = [](Zorvic::StateEventType /*type*/, void* user) {
        auto& events = *static_cast<Heard*>(user);
        events.At = Clock::now();
        ++events.Count;
        events.Count.notify_one();
    };
    other.SetStateEventCallback(Zorvic::ZORVIC_STATE_PRESETSTATES, hear, &heard);
    heard.Count.wait(0);               // the answer to the registration
    static std::int32_t selected = 1;  // the unit keeps it over repetitions
    for (auto _ : state) {
        selected = 3 - selected;
        const int before = heard.Count;
        const auto begun = Clock::now();
        session.SelectPreset(selected);
        heard.Count.wait(before);
        state.SetIterationTime(std::chrono::duration<double>(heard.At.load() - begun).count());
    }
    other.SetStateEventCallback(Zorvic::ZORVIC_STATE_PRESETSTATES, nullptr, nullptr);
}
BENCHMARK(CommandToEvent)->Unit(benchmark::kMicrosecond)->UseManualTime()->Repetitions(9)->ReportAggregatesOnly();

/// A command that leads to a state change, a write and an event: the call returns when a read shows the effect.
void CommandRoundTrip(benchmark::State& state) {
    Zorvic::Session& session = Link::Instance().Session();
    std::uint32_t position = 0;
    for (auto _ : state) {
        if (session.SeekTo(1, position++) != Zorvic::ZORVIC_STATUS_OK) state.SkipWithError("refused");
    }
}
BENCHMARK(CommandRoundTrip)->Unit(benchmark::kMicrosecond)->UseRealTime()->Repetitions(9)->ReportAggregatesOnly();

/// The same with a write to disk in between.
void StoredCommandRoundTrip(benchmark::State& state) {
    Zorvic::Session& session = Link::Instance().Session();
    std::vector<Zorvic::Preset> presets;
    session.GetPresets(presets);
    for (auto _ : state) {
        presets[0].Loop = (presets[0].Loop + 1) % 100;
        if (session.UpdatePreset(presets[0]) != Zorvic::ZORVIC_STATUS_OK) state.SkipWithError("refused");
    }
}
BENCHMARK(StoredCommandRoundTrip)->Unit(benchmark::kMicrosecond)->UseRealTime()->Repetitions(9)->ReportAggregatesOnly();

void ReadPresets(benchmark::State& state) {
    Link::Instance().FillUpTo(static_cast<std::size_t>(state.range(0)));
    Zorvic::Session& session = Link::Instance().Session();
    for (auto _ : state) {
        std::vector<Zorvic::Preset> presets;
        if (session.GetPresets(presets) != Zorvic::ZORVIC_STATUS_OK) state.SkipWithError("no list");
        benchmark::DoNotOptimize(presets.data());
    }
}
BENCHMARK(ReadPresets)->Arg(1000)->Unit(benchmark::kMicrosecond)->UseRealTime()->Repetitions(9)->ReportAggregatesOnly();

}  // namespace

BENCHMARK_MAIN();
