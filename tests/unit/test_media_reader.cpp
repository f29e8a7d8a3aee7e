#include "assets/media_reader.h"
#include "unit/asset_fixture.h"

#include <future>
#include <random>

namespace ZorvicUnit {
namespace {

using std::chrono::milliseconds;
using namespace Zorvic;  // NOLINT(google-build-using-namespace): the states' names are long enough

class MediaReaderTest : public AssetFixture {
protected:
    /// A tone that tells the strange reader what to do.
    std::filesystem::path Tone(const std::string& word) const {
        WriteFile(Asset(word + ".wav"), ToneFile() + '.' + word);
        return Asset(word + ".wav");
    }
    const std::vector<std::string> Fatal = {"crash", "gone"};
};

TEST_F(MediaReaderTest, AFileThatEndsItsReaderIsInErrorAndNotTriedAgainBeforeItChanges) {
    Reader = ZORVIC_STRANGE_READER;
    Open();
    WriteFile(Asset("text.mp4"), "text");
    for (const std::string& word : Fatal)
        Tone(word);
    Tone("mute");
    Settle();
    for (const std::string& word : Fatal)
        EXPECT_TRUE(WaitForStatus(Path(word + ".wav"), ZORVIC_ASSETSTATE_ERROR)) << word;
    ASSERT_TRUE(WaitForStatus(Path("mute.wav"), ZORVIC_ASSETSTATE_READY)) << "only its levels cannot be read";
    ASSERT_TRUE(Bring("clip.wav", ToneFile() + "longer than the others"));
    ASSERT_TRUE(WaitForLevels(Clip)) << "after those of shorter files";
    EXPECT_EQ(FaultOf([&] { Store->ReadMetadata(Path("crash.wav")); }), FaultKind::Refused);

    Reader = MediaProgram();  // would read them all
    Open();
    for (const std::string& word : Fatal)
        EXPECT_EQ(StatusOf(Path(word + ".wav")), ZORVIC_ASSETSTATE_ERROR) << word;
    EXPECT_EQ(StatusOf(Path("text.mp4")), ZORVIC_ASSETSTATE_INVALID) << "known to be none";
    ASSERT_TRUE(Bring("crash.wav", ToneFile() + "longer than any of the others"));
    ASSERT_TRUE(WaitForLevels(Path("crash.wav")));
    EXPECT_EQ(Store->Levels(Path("mute.wav")), nullptr);
}

TEST_F(MediaReaderTest, GivesUpAHangAtTheLimitAndGoesOnWithTheNext) {
    MediaReader reader(ZORVIC_STRANGE_READER, Manners::Normal);
    const auto read = [&](const char* word, ReadLimit limit = {}) {
        return FaultOf([&] { EXPECT_EQ(reader.Probe(Tone(word), limit).duration_ms(), 1000); });
    };
    std::atomic<bool> stop = false;
    EXPECT_EQ(read("good"), std::nullopt);
    EXPECT_EQ(read("hang", ReadLimit::Within(milliseconds(300))), FaultKind::Slow);
    EXPECT_EQ(read("last"), std::nullopt);
    EXPECT_EQ(read("good"), std::nullopt) << "by a new process, the old one having ended in between";
    auto hanging = std::async(std::launch::async, [&] { return read("hang", {.Stop = &stop}); });
    EXPECT_TRUE(WaitUntil([&] { return read("good", ReadLimit::Within(milliseconds(100))) == FaultKind::Slow; }))
        << "its turn does not come";
    stop = true;
    EXPECT_EQ(hanging.get(), FaultKind::Slow);
    MediaReader missing(Disk / "absent", Manners::Normal);
    EXPECT_EQ(FaultOf([&] { missing.Probe(Tone("good"), {}); }), FaultKind::Internal);
}

TEST_F(MediaReaderTest, TheReaderReachesNothingButItsFile) {
    MediaReader reader(ZORVIC_STRANGE_READER, Manners::Normal);
    EXPECT_THAT([&] { reader.Probe(Tone("out"), {}); }, testing::ThrowsMessage<Fault>("out:"));
}

TEST_F(MediaReaderTest, TwoHundredDamagedFilesEndInAStateAndTheUnitGoesOn) {
    ASSERT_TRUE(
        Encode("-f lavfi -i testsrc=size=320x180:rate=25:duration=1 -f lavfi -i sine=duration=1 -c:v mpeg4 "
               "-c:a aac",
               Usb / "whole.mp4"));
    const std::string whole = ReadFile(Usb / "whole.mp4");
    const auto seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::minstd_rand random(seed);
    for (int i = 0; i < 200; ++i) {
        std::string bytes = whole;
        for (int hit = 0; hit < 40; ++hit)
            bytes[random() % bytes.size()] = static_cast<char>(random());
        if (i % 4 == 1) bytes.resize(random() % bytes.size());
        WriteFile(Asset("film" + std::to_string(i) + ".mp4"), bytes);
    }
    ASSERT_TRUE(Bring("clip.wav"));
    ASSERT_TRUE(WaitUntil([&] { return Count(ZORVIC_ASSETSTATE_PROCESSING) == 0; }));
    EXPECT_EQ(Count(ZORVIC_ASSETSTATE_ERROR), 0) << "our own part of reading stumbles over none";
    ASSERT_TRUE(WaitForLevels(Clip));
}

}  // namespace
}  // namespace ZorvicUnit
