#include <zorvic/layout.h>

#include <algorithm>
#include <bit>
#include <cstddef>
#include <limits>

namespace Zorvic {
namespace {

constexpr std::uint32_t PlayerCount = 4;

enum class Sizing { Native, Scaled, Stretched };
enum class Edge { Low, Middle, High };  ///< left/top, centre, right/bottom

struct Placement {
    Sizing Size;
    Edge Horizontal;
    Edge Vertical;
};

/// In the order of EasyCanvasAlignment, without INVALID.
constexpr std::array<Placement, ZORVIC_ECALIGN_MAX - 1> Placements = {{
    {Sizing::Native, Edge::Low, Edge::Low},        // TOPLEFT
    {Sizing::Native, Edge::Middle, Edge::Low},     // TOPCENTER
    {Sizing::Native, Edge::High, Edge::Low},       // TOPRIGHT
    {Sizing::Native, Edge::Low, Edge::High},       // BOTTOMLEFT
    {Sizing::Native, Edge::Middle, Edge::High},    // BOTTOMCENTER
    {Sizing::Native, Edge::High, Edge::High},      // BOTTOMRIGHT
    {Sizing::Native, Edge::High, Edge::Middle},    // CENTERRIGHT
    {Sizing::Native, Edge::Low, Edge::Middle},     // CENTERLEFT
    {Sizing::Native, Edge::Middle, Edge::Middle},  // CENTERED
    {Sizing::Scaled, Edge::Middle, Edge::Middle},  // SCALED_CENTERED
    {Sizing::Scaled, Edge::Low, Edge::Middle},     // SCALED_LEFT
    {Sizing::Scaled, Edge::High, Edge::Middle},    // SCALED_RIGHT
    {Sizing::Scaled, Edge::Middle, Edge::Low},     // SCALED_TOP
    {Sizing::Scaled, Edge::Middle, Edge::High},    // SCALED_BOTTOM
    {Sizing::Stretched, Edge::Low, Edge::Low},     // STRETCHED
}};

/// Sizes are 32 bits wide, so their products and differences fit 64.
struct Extent {
    std::int64_t Width;
    std::int64_t Height;
};

/// a * b / c for positive values, rounded to nearest (half up), at least one pixel.
std::int64_t Scale(std::int64_t a, std::int64_t b, std::int64_t c) {
    const std::int64_t quotient = a * b / c;
    const std::int64_t remainder = a * b % c;
    return std::max<std::int64_t>(1, quotient + (remainder >= c - remainder ? 1 : 0));
}

/// The largest extent with the asset's proportions that the canvas holds.
Extent FitInto(const Extent& canvas, const Extent& asset) {
    if (asset.Width * canvas.Height >= canvas.Width * asset.Height) {
        return {canvas.Width, Scale(asset.Height, canvas.Width, asset.Width)};
    }
    return {Scale(asset.Width, canvas.Height, asset.Height), canvas.Height};
}

/// Rounds towards left and top, so that an odd pixel of free space lies at the right or bottom.
std::int64_t Position(Edge edge, std::int64_t canvas, std::int64_t asset) {
    const std::int64_t room = canvas - asset;
    switch (edge) {
        case Edge::Low:
            return 0;
        case Edge::Middle:
            return (room - (room < 0 ? 1 : 0)) / 2;
        case Edge::High:
            return room;
    }
    return 0;
}

std::int32_t ToPixels(std::int64_t value) {
    constexpr auto Limit = std::numeric_limits<std::int32_t>();
    return static_cast<std::int32_t>(std::clamp<std::int64_t>(value, Limit.min(), Limit.max()));
}

Rect Place(EasyCanvasAlignment alignment, const Size2D& size, const Size2D& canvas) {
    const auto& placement = Placements[static_cast<std::size_t>(alignment) - 1];
    // A canvas whose size is not known yet counts as one pixel: the asset is kept and can be placed anew.
    const Extent area{std::max(1, canvas.Width), std::max(1, canvas.Height)};
    Extent extent{size.Width, size.Height};
    if (placement.Size == Sizing::Scaled) {
        extent = FitInto(area, extent);
    } else if (placement.Size == Sizing::Stretched) {
        extent = area;
    }
    return {{ToPixels(extent.Width), ToPixels(extent.Height)},
            {ToPixels(Position(placement.Horizontal, area.Width, extent.Width)),
             ToPixels(Position(placement.Vertical, area.Height, extent.Height))}};
}

Player ToPlayer(std::uint32_t bits) {
    return static_cast<Player>(bits);
}

/// Canvases take their outputs in order of Index, whatever order the list has; of two with one Index the first in the
/// list comes first. Summed in 64 bits: NumOutputs comes from the network and may be anything.
Player PlayersOf(const std::vector<CanvasInfo>& canvases, const CanvasInfo& canvas) {
    std::uint64_t taken = 0;
    for (const auto& other : canvases) {
        if (other.Index < canvas.Index || (other.Index == canvas.Index && &other < &canvas)) {
            taken += other.CanvasCfg.NumOutputs;
        }
    }
    if (taken >= PlayerCount) return ZORVIC_PLAYER_INVALID;
    const auto first = static_cast<std::uint32_t>(taken);
    const auto count = std::min(canvas.CanvasCfg.NumOutputs, PlayerCount - first);
    return ToPlayer(((1U << count) - 1U) << first);
}

}  // namespace

Player Preset::GetPlayersForCanvas(std::uint32_t canvasIndex) const {
    const auto canvas = std::ranges::find(Canvases, canvasIndex, &CanvasInfo::Index);
    return canvas == Canvases.end() ? ZORVIC_PLAYER_INVALID : PlayersOf(Canvases, *canvas);
}

Player Preset::GetActivePlayerForCanvas(std::uint32_t canvasIndex) const {
    const auto players = static_cast<std::uint32_t>(GetPlayersForCanvas(canvasIndex));
    return ToPlayer(players & (~players + 1U));
}

CanvasInfo* Preset::LookupCanvasByPlayer(Player player) const {
    const auto wanted = static_cast<std::uint32_t>(player);
    if (!std::has_single_bit(wanted)) return nullptr;
    const auto canvas = std::ranges::find_if(Canvases, [&](const CanvasInfo& candidate) {
        return (static_cast<std::uint32_t>(PlayersOf(Canvases, candidate)) & wanted) != 0;
    });
    // The interface hands out a writable canvas of a preset that it takes as const: the caller owns both.
    return canvas == Canvases.end() ? nullptr : const_cast<CanvasInfo*>(&*canvas);
}

std::array<std::uint32_t, 2>* Preset::GetPlayerRangeForCanvas(std::uint32_t canvasIndex) const {
    return GetPlayerRange(GetPlayersForCanvas(canvasIndex));
}

std::array<std::uint32_t, 2>* GetPlayerRange(Player players) {
    const auto bits = static_cast<std::uint32_t>(players);
    if (bits == 0) return nullptr;
    const auto first = static_cast<std::uint32_t>(std::countr_zero(bits)) + 1U;
    const auto last = static_cast<std::uint32_t>(std::bit_width(bits));
    return new std::array<std::uint32_t, 2>{first, last};
}

StatusCode AttachAssetToCanvas(EasyCanvasAlignment alignment, const std::string& path, const Size2D& size,
                               CanvasInfo& canvas) {
    const bool hasPicture = size.Width > 0 && size.Height > 0;
    const bool isSound = size == Size2D{};
    if (alignment <= ZORVIC_ECALIGN_INVALID || alignment >= ZORVIC_ECALIGN_MAX || path.empty() ||
        (!hasPicture && !isSound)) {
        return ZORVIC_STATUS_MISUSED;
    }
    PinnedAsset asset;
    asset.FullPath = path;
    if (hasPicture) static_cast<Rect&>(asset.PinnedCoords) = Place(alignment, size, canvas.CanvasCfg.Dimensions);
    asset.PinnedCoords.Z = ToPixels(static_cast<std::int64_t>(canvas.Assets.size()));
    asset.PinnedCoords.Depth = 1;
    canvas.Assets.push_back(std::move(asset));
    return ZORVIC_STATUS_OK;
}

}  // namespace Zorvic
