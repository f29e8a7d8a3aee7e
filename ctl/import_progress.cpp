#include "import_progress.h"

#include "failure.h"
#include "printing.h"
#include "unit.h"
#include "words.h"

#include <zorvic/extras.h>

#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdio>
#include <iostream>

namespace ZorvicCtl {
namespace {

using Zorvic::Asset;

constexpr std::chrono::milliseconds RedrawPeriod(250);

std::vector<Asset> Pick(const std::vector<Asset>& assets, const std::vector<std::string>& names) {
    std::vector<Asset> picked;
    for (const auto& name : names) {
        const auto found = std::find_if(assets.begin(), assets.end(),
                                        [&](const Asset& asset) { return asset.FullPath == "C:\\Assets\\" + name; });
        if (found == assets.end()) throw Failure(ExitStatus::Refused, "The import of " + OneLine(name) + " was ended.");
        picked.push_back(*found);
    }
    return picked;
}

/// "[=====     ]  52%  storm.mov"
void Draw(const std::vector<Asset>& assets) {
    constexpr int Width = 30;
    std::int64_t present = 0;
    std::int64_t total = 0;
    std::string name = "reading";
    for (const Asset& asset : assets) {
        present += asset.CurrentSize;
        total += asset.TotalSize;
        if (asset.Status == Zorvic::ZORVIC_ASSETSTATE_INGESTING) name = OneLine(FileName(asset.FullPath));
    }
    const double part = total > 0 ? static_cast<double>(present) / static_cast<double>(total) : 0;
    const int filled = std::clamp(static_cast<int>(part * Width), 0, Width);
    std::array<char, 16> percent{};
    std::snprintf(percent.data(), percent.size(), "] %3d%%  ", std::clamp(static_cast<int>(part * 100), 0, 100));
    std::cerr << "\r[" << std::string(static_cast<std::size_t>(filled), '=')
              << std::string(static_cast<std::size_t>(Width - filled), ' ') << percent.data() << name << "\033[K"
              << std::flush;
}

[[noreturn]] void ThrowReason(Unit& unit, const Asset& asset) {
    Zorvic::AssetMetadata none;
    unit.Check(unit.Link().ReadAssetMetadata(asset.FullPath, none), "import " + OneLine(asset.FullPath));
    throw Failure(ExitStatus::Refused, "The unit could not import " + OneLine(asset.FullPath) + '.');
}

bool IsReady(const Asset& asset) {
    return asset.Status == Zorvic::ZORVIC_ASSETSTATE_READY;
}

}  // namespace

std::vector<Asset> AwaitImports(Unit& unit, const std::vector<std::string>& fileNames) {
    const bool looked = isatty(STDERR_FILENO) != 0;
    std::vector<Asset> assets;
    const auto isOver = [&] {
        assets = Pick(unit.Assets(), fileNames);
        return std::all_of(assets.begin(), assets.end(), IsReady) ||
               std::any_of(assets.begin(), assets.end(),
                           [](const Asset& asset) { return asset.Status == Zorvic::ZORVIC_ASSETSTATE_ERROR; });
    };
    while (!WaitUntil(unit.Link(), isOver, RedrawPeriod)) {
        if (looked) Draw(assets);
    }
    if (looked) std::cerr << "\r\033[K" << std::flush;
    for (const Asset& asset : assets)
        if (asset.Status == Zorvic::ZORVIC_ASSETSTATE_ERROR) ThrowReason(unit, asset);
    return assets;
}

}  // namespace ZorvicCtl
