#include "asrun/recorder.h"
#include "asrun/sheet.h"
#include "feed/feed.h"
#include "model/unit_model.h"
#include "store/connection.h"
#include "store/database.h"
#include "support/childprocess.h"
#include "support/unitprocess.h"
#include "support/wallclock.h"
#include "unit/unitfakes.h"

#include <zorvic/asrun.h>
#include <zorvic/session.h>

#include <csignal>
#include <filesystem>
#include <fstream>
#include <set>

using namespace ZorvicUnit;
using testing::ElementsAre;
using testing::HasSubstr;
using zorvic::v1::AsRunEntry;

namespace {

constexpr auto Clip = "C:\\Assets\\clip.mov";

class SheetTest : public ::testing::Test {
protected:
    std::string File() const { return Directory.Path() + "/asrun.db"; }
    void Open(SheetLimits limits = {}) { Pages = std::make_unique<Sheet>(File(), limits); }
    void Note(const std::string& text) { Recorder(*Pages).Note(Zorvic::ZORVIC_ASRUN_EDIT, text); }
    std::vector<AsRunEntry> Entries(const zorvic::v1::AsRunRequest& request = {}) const {
        Sheet::Reader reader(*Pages, request);
        std::vector<AsRunEntry> all;
        for (bool complete = false; !complete;) {
            const auto page = reader.Next(std::chrono::milliseconds(0));
            all.insert(all.end(), page->entries().begin(), page->entries().end());
            complete = page->caught_up();
        }
        return all;
    }
    /// "take 1 shown", in words for people.
    std::vector<std::string> Words() const {
        std::vector<std::string> words;
        for (const AsRunEntry& entry : Entries())
            words.push_back(Zorvic::AsRunKindText(static_cast<Zorvic::AsRunKind>(entry.kind())) +
                            (entry.text().empty() ? "" : ": " + entry.text()));
        return words;
    }
    void Await(const std::string& text) const {
        const auto isThere = [&] {
            const auto entries = Entries();
            return std::ranges::any_of(entries, [&](const auto& entry) { return entry.text() == text; });
        };
        EXPECT_TRUE(WaitUntil(isThere)) << text;
    }

