#include "files/checksum.h"
#include "files/regular_file.h"
#include "media/envelope.h"
#include "media/probe.h"
#include "unit/media_samples.h"
#include "unit/unitfakes.h"

namespace ZorvicUnit {
namespace {

using std::chrono::seconds;
using zorvic::v1::AssetMetadata;

const std::string Picture = "-f lavfi -i testsrc=size=320x180:rate=25:duration=1 ";
const std::string Tone = "-f lavfi -i sine=frequency=1000:sample_rate=48000:duration=1 ";

/// A directory for the files of a test, and what is read of them.
class ProbeTest : public testing::Test {
protected:
    AssetMetadata Read(const std::string& name) const {
        return Probe(OpenRegularFile(Directory / name), name, ReadLimit::Within(seconds(10)));
    }
    std::optional<FaultKind> Refusal(const std::string& name) const {
        return FaultOf([&] { Read(name); });
    }
    std::optional<Envelope> Levels(const std::string& name) const {
        return ReadEnvelope(OpenRegularFile(Directory / name), name, ReadLimit::Within(seconds(10)));
    }
    TemporaryDirectory Directory;
};

// The names of formats and codecs are the decoder library's; what is read out of its answers is ours.
TEST_F(ProbeTest, TellsStreamsStillsTurnedPicturesAndOddRates) {
    struct Case {
        const char* File;
        std::string Arguments;
        std::uint32_t Width, Height, FPS;
        std::int32_t DurationMS;
        const char* Audio = "";
        std::uint32_t Channels = 0;
    };
    const std::string mpeg4 = "-c:v mpeg4 ";
    const std::string small = "-f lavfi -i testsrc=size=64x48:";
    const auto quoted = [this](const char* name) { return "-i '" + (Directory / name).string() + "' "; };
    const std::vector<Case> cases = {
        {"long.mov", Picture + "-f lavfi -i sine=sample_rate=48000:duration=1.1 -c:v mpeg4 -c:a pcm_s16le", 320, 180,
         25, 1'100, "pcm_s16le", 1},
        // The last packet of sound reaches beyond the picture.
        {"both.mp4", Picture + Tone + mpeg4 + "-ac 2 -c:a aac", 320, 180, 25, 1'000, "aac", 2},
        {"raw.m4v", Picture + mpeg4, 320, 180, 25, 1'000},  // tells no length
        {"tone.wav", Tone, 0, 0, 0, 1'000, "pcm_s16le", 1},
        {"still.png", Picture + "-frames:v 1", 320, 180, 0, 10'000},
        {"moving.gif", Picture, 320, 180, 25, 1'000},
        {"lying.mp4", Picture + mpeg4, 320, 180, 25, 1'000},
        {"turned.mp4", quoted("lying.mp4") + "-c copy -metadata:s:v rotate=90", 180, 320, 25, 1'000},
        {"drop.mp4", small + "rate=30000/1001:duration=1 " + mpeg4, 64, 48, 30, 1'001},
        // 25 pictures in the first second, 5 in each of the four that follow: 45 in 5 s.
        {"variable.mp4", small + "rate=25:duration=5 -vf \"select='lt(t,1)+not(mod(n,5))'\" -vsync vfr " + mpeg4, 64,
         48, 9, 4'840},
        // The cover of a song is no picture.
        {"song.mp3", Tone + quoted("still.png") + "-map 0 -map 1 -c:a libmp3lame -c:v copy -disposition:v attached_pic",
         0, 0, 0, 1'000, "mp3", 1},
    };
    for (const Case& expected : cases) {
        SCOPED_TRACE(expected.File);
        ASSERT_TRUE(Encode(expected.Arguments, Directory / expected.File));
        const AssetMetadata metadata = Read(expected.File);
        const bool still = expected.FPS == 0 && expected.Width > 0;
        EXPECT_EQ(metadata.width(), expected.Width);
        EXPECT_EQ(metadata.height(), expected.Height);
        EXPECT_EQ(metadata.fps(), expected.FPS);
        const bool exact = still || expected.File == std::string("both.mp4");
        EXPECT_NEAR(metadata.duration_ms(), expected.DurationMS, exact ? 0 : 80);
        EXPECT_EQ(metadata.audio_format(), expected.Audio);
        EXPECT_EQ(metadata.channels(), expected.Channels);
        EXPECT_EQ(metadata.sample_rate(), expected.Channels > 0 ? 48'000 : 0);
        EXPECT_EQ(metadata.video_format().empty(), expected.Width == 0);
        EXPECT_EQ(metadata.video_bitrate() + metadata.audio_bitrate() == 0, still);
    }
}

TEST_F(ProbeTest, RefusesWhatIsNotMedia) {
    ASSERT_TRUE(Encode(Picture + "-c:v mpeg4", Directory / "whole.mp4"));
    const std::map<std::string, std::string> files = {
        {"text.mp4", "Notes for the stage manager.\n"},
        {"empty.mov", ""},
        {"list.m3u8", "#EXTM3U\n#EXT-X-TARGETDURATION:1\n#EXTINF:1,\nwhole.mp4\n#EXT-X-ENDLIST\n"},
        {"session.mp4", "v=0\no=- 0 0 IN IP4 127.0.0.1\ns=x\nc=IN IP4 127.0.0.1\nt=0 0\nm=audio 0 RTP/AVP 0\n"},
        {"list.mp4", "ffconcat version 1.0\nfile " + (Directory / "whole.mp4").string() + "\n"}};
    for (const auto& [name, bytes] : files) {
        WriteFile(Directory / name, bytes);
        EXPECT_EQ(Refusal(name), FaultKind::Refused) << name;
    }
    EXPECT_EQ(Refusal("."), FaultKind::Refused);
    EXPECT_EQ(Refusal("absent.mp4"), FaultKind::NotFound);
}

TEST_F(ProbeTest, AClaimOfMillionsOfSamplesCostsLittle) {
    ASSERT_TRUE(Encode(Picture + "-frames:v 1 -c:v mpeg4", Directory / "one.mp4"));
    std::string film = ReadFile(Directory / "one.mp4");
    // Where the index says how many: after the name of the table and some numbers of four bytes.
    for (const auto& [table, numbers] : {std::pair("stsz", 3), {"stts", 3}, {"stsc", 4}})
        film.replace(film.find(table) + 4 + static_cast<std::size_t>(numbers - 1) * 4, 4, "\x05\x11\x11\x11");
    WriteFile(Directory / "claims.mp4", film);
    rusage before{};
    rusage after{};
    getrusage(RUSAGE_SELF, &before);
    Refusal("claims.mp4");
    getrusage(RUSAGE_SELF, &after);
    EXPECT_LT(after.ru_maxrss - before.ru_maxrss, 300'000) << "KB";
}

TEST_F(ProbeTest, RefusesAPictureTooLargeToBeShownWithItsSize) {
    ASSERT_TRUE(Encode(Picture + "-frames:v 1", Directory / "still.png"));
    std::string still = ReadFile(Directory / "still.png");
    const auto claim = [&](const std::string& side) {
        WriteFile(Directory / "large.png", still.replace(16, 8, side + side));
        return Read("large.png").width();
    };
    EXPECT_EQ(claim(std::string("\0\0\x1e\0", 4)), 7680);
    EXPECT_THAT([&] { claim(std::string("\0\0\x2e\xe0", 4)); },
                testing::ThrowsMessage<Fault>(testing::HasSubstr("12000 by 12000 is too large")));
    EXPECT_THAT([&] { claim(std::string("\0\0\x75\x30", 4)); },
                testing::ThrowsMessage<Fault>(testing::HasSubstr("a picture too large")));
}

TEST_F(ProbeTest, LevelsFollowTheSoundOfTheFirstTwoChannels) {
    // Left: silent, from 0.5 s on at half of full scale; right: a tenth throughout.
    const std::string halves = "if(gte(t,0.5),0.5,0)*sin(2*PI*1000*t)|0.1*sin(2*PI*1000*t)";
    const std::string surround = "0.5*sin(2000*t)|0|1*sin(2000*t)|0|0|0:c=5.1";
    const auto sound = [](const std::string& formula) {
        return "-f lavfi -i \"aevalsrc=" + formula + ":s=48000:d=1\" ";
    };
    const std::string half = Tone + "-af volume=12.0412dB ";
    using Channels = std::array<std::uint8_t, 2>;
    // How many steps there are, and what they show at 0.2 s and at 0.8 s.
    const std::vector<std::tuple<const char*, std::string, std::size_t, Channels, Channels>> cases = {
        {"stereo.wav", sound("'" + halves + "'"), 20, {0, 67}, {90, 67}},
        // Louder than full scale, and below the meter.
        {"loud.wav", sound("3*sin(2000*t)|0.0009*sin(2000*t)") + "-c:a pcm_f32le", 20, {100, 0}, {100, 0}},
        {"mono.wav", half, 20, {90, 90}, {90, 90}},
        {"surround.flac", sound(surround) + "-c:a flac", 20, {90, 0}, {90, 0}},
        // Sound that starts after the picture, whose packets come first.
        {"late.mov", Picture + "-itsoffset 0.5 " + half + "-c:v mpeg4 -c:a pcm_s16le", 30, {0, 0}, {90, 90}},
        {"mute.mp4", Picture + "-c:v mpeg4", 0, {}, {}},
    };
    for (const auto& [file, arguments, steps, early, late] : cases) {
        SCOPED_TRACE(file);
        ASSERT_TRUE(Encode(arguments, Directory / file));
        const auto levels = Levels(file).value_or(Envelope()).Levels;
        ASSERT_EQ(levels.size(), steps);
        if (levels.empty()) continue;
        EXPECT_EQ(levels[4], early);
        EXPECT_EQ(levels[16], late);
    }
}

TEST(Checksum, IsWrittenAsOthersWriteIt) {
    EXPECT_EQ(Checksum().Hex(), "99aa06d3014798d86001c324468d497f");  // published for no input
}

}  // namespace
}  // namespace ZorvicUnit
