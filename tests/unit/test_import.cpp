#include "store/import_table.h"
#include "unit/asset_fixture.h"

#include <sys/stat.h>

namespace ZorvicUnit {
namespace {

using namespace Zorvic;  // NOLINT(google-build-using-namespace): the states' names are long enough

class ImportTest : public AssetFixture {
protected:
    /// Puts a file on the drive and asks for it.
    void Import(const std::string& name, const std::string& bytes = ToneFile()) {
        WriteFile(Usb / name, bytes);
        Store->Install("E:\\" + name);
    }
    /// Asks for a file that is slow to copy because of its size, and takes no room on the drive.
    void ImportLong(const std::string& name, std::uint32_t size = 200'000'000) {
        WriteFile(Usb / name, WaveHead(size - 44));
        std::filesystem::resize_file(Usb / name, size);
        Store->Install("E:\\" + name);
    }

    /// Hidden leftovers in the store.
    std::size_t Parts() const {
        std::size_t count = 0;
        for (const auto& entry : std::filesystem::directory_iterator(Disk / "Assets"))
            if (entry.path().extension() == ".part") ++count;
        return count;
    }
};

TEST_F(ImportTest, QueuedOnesAreListedWithNothingCopied) {
    ImportLong("long.wav");
    Import("clip.wav");
    const auto queued = Find(Clip);
    EXPECT_EQ(queued.status(), ZORVIC_ASSETSTATE_INGESTING);
    EXPECT_EQ(queued.current_size(), 0);
    EXPECT_EQ(queued.total_size(), ToneFile().size());
    EXPECT_EQ(FaultOf([&] { Store->Install("E:\\clip.wav"); }), FaultKind::Refused) << "on its way already";

    EXPECT_TRUE(WaitUntil([&] { return Find(Path("long.wav")).current_size() > 0; }));
    Store->Delete(Path("long.wav"));
    EXPECT_EQ(StatusOf(Path("long.wav")), ZORVIC_ASSETSTATE_INVALID);
    EXPECT_TRUE(WaitForStatus(Clip, ZORVIC_ASSETSTATE_READY)) << "the next one goes on";
    EXPECT_EQ(Parts(), 0);
    EXPECT_FALSE(std::filesystem::exists(Asset("long.wav")));
}

TEST_F(ImportTest, BringsAFileInAndReplacesItOnlyWhenTheNewOneIsComplete) {
    Import("clip.wav");
    Rows.Execute("PRAGMA query_only = ON");  // a store that cannot be written costs the asset nothing
    ASSERT_TRUE(WaitForStatus(Clip, ZORVIC_ASSETSTATE_READY));
    EXPECT_EQ(Find(Clip).checksum(), HashOf(ToneFile()));
    EXPECT_TRUE(WaitForLevels(Clip));
    Store->RescanNow();
    EXPECT_EQ(StatusOf(Clip), ZORVIC_ASSETSTATE_READY) << "the scan meets a file that it knows";

    Rows.Execute("PRAGMA query_only = OFF");
    const std::string newer = ToneFile(1) + ToneFile(2);
    Import("clip.wav", newer);
    EXPECT_EQ(Store->DurationMS(Clip), 1000) << "what is there goes on playing";
    ASSERT_TRUE(WaitForStatus(Clip, ZORVIC_ASSETSTATE_READY));
    EXPECT_EQ(ReadFile(Asset("clip.wav")), newer);

    Import("clip.wav", "no media at all");
    ASSERT_TRUE(WaitForStatus(Clip, ZORVIC_ASSETSTATE_ERROR));
    EXPECT_EQ(ReadFile(Asset("clip.wav")), newer) << "a failed import must not cost the old file";
    Store->Delete(Clip);
    EXPECT_EQ(StatusOf(Clip), ZORVIC_ASSETSTATE_READY) << "dismissing the failure shows the old file again";
    EXPECT_TRUE(std::filesystem::exists(Asset("clip.wav")));
}

// What is allowed when it is asked for may be something else by the time its turn comes; a link may lead to a file of
// the same size and time.
TEST_F(ImportTest, AFailureIsShownCanBeTriedAgainAndTheOthersGoOn) {
    const TemporaryDirectory elsewhere;
    const auto time = std::filesystem::file_time_type::clock::now();
    for (const auto& file : {Usb / "linked.wav", elsewhere / "linked.wav"}) {
        WriteFile(file, ToneFile());
        std::filesystem::last_write_time(file, time);
    }
    // Hidden while it is copied: no suffix must make it too long for the file system.
    const std::string longest = std::string(251, 'n') + ".wav";
    ImportLong("slow.wav");
    Import("damaged.mov", std::string(5000, 'x'));
    Import("gone.wav");
    Import("changed.wav");
    Store->Install("E:\\linked.wav");
    Import(longest);
    for (const char* name : {"gone.wav", "linked.wav"})
        std::filesystem::remove(Usb / name);
    std::filesystem::create_symlink(elsewhere / "linked.wav", Usb / "linked.wav");
    std::filesystem::last_write_time(Usb / "changed.wav", time - std::chrono::hours(1));
    Store->Delete(Path("slow.wav"));
    ASSERT_TRUE(WaitForStatus(Path(longest), ZORVIC_ASSETSTATE_READY));
    for (const char* name : {"damaged.mov", "gone.wav", "changed.wav", "linked.wav"})
        EXPECT_EQ(StatusOf(Path(name)), ZORVIC_ASSETSTATE_ERROR) << name;
    EXPECT_EQ(Parts(), 0);
    Import("damaged.mov");
    EXPECT_TRUE(WaitForStatus(Path("damaged.mov"), ZORVIC_ASSETSTATE_READY));
}

TEST_F(ImportTest, RefusesWhatIsNotAFileOfADrive) {
    std::filesystem::create_directories(Usb / "folder");
    ASSERT_EQ(mkfifo((Usb / "pipe.mov").c_str(), 0600), 0);
    std::filesystem::create_directories(Asset("sub"));
    for (const auto& file : {Usb / ".hidden.wav", Usb / "clip.wav", Asset("own.wav"), Asset("sub/own.wav")})
        WriteFile(file, ToneFile());
    const std::map<FaultKind, std::vector<const char*>> refused = {
        {FaultKind::NotFound, {"E:\\absent.mov", "E:\\folder", "E:\\pipe.mov"}},
        {FaultKind::Refused, {"C:\\Assets\\own.wav", "C:\\Assets\\sub\\own.wav"}},
        {FaultKind::Misused, {"E:\\.hidden.wav", "E:\\"}}};
    for (const auto& [kind, paths] : refused)
        for (const char* path : paths)
            EXPECT_EQ(FaultOf([&] { Store->Install(path); }), kind) << path;
    EXPECT_TRUE(Take().Upserted.empty());

    const TemporaryDirectory elsewhere;
    std::filesystem::remove_all(Disk / "Assets");
    std::filesystem::create_directory_symlink(elsewhere.Path(), Disk / "Assets");
    EXPECT_EQ(FaultOf([&] { Store->Install("E:\\clip.wav"); }), FaultKind::Refused) << "the store leads elsewhere";
    EXPECT_TRUE(std::filesystem::is_empty(elsewhere.Path()));
}

TEST_F(ImportTest, OrdersOutliveARestartAndFailuresUntilTheyAreDismissed) {
    Import("bad.mov", std::string(5000, 'x'));
    ASSERT_TRUE(WaitForStatus(Path("bad.mov"), ZORVIC_ASSETSTATE_ERROR));
    ImportLong("long.wav", 400'000'000);
    for (const char* name : {"clip.wav", "gone.wav"})
        Import(name);
    ASSERT_TRUE(WaitUntil([&] { return Find(Path("long.wav")).current_size() > 0; }));
    Store.reset();
    EXPECT_EQ(Parts(), 0);
    EXPECT_FALSE(std::filesystem::exists(Asset("long.wav")));

    std::filesystem::remove(Usb / "gone.wav");
    Open();
    EXPECT_EQ(StatusOf(Clip), ZORVIC_ASSETSTATE_INGESTING) << "listed at once";
    EXPECT_THAT([&] { Store->ReadMetadata(Path("bad.mov")); },
                testing::ThrowsMessage<Fault>(
                    testing::AllOf(testing::HasSubstr("bad.mov"), testing::Not(testing::HasSubstr(Disk.Path())))))
        << "as consoles know it";
    Store->Delete(Path("bad.mov"));
    Store->Delete(Path("long.wav"));
    ASSERT_TRUE(WaitForStatus(Clip, ZORVIC_ASSETSTATE_READY));
    ASSERT_TRUE(WaitForStatus(Path("gone.wav"), ZORVIC_ASSETSTATE_ERROR));
    EXPECT_THAT([&] { Store->ReadMetadata(Path("gone.wav")); },
                testing::ThrowsMessage<Fault>(testing::HasSubstr("gone.wav")));
    std::filesystem::remove(Usb / "clip.wav");
    Open();
    EXPECT_EQ(StatusOf(Clip), ZORVIC_ASSETSTATE_READY) << "what is done is not done again";
    EXPECT_EQ(StatusOf(Path("gone.wav")), ZORVIC_ASSETSTATE_ERROR);
    EXPECT_EQ(StatusOf(Path("long.wav")), ZORVIC_ASSETSTATE_INVALID);
    EXPECT_EQ(StatusOf(Path("bad.mov")), ZORVIC_ASSETSTATE_INVALID);
}

// The unit was killed between the copy's taking its place and the end of the order.
TEST_F(ImportTest, AnOrderThatIsDoneIsNotCarriedOutAgain) {
    Import("clip.wav");
    ASSERT_TRUE(WaitForStatus(Clip, ZORVIC_ASSETSTATE_READY));
    Store.reset();
    ImportTable orders(Rows);
    EXPECT_TRUE(orders.Load().empty());
    orders.Add({Clip, "E:\\clip.wav", ReadStamp(Usb / "clip.wav"), {}, {}});
    orders.SetCopy(Clip, ReadStamp(Asset("clip.wav")));
    Open();
    EXPECT_EQ(StatusOf(Clip), ZORVIC_ASSETSTATE_READY);
    EXPECT_TRUE(orders.Load().empty());
}

// What becomes of an import must not be written into the next order for the same asset.
TEST_F(ImportTest, OrdersAndTheirEndsTakeTurnsWithTheCopyThatIsBeingFinished) {
    ImportTable orders(Rows);
    Pause = std::chrono::milliseconds(300);
    Import("clip.wav");
    ASSERT_TRUE(WaitForStatus(Clip, ZORVIC_ASSETSTATE_READY));
    ImportLong("clip.wav", 400'000'000);
    Pause = std::chrono::milliseconds(0);
    ASSERT_TRUE(WaitUntil([&] { return Find(Clip).current_size() > 0; }));
    EXPECT_EQ(orders.Load().size(), 1U) << "the end of the first one cost the second its order";
    Store->Delete(Clip);
    Import("next.wav");
    ASSERT_TRUE(WaitForStatus(Path("next.wav"), ZORVIC_ASSETSTATE_READY));

    auto turn = orders.WaitForTurn([] { return true; });
    Import("ended.wav");
    ASSERT_TRUE(WaitUntil([&] { return Find(Path("ended.wav")).current_size() == std::ssize(ToneFile()); }));
    std::this_thread::sleep_for(std::chrono::seconds(1));  // until the copy waits for its turn to be finished
    const bool ended = FaultOf([&] { Store->Delete(Path("ended.wav")); }) == std::nullopt;
    EXPECT_EQ(orders.Load().size(), ended ? 0U : 1U);
}

TEST_F(ImportTest, OrdersHaveALimitThatLetsThemEnd) {
    Rows.Execute(
        "INSERT INTO imports(path, source, size, modified_ns, problem) "
        "WITH RECURSIVE made(number) AS (SELECT 1 UNION ALL SELECT number + 1 FROM made WHERE number < 10000) "
        "SELECT 'C:\\Assets\\' || number, 'E:\\gone', 0, 0, 'gone' FROM made");
    Open();
    WriteFile(Usb / "clip.wav", ToneFile());
    EXPECT_EQ(FaultOf([&] { Store->Install("E:\\clip.wav"); }), FaultKind::Refused);
    Store->Delete(Path("7"));
    Store->Install("E:\\clip.wav");
    EXPECT_TRUE(WaitForStatus(Clip, ZORVIC_ASSETSTATE_READY));
}

}  // namespace
}  // namespace ZorvicUnit
