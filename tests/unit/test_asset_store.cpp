#include "assets/asset_index.h"
#include "drives/drive_reader.h"
#include "drives/drive_table.h"
#include "store/connection.h"
#include "unit/asset_fixture.h"

#include <sys/stat.h>

#include <future>

namespace ZorvicUnit {
namespace {

using testing::ElementsAre;
using testing::Key;
using namespace Zorvic;  // NOLINT(google-build-using-namespace): the states' names are long enough

using AssetStoreTest = AssetFixture;

TEST(DriveTable, RefusesWhatIsNoPathOrLeavesItsDrive) {
    const TemporaryDirectory disk, elsewhere;
    const DriveTable drives({{"C", disk.Path(), false}, {"E", elsewhere.Path()}});
    WriteFile(disk / "clip.wav", "here");
    WriteFile(elsewhere / "clip.wav", "there");
    std::filesystem::create_symlink("clip.wav", disk / "same.wav");
    std::filesystem::create_symlink(elsewhere / "clip.wav", disk / "out.wav");
    std::filesystem::create_directory_symlink(elsewhere.Path(), disk / "folder");
    const std::map<std::optional<FaultKind>, std::vector<const char*>> answers = {
        {std::nullopt, {"C:\\clip.wav", "c:\\\\clip.wav\\", "C:\\same.wav", "C:\\", "E:\\clip.wav"}},
        {FaultKind::Misused,
         {"", "C:", "C:clip.wav", "/etc/hosts", "C:\\..\\clip.wav", "C:\\.", "C:\\folder\\..", "C:\\/etc/hosts",
          "C:\\a\nb", "C:\\\xff.wav"}},
        {FaultKind::NotFound, {"Q:\\clip.wav", "C:\\absent.wav"}},
        {FaultKind::Refused, {"C:\\out.wav", "C:\\folder", "C:\\folder\\clip.wav"}}};
    for (const auto& [answer, paths] : answers)
        for (const char* path : paths)
            EXPECT_EQ(FaultOf([&] { ResolveOnDrive(drives.Parse(path)); }), answer) << path;
    EXPECT_EQ(drives.Parse("e", "\\folder\\").Path(), "E:\\folder");
    EXPECT_EQ(FaultOf([&] { drives.Parse("", ""); }), FaultKind::NotFound);
}

TEST(AssetIndex, AFileThatGrowsIsProcessingAndReadOnceItHasRested) {
    AssetIndex index;
    for (const auto& [size, timeMS, toRead] :
         {std::tuple(1, 0, 0U), {2, 3000, 0U}, {2, 4999, 0U}, {2, 5000, 1U}, {2, 9000, 0U}}) {
        TreeContent disk;
        disk.Files.push_back({"C:\\Assets\\clip.wav", {size, 1}});
        index.BeginScan();
        const auto result = index.FinishScan(disk, Clock::TimePoint(std::chrono::milliseconds(timeMS)), 0);
        EXPECT_EQ(result.ToProbe.size(), toRead) << timeMS;
        for (const auto& asset : index.TakeChanges().Upserted) {
            EXPECT_EQ(asset.status(), ZORVIC_ASSETSTATE_PROCESSING);
            EXPECT_EQ(asset.total_size(), size);
        }
    }
}

TEST_F(AssetStoreTest, ReportsWhatComesChangesAndGoesAlsoInFolders) {
    const std::string path = Path("Act 1\\Intro\\Ton ☂.wav");
    std::filesystem::create_directories(Asset("Act 1/Intro"));
    for (const std::string& bytes : {ToneFile(), ToneFile(1) + "more"}) {
        WriteFile(Asset("Act 1/Intro/Ton ☂.wav"), bytes);
        Store->RescanNow();
        EXPECT_EQ(Store->ReadMetadata(path).duration_ms(), 1000) << "before the file rests";
        Settle();
        ASSERT_TRUE(WaitForStatus(path, ZORVIC_ASSETSTATE_READY));
        EXPECT_EQ(Find(path).checksum(), HashOf(bytes));
        EXPECT_EQ(Find(path).total_size(), bytes.size());
        EXPECT_EQ(Find(path).metadata().file_path(), path);
        ASSERT_TRUE(WaitForLevels(path));
        EXPECT_EQ(Store->Levels(path)->Levels.size(), 20);
    }
    EXPECT_GT(Calls, 0);
    std::filesystem::remove(Asset("Act 1/Intro/Ton ☂.wav"));
    Store->RescanNow();
    EXPECT_THAT(Take().Removed, ElementsAre(path));
    EXPECT_EQ(FaultOf([&] { Store->ReadMetadata(path); }), FaultKind::NotFound);
    const int calls = Calls;
    Store->RescanNow();
    EXPECT_EQ(Calls, calls) << "nothing has changed";
}

TEST_F(AssetStoreTest, NoticesChangesUnasked) {
    Open(true);
    std::filesystem::create_directories(Asset("later"));
    WriteFile(Asset("later/clip.wav"), ToneFile());
    EXPECT_TRUE(WaitForStatus(Path("later\\clip.wav"), ZORVIC_ASSETSTATE_PROCESSING));
    Time.Pass(2000);
    EXPECT_TRUE(WaitForStatus(Path("later\\clip.wav"), ZORVIC_ASSETSTATE_READY));
    std::filesystem::remove_all(Asset("later"));
    EXPECT_TRUE(WaitUntil([&] { return !Take().Removed.empty(); }));
}

TEST_F(AssetStoreTest, KnowsItsAssetsAfterARestart) {
    ASSERT_TRUE(Encode("-f lavfi -i testsrc=size=64x64 -frames:v 1", Asset("still.png")));
    WriteFile(Asset("changed.wav"), ToneFile());
    ASSERT_TRUE(Bring("clip.wav"));
    for (const char* name : {"still.png", "changed.wav"})
        ASSERT_TRUE(WaitForStatus(Path(name), ZORVIC_ASSETSTATE_READY));
    ASSERT_TRUE(WaitForLevels(Clip));
    const auto before = Find(Clip);
    Store.reset();

    WriteFile(Asset("changed.wav"), ToneFile() + "more");
    Reader = "/bin/false";  // tells kept from read again
    Open();
    EXPECT_EQ(Find(Clip).SerializeAsString(), before.SerializeAsString());
    EXPECT_EQ(Store->DurationMS(Path("still.png")), 10000);
    EXPECT_NE(StatusOf(Path("changed.wav")), ZORVIC_ASSETSTATE_READY);
    ASSERT_TRUE(WaitForLevels(Clip));
    EXPECT_EQ(Store->Levels(Clip)->Levels.size(), 20);
    EXPECT_EQ(Store->Levels(Path("still.png")), nullptr);
}

TEST_F(AssetStoreTest, ADamagedCacheIsMadeAgain) {
    ASSERT_TRUE(Bring("clip.wav"));
    ASSERT_TRUE(WaitForLevels(Clip));
    const std::filesystem::path cache = Disk / "cache.db";
    const auto rot = [&](const char* sql) { Connection(cache, Connection::Access::Write).Execute(sql); };
    const std::vector<std::function<void()>> damages = {
        [&] { WriteFile(cache, std::string(9'000, 'z')); }, [&] { rot("PRAGMA user_version = 99"); },
        [&] { rot("DROP TABLE levels"); },
        [&] { rot("UPDATE assets SET metadata = x''; UPDATE levels SET envelope = x'0505'"); }};
    for (std::size_t number = 0; number < damages.size(); ++number) {
        SCOPED_TRACE(number);
        Store.reset();
        damages[number]();
        Open();
        Settle();
        ASSERT_TRUE(WaitForStatus(Clip, ZORVIC_ASSETSTATE_READY));
        EXPECT_EQ(Store->DurationMS(Clip), 1000);
        ASSERT_TRUE(WaitForLevels(Clip));
        EXPECT_EQ(Store->Levels(Clip)->Levels.size(), 20);
    }
}

// What fails for no fault of the file may succeed later; it is never left out without a word.
TEST_F(AssetStoreTest, WhatCannotBeReadNowIsTriedAgainAndEndsAsError) {
    Reader = Disk / "reader";
    WriteFile(Disk / "busy", "#!/bin/sh\ntouch " + (Disk / "asked").string() + "\nexit 1\n");
    std::filesystem::permissions(Disk / "busy", std::filesystem::perms::owner_all);
    const auto useReader = [&](const std::filesystem::path& program) {
        std::filesystem::remove(Reader);
        std::filesystem::create_symlink(program, Reader);
    };
    for (const int ends : {ZORVIC_ASSETSTATE_READY, ZORVIC_ASSETSTATE_ERROR}) {
        const std::string name = std::to_string(ends) + ".wav";
        useReader(Disk / "busy");
        Open();
        WriteFile(Asset(name), ToneFile(ends));
        Settle();
        ASSERT_TRUE(WaitUntil([&] { return std::filesystem::remove(Disk / "asked"); }));
        if (ends == ZORVIC_ASSETSTATE_READY) useReader(MediaProgram());
        EXPECT_TRUE(WaitUntil([&] {
            Time.Pass(2'000);
            Store->RescanNow();
            const int status = StatusOf(Path(name));
            EXPECT_THAT(status, testing::AnyOf(ends, ZORVIC_ASSETSTATE_PROCESSING));
            return status == ends;
        }));
        EXPECT_EQ(FaultOf([&] { Store->ReadMetadata(Path(name)); }) == FaultKind::Refused,
                  ends == ZORVIC_ASSETSTATE_ERROR);
    }
}

TEST_F(AssetStoreTest, ListsOnlyMediaWithNamesThatAConsoleCanShow) {
    const std::string longest = std::string(251, 'n') + ".wav";
    for (const std::string name : {"good.wav", "no extension", ".hidden.wav", "back\\slash.wav", "line\nbreak.wav",
                                   "broken\xff.wav", longest.c_str()})
        WriteFile(Asset(name), ToneFile());
    WriteFile(Asset("text.mp4"), "text");
    WriteFile(Usb / "outside.wav", ToneFile());
    std::filesystem::create_symlink(Usb / "outside.wav", Asset("link.wav"));
    ASSERT_EQ(mkfifo(Asset("pipe.mov").c_str(), 0600), 0);
    Settle();
    ASSERT_TRUE(WaitUntil([&] { return Count(ZORVIC_ASSETSTATE_READY) == std::ssize(Listed); }));
    EXPECT_THAT(Listed, ElementsAre(Key(Path("good.wav")), Key(Path(longest)), Key(Path("no extension"))));
}

TEST_F(AssetStoreTest, DeletesFileAndEntryOfAssetsOnly) {
    std::filesystem::create_directories(Asset("folder"));
    WriteFile(Asset("folder/clip.wav"), ToneFile());
    WriteFile(Asset("notes.txt"), "text");
    WriteFile(Usb / "clip.wav", ToneFile());
    ASSERT_TRUE(Bring("clip.wav"));
    ASSERT_TRUE(WaitForStatus(Path("folder\\clip.wav"), ZORVIC_ASSETSTATE_READY));
    Store->Delete(Clip);
    EXPECT_THAT(Take().Removed, ElementsAre(Clip));
    EXPECT_FALSE(std::filesystem::exists(Asset("clip.wav")));

    std::filesystem::remove_all(Asset("folder"));
    std::filesystem::create_directory_symlink(Usb.Path(), Asset("folder"));
    const std::map<FaultKind, std::vector<std::string>> refused = {
        {FaultKind::NotFound, {Clip, Path("folder"), Path("notes.txt")}},
        {FaultKind::Refused, {Path("folder\\clip.wav")}},
        {FaultKind::Misused, {"C:\\zorvic.db", "C:\\Assets", "E:\\clip.wav"}}};
    for (const auto& [kind, paths] : refused)
        for (const std::string& path : paths)
            EXPECT_EQ(FaultOf([&] { Store->Delete(path); }), kind) << path;
    for (const auto& kept : {Disk / "zorvic.db", Asset("notes.txt"), Usb / "clip.wav"})
        EXPECT_TRUE(std::filesystem::exists(kept)) << kept;
}

TEST_F(AssetStoreTest, ListsDrivesAndTheirDirectoriesThenMediaByName) {
    for (const char* name : {"zoom.mov", "Alpha.MP4", "beta.wav", "notes.txt", ".hidden.mov", "bad\xff.mov"})
        WriteFile(Usb / name, "12345");
    for (const char* name : {"media/inner", "Archive"})
        std::filesystem::create_directories(Usb / name);
    std::filesystem::create_symlink(Disk / "zorvic.db", Usb / "out.mov");
    std::filesystem::create_symlink("zoom.mov", Usb / "same.mov");
    const auto entries = Store->ListDirectory("E", "");
    std::vector<std::string> names;
    for (const auto& entry : entries)
        names.push_back(entry.filename() + (entry.directory() ? "/" : ""));
    EXPECT_THAT(names, ElementsAre("Archive/", "media/", "Alpha.MP4", "beta.wav", "same.mov", "zoom.mov"));
    EXPECT_EQ(entries.at(2).size(), 5);
    EXPECT_EQ(entries.at(2).full_path(), "E:\\Alpha.MP4");
    EXPECT_EQ(Store->ListDirectory("e", "\\media\\").at(0).full_path(), "E:\\media\\inner");
    EXPECT_EQ(Store->ListDirectory("C", "").size(), 1) << "the store's own files are nobody's business";
    EXPECT_EQ(FaultOf([&] { Store->ListDirectory("E", "zoom.mov"); }), FaultKind::Misused) << "no directory";

    const auto drives = Store->Drives();
    ASSERT_EQ(drives.size(), 2);
    EXPECT_TRUE(drives[0].mountpoint() == "C" && !drives[0].external());
    EXPECT_TRUE(drives[1].mountpoint() == "E" && drives[1].external());
    EXPECT_GT(drives[1].free(), 0);
}

// The thread that hangs in the drive outlives the reader.
TEST(DriveReader, AnswersLaterWhatWasSlowAndEndsThoughItsDriveHangs) {
    const auto listings = std::make_shared<std::atomic<int>>(0);
    std::array<std::promise<void>, 2> gates;
    const std::array opened = {gates[0].get_future().share(), gates[1].get_future().share()};
    {
        DriveReader reader({"E", "/"}, [=](const DrivePlace&) {
            opened.at(static_cast<std::size_t>((*listings)++)).wait();
            return std::vector<zorvic::v1::DirectoryEntry>(3);
        });
        std::size_t size = 0;
        const auto list = [&] { return FaultOf([&] { size = reader.List({"media"}).size(); }); };
        EXPECT_EQ(list(), FaultKind::Slow);
        const auto findHosts = [&] { return reader.FindFile({"etc", "hosts"}); };
        EXPECT_THROW(findHosts(), Fault) << "the drive hangs for this too";
        EXPECT_THAT(findHosts, testing::ThrowsMessage<Fault>(testing::HasSubstr("does not answer")))
            << "the next file waits no more";
        EXPECT_EQ(reader.Space().total(), 0);
        gates[0].set_value();
        EXPECT_TRUE(WaitUntil([&] { return list() != FaultKind::Slow; }));
        EXPECT_EQ(size, 3);
        EXPECT_EQ(*listings, 1) << "one question, asked again until it was answered";
        EXPECT_TRUE(WaitUntil([&] { return FaultOf(findHosts) == std::nullopt; }));
        EXPECT_EQ(list(), FaultKind::Slow) << "an answer is given once";
    }
    gates[1].set_value();
}

}  // namespace
}  // namespace ZorvicUnit