    TemporaryDirectory Directory;
    std::unique_ptr<Sheet> Pages;
};

TEST_F(SheetTest, KeepsItsEntriesOverRestartsAndReadsThemFromATimeOrTheNewest) {
    Open();
    for (int i = 1; i <= 600; ++i)
        Note(std::to_string(i));
    Pages->Close();
    Open();
    Note("again");
    Await("again");
    const auto all = Entries();
    ASSERT_EQ(all.size(), 601U) << "no gap is told of after an orderly end";
    EXPECT_TRUE(std::ranges::is_sorted(all, {}, &AsRunEntry::number));
    zorvic::v1::AsRunRequest request;
    request.set_limit(2);
    EXPECT_EQ(Entries(request)[0].text(), "600");
    request.set_limit(0);
    request.set_since_us(all[600].wall_us());
    EXPECT_EQ(Entries(request).size(), 1U);
    request.set_since_us(0);
    request.set_after(all[598].change());
    EXPECT_EQ(Entries(request).size(), 601U) << "another sheet was meant";
    Sheet::Reader reader(*Pages, {});
    request.set_sheet(reader.Next(std::chrono::milliseconds(0))->sheet());
    EXPECT_EQ(Entries(request).size(), 2U);
}

TEST_F(SheetTest, ADamagedSheetIsSetAsideAndAnotherBegunWhetherFoundAtTheStartOrLater) {
    std::ofstream(File()) << std::string(8192, 'x');
    Open();
    Note("first");
    Await("first");
    EXPECT_TRUE(WaitUntil([&] { return testing::Value(Words(), testing::Contains(HasSubstr("is set aside"))); }));
    EXPECT_TRUE(std::filesystem::exists(File() + "-damaged"));
    for (int i = 0; i < 2000; ++i)
        Note(std::string(500, 'n'));
    Pages->Close();
    Open();
    std::filesystem::resize_file(File(), 4096);
    EXPECT_TRUE(WaitUntil([&] { return FaultOf([&] { Entries(); }).has_value(); })) << "nothing was wrong with it";
    Note("second");
    EXPECT_TRUE(WaitUntil([&] { return !FaultOf([&] { Entries(); }); }));
    Await("second");
    EXPECT_TRUE(std::filesystem::exists(File() + "-damaged-before"));
}

TEST_F(SheetTest, AFullDiskCostsWhatDoesNotFitIntoMemoryAndItIsSaidHowMuch) {
    std::signal(SIGXFSZ, SIG_IGN);
    Open();
    Note("before");
    Await("before");
    {
        const FileSizeLimit limit(1);
        for (std::size_t i = 0; i < Sheet::MostWaiting + 7; ++i)
            Note("many");
    }
    EXPECT_TRUE(WaitUntil([&] { return Entries().size() > Sheet::MostWaiting; }));
    Note("after");
    Await("after");
    EXPECT_EQ(Entries().size(), Sheet::MostWaiting + 3);
    EXPECT_THAT(Words(), testing::Contains("lost: 7 entries: the disk did not take them"));
}

TEST_F(SheetTest, GrowsNoLargerThanItMayAndLosesItsOldest) {
    constexpr std::uint64_t Limit = 512 * 1024;
    Open({.Bytes = Limit});
    for (int round = 0; round < 4; ++round) {
        for (int i = 0; i < 2000; ++i)
            Note(std::string(300, 'n'));
        Note("round " + std::to_string(round));
        Await("round " + std::to_string(round));
    }
    EXPECT_GT(Entries().size(), 200U);
    EXPECT_GT(Entries().front().number(), 2000U);
    Pages->Close();
    EXPECT_LT(std::filesystem::file_size(File()), 4 * Limit);
}

TEST_F(SheetTest, SaysWhenTheWallClockWasSet) {
    Open();
    Note("before");
    SetWallClock(std::chrono::hours(1));
    Note("after");
    Await("after");
    const auto entries = Entries();
    SetWallClock(std::chrono::hours(0));
    ASSERT_EQ(entries.size(), 3U);
    EXPECT_THAT(entries[1].text(), testing::StartsWith("set by -3600.0"));
    EXPECT_LT(entries[2].wall_us(), entries[0].wall_us());
    EXPECT_GE(entries[2].monotonic_us(), entries[0].monotonic_us());
}

/// A model whose sheet can be read.
class RecorderTest : public SheetTest {
protected:
    RecorderTest() {
        Catalog.Durations[Clip] = 10'000;
        Record.SetOutputs(true);
        auto preset = PresetWith(0, Clip);
        auto& mark = *preset.add_gotos();
        mark.set_time_ms(4000);
        mark.set_name("Verse");
        Model.CreatePreset(preset, Here);
    }
    /// "1 take", "1 goto 4000: Verse, from 9000 ms", with ">" before what the console asked for.
    std::vector<std::string> Happened() {
        const std::string end = "end " + std::to_string(++Looks);
        Note(end);
        Await(end);
        std::vector<std::string> all;
        for (const AsRunEntry& entry : Entries()) {
            const auto kind = Zorvic::AsRunKindText(static_cast<Zorvic::AsRunKind>(entry.kind()));
            const std::string place = entry.has_remaining_ms() ? " " + std::to_string(entry.remaining_ms()) : "";
            const std::string text = entry.text().empty() ? "" : ": " + entry.text();
            if (entry.pk() != 0)
                all.push_back((entry.client() == Console.Client ? ">" : "") + std::to_string(entry.pk()) + " " + kind +
                              place + text);
        }
        return all;
    }
    void Pass(std::int64_t milliseconds) {
        Time.Pass(milliseconds);
        Model.Tick();
    }

