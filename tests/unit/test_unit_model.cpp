#include "conversions.h"
#include "feed/feed.h"
#include "feed/frames.h"
#include "mirror.h"
#include "model/unit_model.h"
#include "store/database.h"
#include "support/childprocess.h"
#include "unit/unitfakes.h"

#include <random>

using testing::ElementsAre;
using testing::IsEmpty;
using zorvic::v1::Preset;
using ZorvicUnit::Database;
using ZorvicUnit::FaultKind;
using ZorvicUnit::Feed;
using ZorvicUnit::UnitModel;

namespace {

constexpr auto Clip = "C:\\Assets\\clip.mov";

/// A console that applies what was sent when the test says so.
struct Watcher {
    explicit Watcher(Feed& feed, const Feed::Subscription::Wishes& wishes = {},
                     std::shared_ptr<const Zorvic::Internal::UnitState> known = nullptr)
        : Copy("", std::move(known)), Source(feed, wishes) {}

    void Read() {
        auto batch = Source.Next(std::chrono::milliseconds(0));
        ASSERT_TRUE(batch);
        WriteFrames(std::move(*batch), [this](const auto& frame) { return Copy.Apply(frame), true; });
        State = Copy.Current();
    }
    Preset PresetOf(std::int32_t pk) const {
        return Zorvic::Internal::ToWire(*Zorvic::Internal::FindPreset(*State->Presets, pk));
    }
    std::set<std::int32_t> Selected() const {
        std::set<std::int32_t> keys;
        for (const auto& state : States())
            if (state.IsSelected) keys.insert(state.PK);
        return keys;
    }
    std::vector<Zorvic::PresetState> States() const {
        std::vector<Zorvic::PresetState> states;
        CopyRecords(*State->PresetStates, states);
        return states;
    }

    /// Everything that tells states apart.
    auto Shown() const {
        std::vector<std::tuple<std::int32_t, std::int32_t, std::uint32_t, bool, bool, bool>> shown;
        for (const auto& state : States())
            shown.emplace_back(state.PK, state.TRT, state.CurrentLoop, state.IsPlaying, state.IsPaused,
                               state.IsSelected);
        return shown;
    }

    std::shared_ptr<const Zorvic::Internal::UnitState> State;

private:
    Zorvic::Internal::Mirror Copy;
    Feed::Subscription Source;
};

class UnitModelTest : public ::testing::Test {
protected:
    UnitModelTest() {
        Catalog.Durations[Clip] = 10'000;
        Start();
    }
    void Start(std::size_t mostBytes = ZorvicUnit::MaxStoredBytes) {
        Console.reset();
        Model.reset();
        Updates.emplace();
        UnitModel::Profile profile;
        profile.Identity.set_guid("unit-1");
        profile.MostBytes = mostBytes;
        Model.emplace(profile, *Store, Time, Catalog, *Updates);
        Console.emplace(*Updates);
        Console->Read();
    }
    std::int32_t Create() {
        Model->CreatePreset(PresetWith(0, Clip));
        Console->Read();
        return Console->States().back().PK;
    }
    std::uint64_t Update(const Preset& preset, const char* field) {
        google::protobuf::FieldMask mask;
        if (*field) mask.add_paths(field);
        return Model->UpdatePreset(preset, mask);
    }

