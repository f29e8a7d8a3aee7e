#include "files/checksum.h"
#include "media/envelope.h"
#include "media/probe.h"
#include "unit/media_samples.h"
#include "unit/unitfakes.h"

#include <gmock/gmock.h>

#include <map>
#include <optional>
#include <random>
#include <vector>

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
        return Probe(Directory / name, ReadLimit::Within(seconds(10)));
    }
    std::optional<FaultKind> Refusal(const std::string& name) const {
        return FaultOf([&] { Read(name); });
    }
    std::optional<Envelope> Levels(const std::string& name) const {
        return ReadEnvelope(Directory / name, ReadLimit::Within(seconds(10)));
    }
    MediaDirectory Directory;
};

struct Format {
    std::string File;
    std::string Arguments;
    std::string Video, Audio;
    std::uint32_t Channels = 1;
};

class ProbeOf : public ProbeTest, public testing::WithParamInterface<Format> {};

TEST_P(ProbeOf, NamesWhatTheEncoderMade) {
    const Format& format = GetParam();
    if (!Encode(format.Arguments, Directory / format.File)) GTEST_SKIP() << "no encoder";
    const AssetMetadata metadata = Read(format.File);
    const bool seen = !format.Video.empty();
    const bool heard = !format.Audio.empty();

    EXPECT_EQ(metadata.video_format(), format.Video);
    EXPECT_EQ(metadata.audio_format(), format.Audio);
    EXPECT_EQ(metadata.total_size(), std::filesystem::file_size(Directory / format.File));
    EXPECT_NEAR(metadata.duration_ms(), 1000, 80);
    EXPECT_EQ(metadata.width(), seen ? 320 : 0);
    EXPECT_EQ(metadata.height(), seen ? 180 : 0);
    EXPECT_EQ(metadata.fps(), seen ? 25 : 0);
    EXPECT_EQ(metadata.channels(), heard ? format.Channels : 0);
    EXPECT_EQ(metadata.sample_rate(), heard ? 48000 : 0);
    EXPECT_GT(metadata.video_bitrate() + metadata.audio_bitrate(), 0);
    EXPECT_FALSE(metadata.container_format().empty());
}

INSTANTIATE_TEST_SUITE_P(
    Formats, ProbeOf,
    testing::Values(Format{"h264.mp4", Picture + Tone + "-c:v libx264 -preset ultrafast -c:a aac", "h264", "aac"},
                    Format{"prores.mov", Picture + Tone + "-c:v prores_ks -c:a pcm_s24le", "prores", "pcm_s24le"},
                    Format{"mpeg2.mxf", Picture + Tone + "-c:v mpeg2video -c:a pcm_s16le", "mpeg2video", "pcm_s16le"},
                    Format{"mpeg2.ts", Picture + Tone + "-c:v mpeg2video -c:a mp2", "mpeg2video", "mp2"},
                    Format{"av1.mkv", Picture + "-c:v libsvtav1 -preset 12", "av1", ""},
                    Format{"raw.h264", Picture + "-c:v libx264 -preset ultrafast", "h264", ""},
                    Format{"surround.mkv", Tone + "-ac 6 -c:a flac", "", "flac", 6},
                    Format{"tone.wav", Tone, "", "pcm_s16le"}, Format{"tone.mp3", Tone + "-c:a libmp3lame", "", "mp3"},
                    Format{"tone.aac", Tone + "-ac 2 -c:a aac", "", "aac", 2},
                    Format{"Bühne ☂ 舞台.mp4", Picture + "-c:v mpeg4", "mpeg4", ""}),
    [](const auto& instance) {
        std::string name = instance.param.File.starts_with("B") ? "unicode" : instance.param.File;
        std::replace(name.begin(), name.end(), '.', '_');
        return name;
    });