    const bool IsOpen = (Open(), true);
    int Looks = 0;
    const Asker Console{.Address = "192.0.2.1:5", .Client = "FOH", .Certified = false};
    const Caller Here{.Who = Console};
    FakeClock Time;
    FakeCatalog Catalog;
    Feed Updates;
    Recorder Record{*Pages};
    Database Rows{Directory.Path() + "/zorvic.db"};
    UnitModel Model{UnitModel::Profile(), Rows, Time, Catalog, Updates, Record};
};

TEST_F(RecorderTest, TellsWhatWasAskedForFromWhatFollowed) {
    auto second = PresetWith(0, Clip);
    second.set_loop(1);
    second.set_freeze_at_end(true);
    Model.CreatePreset(second, Here);
    google::protobuf::FieldMask mask;
    mask.add_paths("link");
    mask.add_paths("name");
    zorvic::v1::Preset edit;
    edit.set_pk(1);
    edit.set_link(2);
    edit.set_name("preset 0");
    Model.UpdatePreset(edit, mask, Here);
    Model.UpdatePreset(edit, mask, Here);  // changes nothing
    Model.SeekTo(1, 9500, Here);
    Model.Take(1, Here);
    Pass(1000);
    Model.SeekTo(1, 4000, Here);
    Model.Pause(1, true, Here);
    Model.Pause(1, true, Here);  // changes nothing
    Model.Take(1, Here);
    Pass(4000);
    Pass(20'000);
    Model.End(2, Here);
    Model.DeletePreset(2, Here);
    EXPECT_THAT(Happened(), ElementsAre(">1 edit: created", ">2 edit: created", ">1 edit: link", ">1 seek 9500: cued",
                                        ">1 take 9500", ">1 goto 4000: Verse, from 8500 ms", ">1 pause 4000",
                                        ">1 resume 4000", "1 end 0: at its end", "2 link 10000: after preset 1",
                                        "2 loop 10000: pass 2 begins", "2 hold 0", ">2 end 0", ">2 delete"));
}

TEST_F(RecorderTest, ARunHasInItsEntryWhatTheOutputsShowedOfIt) {
    const auto take = [&](std::uint64_t run, bool pictures, int litAfterMS, std::uint64_t dropped, bool over) {
        Model.Take(1, Here);
        zorvic::render::RunReport report;
        auto& figures = *report.add_runs();
        figures.set_pk(1);
        figures.set_run(run);
        figures.set_pictures(pictures);
        figures.set_dropped(dropped);
        figures.set_over(over);
        if (litAfterMS > 0) {
            auto& lit = *figures.add_lit();
            lit.set_output(2);
            lit.set_at((Time.Now() + std::chrono::milliseconds(litAfterMS)).time_since_epoch().count());
        }
        Record.Shown(report);
        return report;
    };
    const auto shown = [&](std::size_t run) {
        Happened();
        auto entries = Entries();
        std::ranges::sort(entries, {}, &AsRunEntry::number);
        std::erase_if(entries, [](const auto& entry) { return entry.kind() != Zorvic::ZORVIC_ASRUN_TAKE; });
        return std::tuple(entries.at(run).shown(), entries.at(run).lit_after_us(), entries.at(run).dropped());
    };
    auto report = take(1, true, 43, 2, false);
    EXPECT_EQ(shown(0), std::tuple(Zorvic::ZORVIC_SHOWN_LIT, 43'000, 2));
    Record.RendererBegins();
    report.mutable_runs(0)->set_dropped(3);
    Record.Shown(report);
    EXPECT_EQ(shown(0), std::tuple(Zorvic::ZORVIC_SHOWN_LIT, 43'000, 5)) << "of both renderers";
    take(2, true, 0, 0, false);
    EXPECT_EQ(shown(1), std::tuple(Zorvic::ZORVIC_SHOWN_UNKNOWN, 0, 0));
    take(3, true, 0, 0, true);
    EXPECT_EQ(shown(2), std::tuple(Zorvic::ZORVIC_SHOWN_NOT, 0, 0));
    take(4, false, 0, 0, true);
    EXPECT_EQ(shown(3), std::tuple(Zorvic::ZORVIC_SHOWN_SOUND, 0, 0));
    Record.SetOutputs(false);
    take(5, true, 0, 0, false);
    EXPECT_EQ(shown(4), std::tuple(Zorvic::ZORVIC_SHOWN_NOT, 0, 0));
}

TEST_F(RecorderTest, AStrangerThatComesAndGoesFillsNoSheet) {
    const Asker stranger{.Address = "192.0.2.7:80", .Client = "", .Certified = false};
    int noted = 0;
    for (int visit = 0; visit < 1'000; ++visit)
        noted += Record.Comes(stranger) ? 1 : 0;
    EXPECT_EQ(noted, 50);
    EXPECT_TRUE(Record.Comes(Console));

    Visitors visitors;
    Clock::TimePoint now{};
    const auto admitted = [&](int hosts) {
        int count = 0;
        for (int number = 0; number < 10'000; ++number)
            count += visitors.Admit("host" + std::to_string(number % hosts) + ":1", now) ? 1 : 0;
        return count;
    };
    EXPECT_EQ(admitted(1), 50);
    now += std::chrono::minutes(1);
    EXPECT_EQ(visitors.Admit("host0:2", now), 9'950U) << "says how many were left out";
    EXPECT_LE(admitted(5'000), 500);
    now += std::chrono::hours(2);
    EXPECT_TRUE(visitors.Admit("host9:1", now));
}

class AsRunProcessTest : public ::testing::Test {
protected:
    std::vector<Zorvic::AsRunEntry> Read(const Zorvic::AsRunSheet::Range& range = {}) {
        std::vector<Zorvic::AsRunEntry> entries;
        std::string problem;
        EXPECT_EQ(Zorvic::ReadAsRun(Unit.Host(), range, entries, problem), Zorvic::ZORVIC_STATUS_OK) << problem;
        return entries;
    }

    TemporaryDirectory Directory;
    UnitProcess Unit{Directory.Path() + "/store", {"--announce", "off"}};
};

TEST_F(AsRunProcessTest, AKillCostsNoMoreThanTheLastSecondAndLeavesAMark) {
    Zorvic::SetClientName("desk");
    Zorvic::Session console(Unit.Host(), 1);
    console.CreatePreset({});
    std::vector<std::chrono::steady_clock::time_point> answered;
    for (std::uint32_t i = 0; i < 250; ++i) {
        EXPECT_EQ(console.SeekTo(1, i), Zorvic::ZORVIC_STATUS_OK);
        answered.push_back(std::chrono::steady_clock::now());
        SleepBriefly();
    }
    Unit.Kill();
    const auto killed = std::chrono::steady_clock::now();
    Unit.Start();
    std::set<std::int32_t> kept;
    std::vector<Zorvic::AsRunEntry> gaps;
    for (const auto& entry : Read()) {
        if (entry.Kind == Zorvic::ZORVIC_ASRUN_SEEK && entry.Client == "desk") kept.insert(*entry.RemainingMS);
        if (entry.Kind == Zorvic::ZORVIC_ASRUN_GAP) gaps.push_back(entry);
    }
    for (std::size_t i = 0; i < answered.size(); ++i) {
        const bool isOld = killed - answered[i] > std::chrono::milliseconds(1200);
        EXPECT_TRUE(!isOld || kept.contains(int(i))) << i;
    }
    ASSERT_EQ(gaps.size(), 1U);
    EXPECT_LT(gaps[0].Wall - *gaps[0].From, std::chrono::seconds(10));
}

}  // namespace