    TemporaryDirectory Directory;
    std::optional<Database> Store{std::in_place, Directory.Path() + "/zorvic.db"};
    FakeClock Time;
    FakeCatalog Catalog;
    std::optional<Feed> Updates;
    std::optional<UnitModel> Model;
    std::optional<Watcher> Console;
};

TEST_F(UnitModelTest, AllPresetsTogetherHaveALimitThatLetsThemShrink) {
    Create();
    const auto bytes = ZorvicUnit::BytesOf(Console->PresetOf(1));
    Start(2 * bytes + 2);  // the second one is not the first in its tab
    Create();
    const auto refused = [&] { return FaultOf([&] { Model->CreatePreset(PresetWith(0, Clip)); }); };
    EXPECT_EQ(refused(), FaultKind::Misused);
    Preset edited = Console->PresetOf(2);
    edited.set_name(edited.name() + '!');
    EXPECT_EQ(FaultOf([&] { Update(edited, "name"); }), FaultKind::Misused);
    edited.clear_name();
    Update(edited, "name");
    Start(2 * bytes - 5);
    EXPECT_EQ(refused(), FaultKind::Misused);
    Model->DeletePreset(1);
    EXPECT_EQ(refused(), std::nullopt);
}

TEST_F(UnitModelTest, AnUpdateWithoutDifferenceCostsNoRevision) {
    Preset preset = Console->PresetOf(Create());
    const auto revision = Model->Revision();
    EXPECT_EQ(Update(preset, "name"), revision);
    preset.set_name("other");
    EXPECT_EQ(Update(preset, ""), revision);
    EXPECT_EQ(Update(preset, "loop"), revision);
    EXPECT_GT(Update(preset, "name"), revision);
    Console->Read();
    EXPECT_EQ(Console->PresetOf(preset.pk()).name(), "other");
}

TEST_F(UnitModelTest, EveryPresetHasAPlaceInTheFirstTab) {
    Create();
    Preset second = Console->PresetOf(Create());
    EXPECT_EQ(second.tab_order(0).index(), 1);
    second.clear_tab_order();
    Update(second, "tab_order");
    Start();
    EXPECT_EQ(Console->PresetOf(second.pk()).tab_order(0).index(), 1);
}

TEST_F(UnitModelTest, APlayingPresetIsNotDeletedAndASelectedOneLeavesNoSelection) {
    const std::int32_t pk = Create();
    Model->SelectPreset(pk);
    Model->Take(pk);
    Model->Pause(pk);
    EXPECT_EQ(FaultOf([&] { Model->DeletePreset(pk); }), FaultKind::Refused);
    EXPECT_EQ(FaultOf([&] { UnitModel::AssetHold(*Model, Clip); }), FaultKind::Refused);
    Model->End(pk);
    Console->Read();
    EXPECT_THAT(Console->Selected(), testing::ElementsAre(pk));
    EXPECT_TRUE(Console->State->TimeCodes->empty());
    Model->DeletePreset(pk);
    Console->Read();
    EXPECT_EQ(Console->State->Presets->Size(), 0U);
    EXPECT_EQ(Console->State->PresetStates->Size(), 0U);
    EXPECT_EQ(FaultOf([&] { Model->SelectPreset(pk); }), FaultKind::NotFound);
    EXPECT_EQ(Create(), pk + 1);
}

TEST_F(UnitModelTest, AFailedWriteChangesNothing) {
    const std::int32_t pk = Create();
    Preset preset = Console->PresetOf(pk);
    preset.set_name("other");
    const auto revision = Model->Revision();
    Store->Execute("PRAGMA query_only = ON");
    EXPECT_EQ(Update(Console->PresetOf(pk), "name"), revision) << "nothing to write";
    EXPECT_EQ(FaultOf([&] { Model->CreatePreset(preset); }), FaultKind::Internal);
    EXPECT_EQ(FaultOf([&] { Update(preset, "name"); }), FaultKind::Internal);
    EXPECT_EQ(FaultOf([&] { Model->DeletePreset(pk); }), FaultKind::Internal);
    EXPECT_EQ(Model->Revision(), revision);
    Model->Take(pk);  // not left behind as one that is being deleted
    Store->Execute("PRAGMA query_only = OFF");
    EXPECT_GT(Update(preset, "name"), revision);
}

TEST_F(UnitModelTest, MarksAreAddressedByTheirTime) {
    zorvic::v1::MarkRequest mark;
    mark.set_pk(Create());
    mark.set_kind(zorvic::v1::MARK_KIND_COUNTDOWN);
    mark.set_time_ms(9'000);
    Model->CreateMark(mark);
    mark.set_time_ms(3'000);
    Model->CreateMark(mark);
    mark.set_name("chorus");
    Model->RenameMark(mark);
    mark.set_time_ms(9'000);
    Model->DeleteMark(mark);
    EXPECT_EQ(FaultOf([&] { Model->DeleteMark(mark); }), FaultKind::NotFound);
    EXPECT_EQ(FaultOf([&] { Model->RenameMark(mark); }), FaultKind::NotFound);
    Console->Read();
    const Preset preset = Console->PresetOf(mark.pk());
    ASSERT_EQ(preset.countdowns_size(), 1);
    EXPECT_EQ(preset.countdowns(0).id(), 2);
    EXPECT_EQ(preset.countdowns(0).name(), "chorus");
}

TEST_F(UnitModelTest, ACreationIsDoneOnceAlsoWhenItIsRepeatedAfterARestartOrTheRestoreOfAnother) {
    const auto file = Store->File().string();
    const auto create = [&](std::uint64_t key) {
        std::int32_t made = 0;
        const auto revision = Model->CreatePreset(PresetWith(0, Clip), {.RequestKey = key}, &made);
        EXPECT_LE(revision, Updates->Revision());
        return made;
    };
    const auto restart = [&] {
        Model.reset();
        Store.emplace(file);
        Start();
    };
    const auto first = create(~std::uint64_t{0});
    zorvic::v1::MarkRequest mark;
    mark.set_pk(first);
    mark.set_kind(zorvic::v1::MARK_KIND_GOTO);
    Model->CreateMark(mark, {.RequestKey = 2});
    Model->DeletePreset(create(3));
    Store->Close();
    std::filesystem::copy_file(file, file + "-backup");
    restart();
    EXPECT_EQ(create(~std::uint64_t{0}), first);
    Model->CreateMark(mark, {.RequestKey = 2});
    const auto later = create(4);
    EXPECT_EQ(create(3), later - 1) << "made again after its deletion";

    Store->Execute("UPDATE presets SET record = x'0801' WHERE pk = 1");
    restart();
    EXPECT_EQ(create(4), later) << "forgotten when the store was mended";

    Store->Close();
    for (const char* end : {"-seal", "-copy1", "-copy2", "-copy3"})
        std::filesystem::remove(file + end);
    std::filesystem::copy_file(file + "-backup", file, std::filesystem::copy_options::overwrite_existing);
    restart();
    EXPECT_EQ(create(5), later) << "the backup gives its keys anew";
    EXPECT_NE(create(4), later) << "that is another preset now";
    EXPECT_EQ(create(~std::uint64_t{0}), first);
}

TEST_F(UnitModelTest, AReloadEndsPlaybackAndKeepsTheSelection) {
    const std::int32_t pk = Create();
    Model->SelectPreset(pk);
    Model->Take(pk);
    Model->Pause(pk);
    Model->Reload();
    Console->Read();
    EXPECT_TRUE(Console->State->TimeCodes->empty());
    EXPECT_EQ(Console->State->Presets->Size(), 1U);
    EXPECT_THAT(Console->Selected(), testing::ElementsAre(pk));
    Model->SaveSelection();
    Start();
    EXPECT_THAT(Console->Selected(), testing::ElementsAre(pk));
}

TEST_F(UnitModelTest, OldConsolesAndThoseThatComeBackSeeTheSameStates) {
    const unsigned seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::mt19937 random(seed);
    const auto below = [&](int limit) { return std::uniform_int_distribution(0, limit - 1)(random); };
    Watcher old(*Updates, {.StateChanges = false});
    for (int step = 0; step < 300; ++step) {
        const auto left = Console->State;
        for (int changes = below(4); changes >= 0; --changes) {
            const int pk = below(step / 10 + 2) + 1;
            const auto attempt = [&](const auto& command) { FaultOf([&] { command(); }); };
            switch (below(6)) {
                case 0:
                    Create();
                    break;
                case 1:
                    attempt([&] { Model->DeletePreset(pk); });
                    break;
                case 2:
                    attempt([&] { Model->SelectPreset(pk); });
                    break;
                case 3:
                    attempt([&] { Model->End(pk); });
                    break;
                default:
                    attempt([&] { Model->Take(pk); });
            }
            Time.Pass(below(9'000));
        }
        Model->Tick();
        Watcher back(*Updates, {.KnownRun = Updates->Run(), .KnownRevision = left->Revision}, left);
        for (Watcher* watcher : {&old, &back, &*Console})
            watcher->Read();
        Watcher fresh(*Updates);
        fresh.Read();
        const auto shown = fresh.Shown();
        for (const Watcher* watcher : {&old, &back, &*Console})
            ASSERT_EQ(watcher->Shown(), shown) << "step " << step;
    }
}

TEST_F(UnitModelTest, WhatIsLikelyToBeTakenNextStandsAtItsStart) {
    const std::int32_t below = Create(), linked = Create(), selected = Create();
    Preset edited = Console->PresetOf(selected);
    edited.mutable_tab_order(0)->set_index(-1);
    edited.set_link(linked);
    Update(edited, "tab_order");
    Update(edited, "link");
    using Start = std::tuple<std::int32_t, std::uint64_t, std::chrono::nanoseconds>;
    const auto likely = [&] {
        std::vector<Start> starts;
        for (const auto& layer : Model->LookAhead(std::chrono::seconds(5)).Primed)
            starts.emplace_back(layer.Preset->pk(), layer.Run, layer.Spans.at(0).Elapsed);
        return starts;
    };
    int told = 0;
    Model->SetPlayListener([&] { ++told; });
    EXPECT_THAT(likely(), IsEmpty());
    Model->SelectPreset(selected);
    Model->SeekTo(below, 3'000);
    const Start cued(below, 1, std::chrono::seconds(7));
    EXPECT_THAT(likely(), ElementsAre(Start(selected, 1, 0), Start(linked, 1, 0), cued));
    Model->Take(selected);
    EXPECT_THAT(likely(), ElementsAre(Start(linked, 1, 0), cued));
    Time.Pass(11'000);
    EXPECT_THAT(likely(), ElementsAre(Start(selected, 2, 0), Start(linked, 2, 0), cued));
    EXPECT_EQ(told, 3);  // the link was foretold
    Catalog.Durations.clear();
    Model->End(linked);
    EXPECT_THAT(likely(), ElementsAre(Start(selected, 2, 0), cued));
}

}  // namespace
