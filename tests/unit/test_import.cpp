#include "media/checksum.h"
#include "unit/asset_fixture.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <thread>

namespace {

/// What a copy waited for at once, while the disk writes 40 MB a second; -1: the disk is as fast as it is.
std::atomic<off64_t> LongestWait = -1;

}  // namespace

// In front of the C library's.
int sync_file_range(int descriptor, off64_t offset, off64_t bytes, unsigned flags) {
    if (LongestWait < 0) return static_cast<int>(syscall(SYS_sync_file_range, descriptor, offset, bytes, flags));
    if ((flags & SYNC_FILE_RANGE_WAIT_AFTER) == 0) return 0;
    std::this_thread::sleep_for(std::chrono::microseconds(bytes / 40));
    LongestWait = std::max(LongestWait.load(), bytes);
    return 0;
}

namespace ZorvicUnit {
namespace {

using namespace Zorvic;  // NOLINT(google-build-using-namespace): the states' names are long enough

class ImportTest : public AssetFixture {
protected:
    std::optional<FaultKind> InstallFault(const std::string& path) {
        return FaultOf([&] { Store->Install(path); });
    }

    /// Hidden leftovers in the store.
    std::size_t Parts() const {
        std::size_t count = 0;
        for (const auto& entry : std::filesystem::directory_iterator(Disk / "Assets"))
            if (entry.path().extension() == ".part") ++count;
        return count;
    }

    /// A file that is slow to copy because of its size, and takes no room.
    void WriteSparse(const std::string& name, std::uint32_t size) const {
        WriteFile(Usb / name, WaveHead(size - 44));
        std::filesystem::resize_file(Usb / name, size);
    }