TEST_F(ProbeTest, TellsStillsTurnedPicturesAndOddRates) {
    struct Case {
        const char* File;
        std::string Arguments;
        std::uint32_t Width, Height, FPS;
        std::int32_t DurationMS;
    };
    const std::string small = "-f lavfi -i testsrc=size=64x48:";
    const std::vector<Case> cases = {
        {"still.png", Picture + "-frames:v 1", 320, 180, 0, 10'000},
        {"still.jpg", Picture + "-frames:v 1", 320, 180, 0, 10'000},
        {"still.bmp", Picture + "-frames:v 1", 320, 180, 0, 10'000},
        {"still.gif", Picture + "-frames:v 1", 320, 180, 0, 10'000},
        {"moving.gif", Picture, 320, 180, 25, 1'000},
        {"lying.mp4", Picture + "-c:v mpeg4", 320, 180, 25, 1'000},
        {"turned.mp4", "-i '" + (Directory / "lying.mp4").string() + "' -c copy -metadata:s:v rotate=90", 180, 320, 25,
         1'000},
        {"drop.mp4", small + "rate=30000/1001:duration=1 -c:v mpeg4", 64, 48, 30, 1'001},
        // 25 pictures in the first second, 5 in each of the four that follow: 45 in 5 s.
        {"variable.mp4", small + "rate=25:duration=5 -vf \"select='lt(t,1)+not(mod(n,5))'\" -vsync vfr -c:v mpeg4", 64,
         48, 9, 4'840},
        // The cover of a song is no picture.
        {"song.mp3",
         Tone + "-i '" + (Directory / "still.png").string() +
             "' -map 0 -map 1 -c:a libmp3lame -c:v copy -disposition:v attached_pic",
         0, 0, 0, 1'000},
    };
    for (const Case& expected : cases) {
        SCOPED_TRACE(expected.File);
        ASSERT_TRUE(Encode(expected.Arguments, Directory / expected.File));
        const AssetMetadata metadata = Read(expected.File);
        EXPECT_EQ(metadata.width(), expected.Width);
        EXPECT_EQ(metadata.height(), expected.Height);
        EXPECT_EQ(metadata.fps(), expected.FPS);
        EXPECT_NEAR(metadata.duration_ms(), expected.DurationMS, expected.FPS == 0 && expected.Width > 0 ? 0 : 80);
    }
}

TEST_F(ProbeTest, RefusesWhatIsNotMedia) {
    ASSERT_TRUE(Encode(Picture + "-c:v mpeg4", Directory / "whole.mp4"));
    const std::map<std::string, std::string> files = {
        {"text.mp4", "Notes for the stage manager.\n"},
        {"report.txt", std::string(5000, 'x') + "\n"},
        {"empty.mov", ""},
        {"cut.mp4", ReadFile(Directory / "whole.mp4").substr(0, 2000)},
        {"list.m3u8", "#EXTM3U\n#EXT-X-TARGETDURATION:1\n#EXTINF:1,\nwhole.mp4\n#EXT-X-ENDLIST\n"},
        {"list.mp4", "ffconcat version 1.0\nfile " + (Directory / "whole.mp4").string() + "\n"}};
    for (const auto& [name, bytes] : files) {
        WriteFile(Directory / name, bytes);
        EXPECT_EQ(Refusal(name), FaultKind::Refused) << name;
    }
    EXPECT_EQ(Refusal("."), FaultKind::Refused);
    EXPECT_EQ(Refusal("absent.mp4"), FaultKind::NotFound);
}

TEST_F(ProbeTest, SurvivesGarbageAndDamagedFiles) {
    ASSERT_TRUE(Encode(Picture + Tone + "-c:v mpeg4 -c:a aac", Directory / "whole.mp4"));
    const std::string whole = ReadFile(Directory / "whole.mp4");
    const auto seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::minstd_rand random(seed);
    int refused = 0;
    for (int i = 0; i < 200; ++i) {
        std::string bytes(random() % 20000, '\0');
        for (char& byte : bytes)
            byte = static_cast<char>(random());
        WriteFile(Directory / "noise.mov", bytes);
        if (Refusal("noise.mov")) ++refused;
        std::string damaged = whole;
        for (int hit = 0; hit < 40; ++hit)
            damaged[random() % damaged.size()] = static_cast<char>(random());
        WriteFile(Directory / "damaged.mp4", damaged);
        if (!Refusal("damaged.mp4")) Levels("damaged.mp4");
    }
    EXPECT_GE(refused, 195) << "noise passes for media";
}

TEST_F(ProbeTest, GivesUpAtItsLimit) {
    WriteFile(Directory / "tone.wav", ToneFile());
    const std::atomic<bool> stop = true;
    ReadLimit limit;
    limit.Stop = &stop;
    EXPECT_THROW(Probe(Directory / "tone.wav", limit), Fault);
    EXPECT_THROW(ReadEnvelope(Directory / "tone.wav", limit), Fault);
}

TEST(MeterLevel, CountsDecibelsAboveMinusSixty) {
    const std::map<float, int> levels = {{0, 0}, {0.001F, 0}, {0.0316228F, 50}, {0.5F, 90}, {1, 100}, {3, 100}};
    for (const auto& [peak, level] : levels)
        EXPECT_EQ(MeterLevel(peak), level) << peak;
}

using EnvelopeTest = ProbeTest;

TEST_F(EnvelopeTest, FollowsTheSoundOfEachChannel) {
    // Left: silent, from 0.5 s on at half of full scale; right: a tenth throughout.
    ASSERT_TRUE(
        Encode("-f lavfi -i \"aevalsrc='if(gte(t,0.5),0.5,0)*sin(2*PI*1000*t)|0.1*sin(2*PI*1000*t):s=48000:d=1'\"",
               Directory / "stereo.wav"));
    const auto envelope = Levels("stereo.wav");
    ASSERT_TRUE(envelope);
    ASSERT_EQ(envelope->Levels.size(), 20);
    for (std::size_t step = 0; step < 20; ++step) {
        EXPECT_EQ(envelope->Levels[step][0], step < 10 ? 0 : 90) << step;
        EXPECT_EQ(envelope->Levels[step][1], 67) << step;
    }
}

TEST_F(EnvelopeTest, PutsMonoOnBothSidesTakesTheFirstTwoOfMoreAndNothingWithoutSound) {
    WriteFile(Directory / "mono.wav", ToneFile());
    EXPECT_EQ(Levels("mono.wav").value().Levels.at(3), (std::array<std::uint8_t, 2>{90, 90}));
    ASSERT_TRUE(Encode("-f lavfi -i \"aevalsrc='0.5*sin(2000*t)|0|1*sin(2000*t)|0|0|0:s=48000:d=1:c=5.1'\" -c:a flac",
                       Directory / "surround.flac"));
    EXPECT_EQ(Levels("surround.flac").value().Levels.at(3), (std::array<std::uint8_t, 2>{90, 0}));
    ASSERT_TRUE(Encode(Picture + "-c:v mpeg4", Directory / "mute.mp4"));
    EXPECT_FALSE(Levels("mute.mp4"));
}

TEST_F(EnvelopeTest, KeepsTheDelayOfSoundThatStartsAfterThePicture) {
    ASSERT_TRUE(
        Encode("-f lavfi -i testsrc=size=64x64:rate=25:duration=2 -itsoffset 0.5 " + Tone + "-c:v mpeg4 -c:a pcm_s16le",
               Directory / "late.mov"));
    const auto envelope = Levels("late.mov");
    ASSERT_TRUE(envelope);
    ASSERT_EQ(envelope->Levels.size(), 30);
    EXPECT_EQ(envelope->Levels[8][0], 0);
    EXPECT_GT(envelope->Levels[12][0], 0);
    ASSERT_TRUE(Encode(Tone + "-c:a mp2", Directory / "tone.ts"));  // whose clock does not start at 0
    EXPECT_NEAR(static_cast<double>(Levels("tone.ts").value().Levels.size()), 20, 2);
}

TEST(Checksum, IsTheSameHoweverTheBytesArrive) {
    Checksum pieces, whole;
    const std::string bytes = ToneFile();
    for (std::size_t at = 0; at < bytes.size(); at += 777)
        pieces.Add(std::string_view(bytes).substr(at, 777));
    whole.Add(bytes);
    EXPECT_EQ(pieces.Hex(), whole.Hex());
    EXPECT_EQ(Checksum().Hex(), "99aa06d3014798d86001c324468d497f");  // published for no input
}

}  // namespace
}  // namespace ZorvicUnit
