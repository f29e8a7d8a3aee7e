// How soon a unit's assets are there: a first start that has to read every file, a later one that knows them, what a
// console's first look at the list costs, and how late a change made on the disk shows. A real unit in a process of its
// own and the library over loopback. Arguments: numbers of assets (1000 and 10000 by default).

#include <csignal>
#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include "assetobserver.h"
#include "support/unitprocess.h"
#include "unit/media_samples.h"

namespace {

using Assets = std::vector<Zorvic::Asset>;

bool IsReady(const Zorvic::Asset& asset) {
    return asset.Status == Zorvic::ZORVIC_ASSETSTATE_READY;
}

/// Short tones that differ in their last bytes; old enough to count as complete.
void MakeFiles(const std::string& directory, int count) {
    std::filesystem::create_directories(directory);
    const std::string tone = ZorvicUnit::ToneFile().substr(0, 4844);
    const auto yesterday = std::filesystem::file_time_type::clock::now() - std::chrono::hours(24);
    for (int i = 0; i < count; ++i) {
        const std::string file = directory + "/clip " + std::to_string(i) + ".wav";
        ZorvicUnit::WriteFile(file, tone + std::to_string(i));
        std::filesystem::last_write_time(file, yesterday);
    }
}

void WaitForAll(AssetObserver& observer, std::size_t count) {
    observer.WaitFor([&](const Assets& assets) {
        return assets.size() == count && std::all_of(assets.begin(), assets.end(), IsReady);
    });
}

/// A console's first scan: the list, then the metadata of each.
void MeasureFirstScan(const std::string& host) {
    const auto begin = std::chrono::steady_clock::now();
    Zorvic::Session session(host, 1);
    const double connected = MillisecondsSince(begin);
    Assets assets;
    session.GetAssets(assets);
    std::size_t known = 0;
    for (const Zorvic::Asset& asset : assets) {
        Zorvic::AssetMetadata metadata;
        if (session.ReadAssetMetadata(asset.FullPath, metadata) == Zorvic::ZORVIC_STATUS_OK && metadata.Duration > 0)
            ++known;
    }
    const double scanned = MillisecondsSince(begin);
    std::printf("  client: connected with the snapshot after %.0f ms, metadata of %zu read after %.0f ms\n", connected,
                known, scanned);
}

/// How long the list takes to show a file that came, changed, went.
void MeasureOutsideChanges(const std::string& host, const std::string& directory) {
    AssetObserver observer(host);
    const std::string file = directory + "/from outside.wav";
    std::vector<double> came, changed, went;
    const auto find = [](const Assets& assets) {
        return std::find_if(assets.begin(), assets.end(),
                            [](const auto& asset) { return asset.FullPath == "C:\\Assets\\from outside.wav"; });
    };
    const auto size = [&](std::int64_t wanted) {
        const auto begin = std::chrono::steady_clock::now();
        observer.WaitFor([&](const Assets& assets) {
            const auto at = find(assets);
            return wanted < 0 ? at == assets.end() : at != assets.end() && at->TotalSize == wanted;
        });
        return MillisecondsSince(begin);
    };
    const std::string tone = ZorvicUnit::ToneFile();
    for (int round = 0; round < 20; ++round) {
        ZorvicUnit::WriteFile(file, tone);
        came.push_back(size(static_cast<std::int64_t>(tone.size())));
        observer.WaitFor([&](const Assets& assets) { return IsReady(*find(assets)); });
        ZorvicUnit::WriteFile(file, tone + "more");
        changed.push_back(size(static_cast<std::int64_t>(tone.size() + 4)));
        std::filesystem::remove(file);
        went.push_back(size(-1));
    }
    const auto worst = [](const std::vector<double>& times) { return Percentile(times, 1); };
    std::printf("  changes from outside, slowest of 20: came %.0f ms, changed %.0f ms, went %.0f ms\n", worst(came),
                worst(changed), worst(went));
}

void Measure(int count) {
    const TemporaryDirectory directory;
    const std::string store = directory.Path() + "/store";
    MakeFiles(store + "/Assets", count);
    std::printf("%d assets\n", count);

    auto begin = std::chrono::steady_clock::now();
    UnitProcess unit(store, {"--announce", "off", "--drive", "E=" + directory.Path()});
    double listening = MillisecondsSince(begin);
    {
        AssetObserver observer(unit.Host());
        WaitForAll(observer, static_cast<std::size_t>(count));
        std::printf("  first start: listening after %.0f ms, all READY after %.0f ms\n", listening,
                    MillisecondsSince(begin));
    }
    unit.Process().Signal(SIGTERM);
    unit.Process().Wait(std::chrono::seconds(10));

    begin = std::chrono::steady_clock::now();
    unit.Start();
    listening = MillisecondsSince(begin);
    AssetObserver observer(unit.Host());
    WaitForAll(observer, static_cast<std::size_t>(count));
    std::printf("  started again: listening after %.0f ms, all READY after %.0f ms\n", listening,
                MillisecondsSince(begin));
    MeasureFirstScan(unit.Host());
    MeasureOutsideChanges(unit.Host(), store + "/Assets");
}

}  // namespace

int main(int argc, char** argv) {
    std::vector<int> counts;
    for (int i = 1; i < argc; ++i)
        counts.push_back(std::stoi(argv[i]));
    if (counts.empty()) counts = {1000, 10000};
    for (const int count : counts)
        Measure(count);
}