    const std::string Clip = "C:\\Assets\\clip.wav";
};

TEST_F(ImportTest, ListsTheAssetAtOnceAndBringsItIn) {
    Open();
    std::filesystem::create_directories(Usb / "media");
    WriteFile(Usb / "media/clip.wav", ToneFile());
    Store->Install("E:\\media\\clip.wav");
    const auto asset = Find(Clip);
    ASSERT_TRUE(asset);
    EXPECT_EQ(asset->total_size(), ToneFile().size());
    ASSERT_TRUE(WaitForStatus(Clip, ZORVIC_ASSETSTATE_READY));
    EXPECT_EQ(ReadFile(Asset("clip.wav")), ToneFile());
    Checksum checksum;
    checksum.Add(ToneFile());
    EXPECT_EQ(Find(Clip)->checksum(), checksum.Hex());
    EXPECT_EQ(Store->DurationMS(Clip), 1000);
    EXPECT_EQ(Parts(), 0);
    EXPECT_TRUE(WaitUntil([&] { return Store->Levels(Clip) != nullptr; }));
    Store->RescanNow();
    EXPECT_EQ(StatusOf(Clip), ZORVIC_ASSETSTATE_READY) << "the scan meets a file that it knows";
}

TEST_F(ImportTest, AStoreThatCannotBeWrittenCostsNoMeters) {
    Open();
    Rows.Execute("PRAGMA query_only = ON");
    WriteFile(Usb / "clip.wav", ToneFile());
    Store->Install("E:\\clip.wav");
    ASSERT_TRUE(WaitForStatus(Clip, ZORVIC_ASSETSTATE_READY));
    EXPECT_TRUE(WaitUntil([&] { return Store->Levels(Clip) != nullptr; }));
}

TEST_F(ImportTest, QueuedOnesAreListedWithNothingCopied) {
    Open();
    WriteSparse("long.wav", 200'000'000);
    WriteFile(Usb / "clip.wav", ToneFile());
    Store->Install("E:\\long.wav");
    Store->Install("E:\\clip.wav");
    const auto queued = Find(Clip);
    ASSERT_TRUE(queued);
    EXPECT_EQ(queued->status(), ZORVIC_ASSETSTATE_INGESTING);
    EXPECT_EQ(queued->current_size(), 0);
    EXPECT_EQ(queued->total_size(), ToneFile().size());
    EXPECT_EQ(InstallFault("E:\\clip.wav"), FaultKind::Refused) << "on its way already";

    EXPECT_TRUE(WaitUntil([&] { return Find("C:\\Assets\\long.wav")->current_size() > 0; }));
    Store->Delete("C:\\Assets\\long.wav");
    EXPECT_FALSE(Find("C:\\Assets\\long.wav"));
    EXPECT_TRUE(WaitForStatus(Clip, ZORVIC_ASSETSTATE_READY)) << "the next one goes on";
    EXPECT_EQ(Parts(), 0);
    EXPECT_FALSE(std::filesystem::exists(Asset("long.wav")));
}

TEST_F(ImportTest, ReplacesAnOlderFileOnlyWhenComplete) {
    Open();
    WriteFile(Usb / "clip.wav", ToneFile());
    Store->Install("E:\\clip.wav");
    ASSERT_TRUE(WaitForStatus(Clip, ZORVIC_ASSETSTATE_READY));
    const std::string newer = ToneFile(1) + ToneFile(2);
    WriteFile(Usb / "clip.wav", newer);
    Store->Install("E:\\clip.wav");
    EXPECT_EQ(Store->DurationMS(Clip), 1000) << "what is there goes on playing";
    ASSERT_TRUE(WaitForStatus(Clip, ZORVIC_ASSETSTATE_READY));
    EXPECT_EQ(ReadFile(Asset("clip.wav")), newer);

    WriteFile(Usb / "clip.wav", "no media at all");
    Store->Install("E:\\clip.wav");
    ASSERT_TRUE(WaitForStatus(Clip, ZORVIC_ASSETSTATE_ERROR));
    EXPECT_EQ(ReadFile(Asset("clip.wav")), newer) << "a failed import must not cost the old file";
    Store->Delete(Clip);
    EXPECT_EQ(StatusOf(Clip), ZORVIC_ASSETSTATE_READY) << "dismissing the failure shows the old file again";
    EXPECT_TRUE(std::filesystem::exists(Asset("clip.wav")));
}

TEST_F(ImportTest, ASlowDiskIsWaitedForInShortStretches) {
    Open();
    LongestWait = 0;
    WriteSparse("clip.wav", 24'000'000);
    Store->Install("E:\\clip.wav");
    EXPECT_TRUE(WaitForStatus(Clip, ZORVIC_ASSETSTATE_READY));
    EXPECT_THAT(LongestWait.exchange(-1), testing::AllOf(testing::Gt(0), testing::Lt(4 << 20)))
        << "no progress shows meanwhile";
}

TEST_F(ImportTest, AFailureIsShownCanBeTriedAgainAndTheOthersGoOn) {
    Open();
    // Hidden while it is copied: no suffix must make it too long for the file system.
    const std::string longest = std::string(251, 'n') + ".wav";
    WriteSparse("slow.wav", 200'000'000);
    WriteFile(Usb / "damaged.mov", std::string(5000, 'x'));
    WriteFile(Usb / "gone.wav", ToneFile());
    WriteFile(Usb / longest, ToneFile());
    for (const std::string& name :
         {std::string("slow.wav"), std::string("damaged.mov"), std::string("gone.wav"), longest})
        Store->Install("E:\\" + name);
    std::filesystem::remove(Usb / "gone.wav");
    Store->Delete("C:\\Assets\\slow.wav");
    ASSERT_TRUE(WaitForStatus("C:\\Assets\\" + longest, ZORVIC_ASSETSTATE_READY));
    EXPECT_EQ(StatusOf("C:\\Assets\\gone.wav"), ZORVIC_ASSETSTATE_ERROR);
    const std::string damaged = "C:\\Assets\\damaged.mov";
    EXPECT_EQ(StatusOf(damaged), ZORVIC_ASSETSTATE_ERROR);
    EXPECT_EQ(Find(damaged)->current_size(), 5000);
    EXPECT_EQ(Find(damaged)->total_size(), 5000);
    EXPECT_EQ(Parts(), 0);
    WriteFile(Usb / "damaged.mov", ToneFile());
    Store->Install("E:\\damaged.mov");
    EXPECT_TRUE(WaitForStatus(damaged, ZORVIC_ASSETSTATE_READY));
    Store->Delete("C:\\Assets\\gone.wav");
    EXPECT_FALSE(Find("C:\\Assets\\gone.wav"));
}

TEST_F(ImportTest, RefusesWhatIsNotAFileOfADrive) {
    Open();
    std::filesystem::create_directories(Usb / "folder");
    std::filesystem::create_symlink("/etc/hosts", Usb / "hosts.mov");
    ASSERT_EQ(mkfifo((Usb / "pipe.mov").c_str(), 0600), 0);
    WriteFile(Usb / ".hidden.wav", ToneFile());
    WriteFile(Asset("own.wav"), ToneFile());
    std::filesystem::create_directories(Asset("sub"));
    WriteFile(Asset("sub/own.wav"), ToneFile());
    const std::map<FaultKind, std::vector<const char*>> refused = {
        {FaultKind::NotFound, {"E:\\absent.mov", "E:\\folder", "E:\\pipe.mov"}},
        {FaultKind::Refused, {"E:\\hosts.mov", "C:\\Assets\\own.wav", "C:\\Assets\\sub\\own.wav"}},
        {FaultKind::Misused, {"E:\\.hidden.wav", "E:\\..\\clip.wav", "/etc/hosts", "E:\\"}}};
    for (const auto& [kind, paths] : refused)
        for (const char* path : paths)
            EXPECT_EQ(InstallFault(path), kind) << path;
    EXPECT_TRUE(Store->Assets().empty());

    const MediaDirectory elsewhere;
    WriteFile(Usb / "clip.wav", ToneFile());
    std::filesystem::remove_all(Disk / "Assets");
    std::filesystem::create_directory_symlink(elsewhere.Path, Disk / "Assets");
    EXPECT_EQ(InstallFault("E:\\clip.wav"), FaultKind::Refused) << "the store leads elsewhere";
    EXPECT_TRUE(std::filesystem::is_empty(elsewhere.Path));
}

// Allowed when it was asked for, something else by the time its turn comes. Size and time alone would not tell.
TEST_F(ImportTest, WhatHasBecomeALinkOutOfTheDriveIsNotRead) {
    Open();
    const MediaDirectory elsewhere;
    const auto time = std::filesystem::file_time_type::clock::now();
    std::filesystem::create_directories(Usb / "folder");
    for (const auto& file :
         {Usb / "clip.wav", Usb / "folder/under.wav", elsewhere / "clip.wav", elsewhere / "under.wav"}) {
        WriteFile(file, ToneFile());
        std::filesystem::last_write_time(file, time);
    }
    WriteSparse("slow.wav", 200'000'000);
    for (const char* path : {"E:\\slow.wav", "E:\\clip.wav", "E:\\folder\\under.wav"})
        Store->Install(path);
    std::filesystem::remove(Usb / "clip.wav");
    std::filesystem::remove_all(Usb / "folder");
    std::filesystem::create_symlink(elsewhere / "clip.wav", Usb / "clip.wav");
    std::filesystem::create_directory_symlink(elsewhere.Path, Usb / "folder");
    Store->Delete("C:\\Assets\\slow.wav");
    EXPECT_TRUE(WaitForStatus(Clip, ZORVIC_ASSETSTATE_ERROR));
    EXPECT_TRUE(WaitForStatus("C:\\Assets\\under.wav", ZORVIC_ASSETSTATE_ERROR));
}

TEST_F(ImportTest, StoppingGivesUpTheCopyAndLeavesNothing) {
    Open();
    WriteSparse("long.wav", 400'000'000);
    Store->Install("E:\\long.wav");
    ASSERT_TRUE(WaitUntil([&] { return Find("C:\\Assets\\long.wav")->current_size() > 0; }));
    Store.reset();
    EXPECT_EQ(Parts(), 0);
    EXPECT_FALSE(std::filesystem::exists(Asset("long.wav")));
}

}  // namespace
}  // namespace ZorvicUnit
