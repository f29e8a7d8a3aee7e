// The unit's probe, in the process that reads media files and without that, beside bare libavformat on the same clips:
// each opens, identifies and closes each clip in turn, 100 times. Prints the medians and the ratio of the first and the
// last.

#include <cstdio>
#include <string>
#include <utility>
#include <vector>

#include "assetobserver.h"
#include "assets/media_reader.h"
#include "files/regular_file.h"
#include "media/probe.h"
#include "unit/media_samples.h"

extern "C" {
#include <libavformat/avformat.h>
}

namespace {

constexpr int Rounds = 100;

const std::string Picture = "-f lavfi -i testsrc2=size=1920x1080:rate=25 ";
const std::string Tone = "-f lavfi -i sine=frequency=440:sample_rate=48000 ";
constexpr const char* Length = "-t 10 -shortest ";

const std::vector<std::pair<std::string, std::string>> Clips = {
    {"h264.mp4", Picture + Tone + Length + "-c:v libx264 -preset ultrafast -c:a aac"},
    {"hevc.mov", Picture + Tone + "-t 3 -c:v libx265 -preset ultrafast -x265-params log-level=none -c:a aac"},
    {"prores.mov", Picture + Tone + "-t 3 -c:v prores_ks -c:a pcm_s24le"},
    {"mpeg2.ts", Picture + Tone + Length + "-c:v mpeg2video -c:a mp2"},
    {"mpeg2.mxf", Picture + Tone + Length + "-c:v mpeg2video -c:a pcm_s16le"},
    {"vp9.webm", Picture + "-t 3 -c:v libvpx-vp9 -deadline realtime -cpu-used 8"},
    {"raw.h264", Picture + Length + "-c:v libx264 -preset ultrafast"},
    {"tone.wav", Tone + Length},
    {"tone.mp3", Tone + Length + "-c:a libmp3lame"},
    {"still.png", Picture + "-frames:v 1"},
};

void ProbeBare(const std::string& file) {
    AVFormatContext* format = nullptr;
    if (avformat_open_input(&format, file.c_str(), nullptr, nullptr) < 0) return;
    avformat_find_stream_info(format, nullptr);
    avformat_close_input(&format);
}

template <typename Action>
double Time(const Action& action) {
    const auto begin = std::chrono::steady_clock::now();
    action();
    return MillisecondsSince(begin);
}

}  // namespace

int main() {
    const TemporaryDirectory directory;
    ZorvicUnit::MediaReader reader(ZorvicUnit::MediaProgram(), ZorvicUnit::Manners::Normal);
    double ours = 0;
    double bare = 0;
    for (const auto& [name, arguments] : Clips) {
        const std::string file = (directory / name).string();
        if (!ZorvicUnit::Encode(arguments, file)) {
            std::printf("%-11s no encoder\n", name.c_str());
            continue;
        }
        std::vector<double> unit, here, library;
        for (int round = 0; round < Rounds; ++round) {
            library.push_back(Time([&] { ProbeBare(file); }));
            here.push_back(Time([&] { ZorvicUnit::Probe(ZorvicUnit::OpenRegularFile(file), file, {}); }));
            unit.push_back(Time([&] { reader.Probe(file, {}); }));
        }
        const double unitTime = Percentile(unit, 0.5);
        const double bareTime = Percentile(library, 0.5);
        std::printf("%-11s unit %7.3f ms, in process %7.3f ms, bare %7.3f ms, ratio %.2f\n", name.c_str(), unitTime,
                    Percentile(here, 0.5), bareTime, unitTime / bareTime);
        ours += unitTime;
        bare += bareTime;
    }
    std::printf("all         unit %7.3f ms, bare %7.3f ms, ratio %.2f\n", ours, bare, ours / bare);
}
