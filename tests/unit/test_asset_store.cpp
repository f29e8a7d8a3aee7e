#include "assets/drive_reader.h"
#include "media/checksum.h"
#include "unit/asset_fixture.h"

#include <sys/stat.h>

#include <future>

namespace ZorvicUnit {
namespace {

using testing::ElementsAre;
using testing::UnorderedElementsAre;
using namespace Zorvic;  // NOLINT(google-build-using-namespace): the states' names are long enough

using AssetStoreTest = AssetFixture;

std::string HashOf(const std::string& bytes) {
    Checksum checksum;
    checksum.Add(bytes);
    return checksum.Hex();
}

TEST_F(AssetStoreTest, ReadsNewFilesAndThoseInFolders) {
    Open();
    std::filesystem::create_directories(Asset("Act 1/Intro"));
    WriteFile(Asset("Act 1/Intro/Ton ☂.wav"), ToneFile());
    Settle();
    const std::string path = "C:\\Assets\\Act 1\\Intro\\Ton ☂.wav";
    ASSERT_TRUE(WaitForStatus(path, ZORVIC_ASSETSTATE_READY));
    const auto asset = *Find(path);
    EXPECT_EQ(asset.checksum(), HashOf(ToneFile()));
    EXPECT_EQ(asset.total_size(), ToneFile().size());
    EXPECT_EQ(asset.current_size(), ToneFile().size());
    EXPECT_EQ(asset.metadata().audio_format(), "pcm_s16le");
    EXPECT_EQ(asset.metadata().file_path(), path);
    EXPECT_EQ(Store->DurationMS(path), 1000);
    EXPECT_EQ(Store->ReadMetadata(path).duration_ms(), 1000);
    ASSERT_TRUE(WaitUntil([&] { return Store->Levels(path) != nullptr; }));
    EXPECT_EQ(Store->Levels(path)->Levels.size(), 20);
}

TEST_F(AssetStoreTest, AFileThatGrowsIsProcessingUntilItRests) {
    Open();
    const std::string whole = ToneFile();
    const std::string path = "C:\\Assets\\clip.wav";
    for (std::size_t part = 1; part <= 4; ++part) {
        WriteFile(Asset("clip.wav"), whole.substr(0, whole.size() * part / 4));
        Time.Advance(std::chrono::seconds(3));
        Store->RescanNow();
        ASSERT_EQ(StatusOf(path), ZORVIC_ASSETSTATE_PROCESSING);
        EXPECT_EQ(Find(path)->total_size(), whole.size() * part / 4);
    }
    Time.Advance(std::chrono::milliseconds(1999));
    Store->RescanNow();
    EXPECT_EQ(StatusOf(path), ZORVIC_ASSETSTATE_PROCESSING);
    EXPECT_EQ(Find(path)->checksum(), "");
    Settle();
    EXPECT_TRUE(WaitForStatus(path, ZORVIC_ASSETSTATE_READY));
}

TEST_F(AssetStoreTest, ReportsWhatComesChangesAndGoes) {
    Open();
    const std::string path = "C:\\Assets\\clip.wav";
    WriteFile(Asset("clip.wav"), ToneFile());
    Settle();
    ASSERT_TRUE(WaitForStatus(path, ZORVIC_ASSETSTATE_READY));
    EXPECT_GT(Calls, 0);
    const auto first = Store->TakeChanges();
    ASSERT_EQ(first.Upserted.size(), 1);
    EXPECT_EQ(first.Upserted[0].checksum(), HashOf(ToneFile()));

    WriteFile(Asset("clip.wav"), ToneFile(1) + "more");
    Settle();
    ASSERT_TRUE(WaitUntil([&] { return Find(path)->checksum() == HashOf(ToneFile(1) + "more"); }));
    EXPECT_EQ(Store->TakeChanges().Upserted.size(), 1);

    std::filesystem::remove(Asset("clip.wav"));
    Store->RescanNow();
    EXPECT_THAT(Store->TakeChanges().Removed, ElementsAre(path));
    EXPECT_FALSE(Store->DurationMS(path));
    const int calls = Calls;
    Store->RescanNow();
    EXPECT_EQ(Calls, calls) << "nothing has changed";
}

TEST_F(AssetStoreTest, NoticesChangesUnasked) {
    Open(true);
    std::filesystem::create_directories(Asset("later"));
    WriteFile(Asset("later/clip.wav"), ToneFile());
    EXPECT_TRUE(WaitForStatus("C:\\Assets\\later\\clip.wav", ZORVIC_ASSETSTATE_PROCESSING));
    Time.Advance(std::chrono::seconds(2));
    EXPECT_TRUE(WaitForStatus("C:\\Assets\\later\\clip.wav", ZORVIC_ASSETSTATE_READY));
    std::filesystem::remove_all(Asset("later"));
    EXPECT_TRUE(WaitUntil([&] { return Store->Assets().empty(); }));
}

TEST_F(AssetStoreTest, KnowsItsAssetsAfterARestart) {
    const std::string path = "C:\\Assets\\clip.wav", mute = "C:\\Assets\\still.png";
    Open();
    WriteFile(Asset("clip.wav"), ToneFile());
    ASSERT_TRUE(Encode("-f lavfi -i testsrc=size=64x64 -frames:v 1", Asset("still.png")));
    WriteFile(Asset("changed.wav"), ToneFile());
    Settle();
    for (const auto& each : {path, mute, std::string("C:\\Assets\\changed.wav")})
        ASSERT_TRUE(WaitForStatus(each, ZORVIC_ASSETSTATE_READY));
    ASSERT_TRUE(WaitUntil([&] { return Store->Levels(path) != nullptr; }));
    const auto before = *Find(path);
    Store.reset();

    WriteFile(Asset("changed.wav"), ToneFile() + "more");
    Open();
    EXPECT_EQ(Find(path)->SerializeAsString(), before.SerializeAsString());
    EXPECT_EQ(Store->DurationMS(mute), 10000);
    EXPECT_NE(StatusOf("C:\\Assets\\changed.wav"), ZORVIC_ASSETSTATE_READY);
    EXPECT_TRUE(WaitUntil([&] { return Store->Levels(path) != nullptr; }));
    EXPECT_EQ(Store->Levels(mute), nullptr);
}

TEST_F(AssetStoreTest, ListsOnlyMediaWithNamesThatAConsoleCanShow) {
    Open();
    WriteFile(Asset("good.wav"), ToneFile());
    WriteFile(Asset("no extension"), ToneFile());
    WriteFile(Asset("notes.txt"), "text");
    WriteFile(Asset("text.mp4"), "text");
    WriteFile(Asset("empty.mov"), "");
    WriteFile(Asset("noise.ts"), std::string(50'000, 'G'));
    WriteFile(Asset(".hidden.wav"), ToneFile());
    WriteFile(Asset("back\\slash.wav"), ToneFile());
    WriteFile(Asset("line\nbreak.wav"), ToneFile());
    WriteFile(Asset("broken\xff.wav"), ToneFile());
    WriteFile(Asset(std::string(251, 'n') + ".wav"), ToneFile());
    WriteFile(Usb / "outside.wav", ToneFile());
    std::filesystem::create_symlink(Usb / "outside.wav", Asset("link.wav"));
    std::filesystem::create_directory_symlink(Disk.Path, Asset("circle"));
    ASSERT_EQ(mkfifo(Asset("pipe.mov").c_str(), 0600), 0);
    Settle();
    std::vector<std::string> paths;
    ASSERT_TRUE(WaitUntil([&] {
        paths.clear();
        for (const auto& asset : Store->Assets())
            if (asset.status() == ZORVIC_ASSETSTATE_READY) paths.push_back(asset.full_path());
        return paths.size() == Store->Assets().size();
    }));
    EXPECT_THAT(paths, UnorderedElementsAre("C:\\Assets\\good.wav", "C:\\Assets\\no extension",
                                            "C:\\Assets\\" + std::string(251, 'n') + ".wav"));
}

TEST_F(AssetStoreTest, DeletesFileAndEntry) {
    Open();
    WriteFile(Asset("clip.wav"), ToneFile());
    WriteFile(Asset("notes.txt"), "text");
    std::filesystem::create_directories(Asset("folder"));
    WriteFile(Asset("folder/clip.wav"), ToneFile());
    WriteFile(Usb / "clip.wav", ToneFile());
    Settle();
    ASSERT_TRUE(WaitForStatus("C:\\Assets\\clip.wav", ZORVIC_ASSETSTATE_READY));
    Store->TakeChanges();
    Store->Delete("C:\\Assets\\clip.wav");
    EXPECT_THAT(Store->TakeChanges().Removed, ElementsAre("C:\\Assets\\clip.wav"));
    EXPECT_FALSE(std::filesystem::exists(Asset("clip.wav")));
    const auto fault = [this](const std::string& path) { return FaultOf([&] { Store->Delete(path); }); };
    for (const char* path : {"C:\\Assets\\clip.wav", "C:\\Assets\\folder", "C:\\Assets\\notes.txt"})
        EXPECT_EQ(fault(path), FaultKind::NotFound) << path;
    for (const char* path : {"C:\\zorvic.db", "C:\\Assets\\..\\zorvic.db", "/etc/hosts", "", "C:\\Assets\\/etc/hosts",
                             "C:\\Assets", "C:Assets\\clip.wav", "E:\\clip.wav"})
        EXPECT_EQ(fault(path), FaultKind::Misused) << path;
    EXPECT_EQ(fault("Q:\\Assets\\clip.wav"), FaultKind::NotFound);
    EXPECT_TRUE(std::filesystem::exists(Disk / "zorvic.db"));
    EXPECT_TRUE(std::filesystem::exists(Asset("notes.txt")));

    std::filesystem::remove_all(Asset("folder"));
    std::filesystem::create_directory_symlink(Usb.Path, Asset("folder"));
    EXPECT_EQ(fault("C:\\Assets\\folder\\clip.wav"), FaultKind::Refused);
    EXPECT_TRUE(std::filesystem::exists(Usb / "clip.wav")) << "the file of somebody else";
}

TEST_F(AssetStoreTest, ReadsMetadataBeforeTheFileRests) {
    Open();
    WriteFile(Asset("clip.wav"), ToneFile());
    WriteFile(Asset("text.mp4"), "text");
    Store->RescanNow();
    EXPECT_EQ(Store->ReadMetadata("C:\\Assets\\clip.wav").duration_ms(), 1000);
    EXPECT_EQ(FaultOf([&] { Store->ReadMetadata("C:\\Assets\\text.mp4"); }), FaultKind::Refused);
    EXPECT_EQ(FaultOf([&] { Store->ReadMetadata("C:\\Assets\\absent.wav"); }), FaultKind::NotFound);
}

TEST_F(AssetStoreTest, ListsDrivesAndTheirDirectoriesThenMediaByName) {
    Open();
    for (const char* name : {"zoom.mov", "Alpha.MP4", "beta.wav", "notes.txt", ".hidden.mov", "bad\xff.mov"})
        WriteFile(Usb / name, "12345");
    std::filesystem::create_directories(Usb / "media/inner");
    std::filesystem::create_directories(Usb / "Archive");
    std::filesystem::create_symlink("/etc", Usb / "etc");
    std::filesystem::create_symlink(Disk / "zorvic.db", Usb / "out.mov");
    std::filesystem::create_symlink("zoom.mov", Usb / "same.mov");
    const auto entries = Store->ListDirectory("E", "");
    std::vector<std::string> names;
    names.reserve(entries.size());
    for (const auto& entry : entries)
        names.push_back(entry.filename());
    EXPECT_THAT(names, ElementsAre("Archive", "media", "Alpha.MP4", "beta.wav", "same.mov", "zoom.mov"));
    EXPECT_TRUE(entries[0].directory());
    EXPECT_FALSE(entries[2].directory());
    EXPECT_EQ(entries[2].size(), 5);
    EXPECT_EQ(entries[2].full_path(), "E:\\Alpha.MP4");
    EXPECT_EQ(Store->ListDirectory("e", "\\media\\")[0].full_path(), "E:\\media\\inner");
    EXPECT_EQ(Store->ListDirectory("C", "").size(), 1) << "the store's own files are nobody's business";

    const auto drives = Store->Drives();
    ASSERT_EQ(drives.size(), 2);
    EXPECT_EQ(drives[0].mountpoint(), "C");
    EXPECT_FALSE(drives[0].external());
    EXPECT_EQ(drives[1].mountpoint(), "E");
    EXPECT_TRUE(drives[1].external());
    EXPECT_GE(drives[0].total(), drives[0].used() + drives[0].free());
    EXPECT_GT(drives[0].free(), 0);
}

TEST_F(AssetStoreTest, RefusesToListWhatIsNotADirectoryOfTheDrive) {
    Open();
    WriteFile(Usb / "clip.mov", "1");
    std::filesystem::create_symlink("/etc", Usb / "etc");
    const auto fault = [this](const std::string& drive, const std::string& path) {
        return FaultOf([&] { Store->ListDirectory(drive, path); });
    };
    for (const char* path : {"..\\", "\\media\\..\\..", "/etc", "a\nb", "clip.mov"})
        EXPECT_EQ(fault("E", path), FaultKind::Misused) << path;
    EXPECT_EQ(fault("E", "etc"), FaultKind::Refused);
    EXPECT_EQ(fault("E", "absent"), FaultKind::NotFound);
    EXPECT_EQ(fault("", ""), FaultKind::NotFound);
    EXPECT_EQ(fault("Q", ""), FaultKind::NotFound);
}

TEST(DriveReader, AnswersLaterWhatWasSlow) {
    std::promise<void> gate;
    std::atomic<int> listings = 0;
    DriveReader reader({"E", "/"}, [&, open = gate.get_future().share()](const DrivePlace&) {
        ++listings;
        open.wait();
        return std::vector<zorvic::v1::DirectoryEntry>(3);
    });
    const auto size = [&]() -> std::size_t {
        try {
            return reader.List({"media"}).size();
        } catch (const Fault& fault) {
            EXPECT_EQ(fault.Kind, FaultKind::Slow);
            return 0;
        }
    };
    EXPECT_EQ(size(), 0);
    EXPECT_EQ(size(), 0);
    EXPECT_THROW(reader.FindFile({"etc", "hosts"}), Fault) << "the drive hangs for this too";
    EXPECT_EQ(reader.Space().total(), 0);
    gate.set_value();
    EXPECT_TRUE(WaitUntil([&] { return size() == 3; }));
    EXPECT_EQ(listings, 1) << "one question, asked again until it was answered";
    EXPECT_EQ(size(), 3);
    EXPECT_EQ(listings, 2) << "an answer is given once";
}

TEST(DriveReader, EndsThoughItsDriveHangs) {
    const auto gate = std::make_shared<std::promise<void>>();
    {
        DriveReader reader({"E", "/"}, [gate, open = gate->get_future().share()](const DrivePlace&) {
            open.wait();
            return std::vector<zorvic::v1::DirectoryEntry>();
        });
        EXPECT_THROW(reader.List({}), Fault);
    }
    gate->set_value();
}

TEST(AssetStoreOptions, RefuseLettersThatAreNoneOrGivenTwice) {
    const MediaDirectory disk;
    const HandClock clock;
    Database rows(disk / "zorvic.db");
    for (const char* letter : {"C", "", "e", "EE", "1"}) {
        const AssetStore::Options options{disk.Path, {{letter, disk.Path}}, false};
        EXPECT_THROW(AssetStore(options, rows, clock), Fault) << letter;
    }
}

}  // namespace
}  // namespace ZorvicUnit
