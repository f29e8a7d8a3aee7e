#include "fault.h"
#include "media/checksum.h"
#include "media/envelope.h"
#include "media/probe.h"
#include "unit/media_samples.h"

#include <gmock/gmock.h>

#include <optional>
#include <random>

namespace ZorvicUnit {
namespace {

using std::chrono::seconds;
using zorvic::v1::AssetMetadata;

const std::string Picture = "-f lavfi -i testsrc=size=320x180:rate=25:duration=1 ";
const std::string Tone = "-f lavfi -i sine=frequency=1000:sample_rate=48000:duration=1 ";

std::optional<FaultKind> FaultOf(const std::filesystem::path& file) {
    try {
        Probe(file, ReadLimit::Within(seconds(10)));
        return std::nullopt;
    } catch (const Fault& fault) {
        return fault.Kind;
    }
}

struct Format {
    std::string File;
    std::string Arguments;
    std::string Video, Audio;
    std::uint32_t Channels = 1;
};

class ProbeOf : public testing::TestWithParam<Format> {};

TEST_P(ProbeOf, NamesWhatTheEncoderMade) {
    const Format& format = GetParam();
    const MediaDirectory directory;
    if (!Encode(format.Arguments, directory / format.File)) GTEST_SKIP() << "no encoder";
    const AssetMetadata metadata = Probe(directory / format.File, ReadLimit::Within(seconds(10)));

    EXPECT_EQ(metadata.video_format(), format.Video);
    EXPECT_EQ(metadata.audio_format(), format.Audio);
    EXPECT_EQ(metadata.total_size(), std::filesystem::file_size(directory / format.File));
    EXPECT_NEAR(metadata.duration_ms(), 1000, 80);
    EXPECT_EQ(metadata.width(), format.Video.empty() ? 0 : 320);
    EXPECT_EQ(metadata.height(), format.Video.empty() ? 0 : 180);
    EXPECT_EQ(metadata.fps(), format.Video.empty() ? 0 : 25);
    EXPECT_EQ(metadata.channels(), format.Audio.empty() ? 0 : format.Channels);
    EXPECT_EQ(metadata.sample_rate(), format.Audio.empty() ? 0 : 48000);
    EXPECT_GT(metadata.video_bitrate() + metadata.audio_bitrate(), 0);
    EXPECT_FALSE(metadata.container_format().empty());
}

INSTANTIATE_TEST_SUITE_P(
    Formats, ProbeOf,
    testing::Values(Format{"h264.mp4", Picture + Tone + "-c:v libx264 -preset ultrafast -c:a aac", "h264", "aac"},
                    Format{"hevc.mov", Picture + "-c:v libx265 -preset ultrafast -x265-params log-level=none", "hevc",
                           ""},
                    Format{"prores.mov", Picture + Tone + "-c:v prores_ks -c:a pcm_s24le", "prores", "pcm_s24le"},
                    Format{"mpeg2.mxf", Picture + Tone + "-c:v mpeg2video -c:a pcm_s16le", "mpeg2video", "pcm_s16le"},
                    Format{"mpeg2.ts", Picture + Tone + "-c:v mpeg2video -c:a mp2", "mpeg2video", "mp2"},
                    Format{"vp9.webm", Picture + "-c:v libvpx-vp9 -deadline realtime -cpu-used 8", "vp9", ""},
                    Format{"av1.mkv", Picture + "-c:v libsvtav1 -preset 12", "av1", ""},
                    Format{"raw.h264", Picture + "-c:v libx264 -preset ultrafast", "h264", ""},
                    Format{"surround.mkv", Tone + "-ac 6 -c:a flac", "", "flac", 6},
                    Format{"tone.wav", Tone, "", "pcm_s16le"}, Format{"tone.flac", Tone, "", "flac"},
                    Format{"tone.mp3", Tone + "-c:a libmp3lame", "", "mp3"},
                    Format{"tone.aac", Tone + "-ac 2 -c:a aac", "", "aac", 2},
                    Format{"Bühne ☂ 舞台.mp4", Picture + "-c:v libx264 -preset ultrafast", "h264", ""}),
    [](const auto& instance) {
        std::string name = instance.param.File.starts_with("B") ? "unicode" : instance.param.File;
        std::replace(name.begin(), name.end(), '.', '_');
        return name;
    });

TEST(Probe, StillsLastTenSecondsAndHaveNoRate) {
    const MediaDirectory directory;
    for (const char* name : {"still.png", "still.jpg", "still.bmp", "still.gif"}) {
        ASSERT_TRUE(Encode(Picture + "-frames:v 1", directory / name));
        const AssetMetadata metadata = Probe(directory / name, ReadLimit::Within(seconds(10)));
        EXPECT_EQ(metadata.duration_ms(), 10000) << name;
        EXPECT_EQ(metadata.fps(), 0) << name;
        EXPECT_EQ(metadata.width(), 320) << name;
    }
    ASSERT_TRUE(Encode(Picture, directory / "moving.gif"));
    EXPECT_NEAR(Probe(directory / "moving.gif", ReadLimit::Within(seconds(10))).duration_ms(), 1000, 50);
}

TEST(Probe, ShowsTheSizeAsDisplayedWhenThePictureIsTurned) {
    const MediaDirectory directory;
    ASSERT_TRUE(Encode(Picture + "-c:v mpeg4", directory / "lying.mp4"));
    ASSERT_TRUE(Encode("-i '" + (directory / "lying.mp4").string() + "' -c copy -metadata:s:v rotate=90",
                       directory / "turned.mp4"));
    const AssetMetadata metadata = Probe(directory / "turned.mp4", ReadLimit::Within(seconds(10)));
    EXPECT_EQ(metadata.width(), 180);
    EXPECT_EQ(metadata.height(), 320);
}

TEST(Probe, RoundsTheFrameRateAndAveragesAVariableOne) {
    const MediaDirectory directory;
    ASSERT_TRUE(Encode("-f lavfi -i testsrc=size=64x64:rate=30000/1001:duration=1 -c:v mpeg4", directory / "drop.mp4"));
    EXPECT_EQ(Probe(directory / "drop.mp4", ReadLimit::Within(seconds(10))).fps(), 30);
    // 25 pictures in the first second, 5 in each of the four that follow: 45 in 5 s.
    ASSERT_TRUE(
        Encode("-f lavfi -i testsrc=size=64x64:rate=25:duration=5 -vf \"select='lt(t,1)+not(mod(n,5))'\" "
               "-vsync vfr -c:v mpeg4",
               directory / "variable.mp4"));
    EXPECT_EQ(Probe(directory / "variable.mp4", ReadLimit::Within(seconds(10))).fps(), 9);
}

TEST(Probe, TakesTheCoverOfAnAudioFileForNoPicture) {
    const MediaDirectory directory;
    ASSERT_TRUE(Encode(Picture + "-frames:v 1", directory / "cover.png"));
    ASSERT_TRUE(Encode(Tone + "-i '" + (directory / "cover.png").string() +
                           "' -map 0 -map 1 -c:a libmp3lame -c:v copy -disposition:v attached_pic",
                       directory / "song.mp3"));
    const AssetMetadata metadata = Probe(directory / "song.mp3", ReadLimit::Within(seconds(10)));
    EXPECT_EQ(metadata.video_format(), "");
    EXPECT_EQ(metadata.width(), 0);
    EXPECT_EQ(metadata.audio_format(), "mp3");
    EXPECT_NEAR(metadata.duration_ms(), 1000, 80);
}

TEST(Probe, RefusesWhatIsNotMedia) {
    const MediaDirectory directory;
    WriteFile(directory / "text.mp4", "Notes for the stage manager.\n");
    WriteFile(directory / "report.txt", std::string(5000, 'x') + "\n");
    WriteFile(directory / "empty.mov", "");
    ASSERT_TRUE(Encode(Picture + "-c:v mpeg4", directory / "whole.mp4"));
    WriteFile(directory / "cut.mp4", ReadFile(directory / "whole.mp4").substr(0, 2000));
    WriteFile(directory / "list.m3u8", "#EXTM3U\n#EXT-X-TARGETDURATION:1\n#EXTINF:1,\nwhole.mp4\n#EXT-X-ENDLIST\n");
    WriteFile(directory / "list.mp4", "ffconcat version 1.0\nfile " + (directory / "whole.mp4").string() + "\n");
    for (const char* name : {"text.mp4", "report.txt", "empty.mov", "cut.mp4", "list.m3u8", "list.mp4"})
        EXPECT_EQ(FaultOf(directory / name), FaultKind::Refused) << name;
    EXPECT_EQ(FaultOf(directory.Path), FaultKind::Refused);
    EXPECT_EQ(FaultOf(directory / "absent.mp4"), FaultKind::NotFound);
}

TEST(Probe, SurvivesGarbageAndDamagedFiles) {
    const MediaDirectory directory;
    ASSERT_TRUE(Encode(Picture + Tone + "-c:v mpeg4 -c:a aac", directory / "whole.mp4"));
    const std::string whole = ReadFile(directory / "whole.mp4");
    const auto seed = std::random_device{}();
    SCOPED_TRACE("seed " + std::to_string(seed));
    std::minstd_rand random(seed);
    int refused = 0;
    for (int i = 0; i < 200; ++i) {
        std::string bytes(random() % 20000, '\0');
        for (char& byte : bytes)
            byte = static_cast<char>(random());
        WriteFile(directory / "noise.mov", bytes);
        if (FaultOf(directory / "noise.mov")) ++refused;
        std::string damaged = whole;
        for (int hit = 0; hit < 40; ++hit)
            damaged[random() % damaged.size()] = static_cast<char>(random());
        WriteFile(directory / "damaged.mp4", damaged);
        if (!FaultOf(directory / "damaged.mp4"))
            ReadEnvelope(directory / "damaged.mp4", ReadLimit::Within(seconds(10)));
    }
    EXPECT_GE(refused, 195) << "noise passes for media";
}

TEST(Probe, GivesUpAtItsLimit) {
    const MediaDirectory directory;
    WriteFile(directory / "tone.wav", ToneFile());
    const std::atomic<bool> stop = true;
    ReadLimit limit;
    limit.Stop = &stop;
    EXPECT_THROW(Probe(directory / "tone.wav", limit), Fault);
    EXPECT_THROW(ReadEnvelope(directory / "tone.wav", limit), Fault);
}

TEST(MeterLevel, CountsDecibelsAboveMinusSixty) {
    EXPECT_EQ(MeterLevel(0), 0);
    EXPECT_EQ(MeterLevel(0.001F), 0);
    EXPECT_EQ(MeterLevel(0.0316228F), 50);
    EXPECT_EQ(MeterLevel(0.5F), 90);
    EXPECT_EQ(MeterLevel(1), 100);
    EXPECT_EQ(MeterLevel(3), 100);
}

TEST(ReadEnvelope, FollowsTheSoundOfEachChannel) {
    const MediaDirectory directory;
    // Left: silent, from 0.5 s on at half of full scale; right: a tenth throughout.
    ASSERT_TRUE(
        Encode("-f lavfi -i \"aevalsrc='if(gte(t,0.5),0.5,0)*sin(2*PI*1000*t)|0.1*sin(2*PI*1000*t):s=48000:d=1'\"",
               directory / "stereo.wav"));
    const auto envelope = ReadEnvelope(directory / "stereo.wav", {});
    ASSERT_TRUE(envelope);
    ASSERT_EQ(envelope->Levels.size(), 20);
    for (std::size_t step = 0; step < 20; ++step) {
        EXPECT_EQ(envelope->Levels[step][0], step < 10 ? 0 : 90) << step;
        EXPECT_EQ(envelope->Levels[step][1], 67) << step;
    }
}

TEST(ReadEnvelope, PutsMonoOnBothSidesAndTakesTheFirstTwoOfMore) {
    const MediaDirectory directory;
    WriteFile(directory / "mono.wav", ToneFile());
    const auto mono = ReadEnvelope(directory / "mono.wav", {});
    ASSERT_TRUE(mono);
    EXPECT_EQ(mono->Levels.at(3), (std::array<std::uint8_t, 2>{90, 90}));
    ASSERT_TRUE(Encode("-f lavfi -i \"aevalsrc='0.5*sin(2000*t)|0|1*sin(2000*t)|0|0|0:s=48000:d=1:c=5.1'\" -c:a flac",
                       directory / "surround.flac"));
    const auto surround = ReadEnvelope(directory / "surround.flac", {});
    ASSERT_TRUE(surround);
    EXPECT_EQ(surround->Levels.at(3), (std::array<std::uint8_t, 2>{90, 0}));
}

TEST(ReadEnvelope, KeepsTheDelayOfSoundThatStartsAfterThePicture) {
    const MediaDirectory directory;
    ASSERT_TRUE(
        Encode("-f lavfi -i testsrc=size=64x64:rate=25:duration=2 -itsoffset 0.5 " + Tone + "-c:v mpeg4 -c:a pcm_s16le",
               directory / "late.mov"));
    const auto envelope = ReadEnvelope(directory / "late.mov", {});
    ASSERT_TRUE(envelope);
    ASSERT_EQ(envelope->Levels.size(), 30);
    EXPECT_EQ(envelope->Levels[8][0], 0);
    EXPECT_GT(envelope->Levels[12][0], 0);
}

TEST(ReadEnvelope, GivesNothingWithoutSound) {
    const MediaDirectory directory;
    ASSERT_TRUE(Encode(Picture + "-c:v mpeg4", directory / "mute.mp4"));
    EXPECT_FALSE(ReadEnvelope(directory / "mute.mp4", {}));
}

TEST(Checksum, IsTheSameHoweverTheBytesArrive) {
    Checksum pieces, whole, other;
    const std::string bytes = ToneFile();
    for (std::size_t at = 0; at < bytes.size(); at += 777)
        pieces.Add(std::string_view(bytes).substr(at, 777));
    whole.Add(bytes);
    other.Add(ToneFile(1));
    EXPECT_EQ(pieces.Hex(), whole.Hex());
    EXPECT_NE(whole.Hex(), other.Hex());
    EXPECT_EQ(Checksum().Hex(), "99aa06d3014798d86001c324468d497f");  // published for no input
}

}  // namespace
}  // namespace ZorvicUnit
