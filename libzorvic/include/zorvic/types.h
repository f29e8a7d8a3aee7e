#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <unordered_map>
#include <vector>

#include "zorvic/enums.h"
#include "zorvic/export.h"

// The records that console and unit exchange. They are plain values: default-constructible, copied and moved member by
// member. Text is UTF-8. Positions inside a preset are remaining times: milliseconds before the end of its running
// time.

/// All of the library but the tables of texts.
namespace Zorvic {

/// Base of every record but the four geometry structs, so that a record is always destroyed through its own destructor.
class ZORVIC_API Object {
public:
    Object() = default;
    Object(const Object&) = default;
    Object(Object&&) = default;
    Object& operator=(const Object&) = default;
    Object& operator=(Object&&) = default;
    virtual ~Object() = default;
};

/// Width and height in pixels.
struct Size2D {
    std::int32_t Width = 0;
    std::int32_t Height = 0;
    bool operator==(const Size2D&) const = default;
};

/// Position in pixels, origin top left.
struct Coords2D {
    std::int32_t X = 0;
    std::int32_t Y = 0;
    bool operator==(const Coords2D&) const = default;
};

/// A size at a position.
struct Rect : Size2D, Coords2D {
    bool operator==(const Rect&) const = default;
};

/// A rectangle with a stacking level (Z) and its extent in that axis (Depth).
struct Cube : Rect {
    std::int32_t Z = 0;
    std::int32_t Depth = 0;
    bool operator==(const Cube&) const = default;
};

/// How a canvas is laid out over its outputs; compares with another one or with the bare enumerator.
class ZORVIC_API CanvasOrientation : public Object {
public:
    CanvasOrientation() = default;
    /// Coordinates are copied when given, otherwise (0, 0).
    CanvasOrientation(CanvasOrientationEnum orientation, const Coords2D* customCoords)
        : CustomCoords(customCoords ? *customCoords : Coords2D{}), Orientation(orientation) {}

    /// For comparing and switching over; custom coordinates are lost.
    operator CanvasOrientationEnum() const { return Orientation; }
    /// Custom coordinates count, whatever the orientation.
    bool operator==(const CanvasOrientation& other) const {
        return Orientation == other.Orientation && CustomCoords == other.CustomCoords;
    }
    /// Custom coordinates do not count.
    bool operator==(CanvasOrientationEnum other) const { return Orientation == other; }

    Coords2D CustomCoords;  ///< meaningful when Orientation is Custom
    CanvasOrientationEnum Orientation = CanvasOrientationEnum::Invalid;
};

/// Shape of a canvas, and how many outputs it spans.
class ZORVIC_API ProjectorCanvasConfig : public Object {
public:
    CanvasOrientation Orientation;
    Size2D Dimensions;             ///< canvas size in pixels
    std::uint32_t NumOutputs = 0;  ///< physical outputs the canvas spans
};

/// An asset placed on a canvas, with its picture adjustments (nominally -1.0 to 1.0, 0 is neutral).
class ZORVIC_API PinnedAsset : public Object {
public:
    std::string FullPath;  ///< asset path on the unit
    Cube PinnedCoords;
    float Hue = 0;
    float Saturation = 0;
    float Brightness = 0;
    float Contrast = 0;
};

/// A canvas of a preset: its shape, what is placed on it, and where it goes.
class ZORVIC_API CanvasInfo : public Object {
public:
    ProjectorCanvasConfig CanvasCfg;
    std::vector<PinnedAsset> Assets;
    SinkType SinkTypes = ZORVIC_SINK_INVALID;  ///< bit set
    std::uint32_t Index = 0;                   ///< number of the canvas within its preset
};

/// A goto (jump point) or a countdown (count-down target) of a preset.
class ZORVIC_API PresetMark : public Object {
public:
    std::int32_t ID = 0;
    std::int32_t TimeMS = 0;  ///< remaining time
    std::string Name;
};

/// Position of a preset in a display tab.
class ZORVIC_API TabOrdering : public Object {
public:
    TabOrdering() = default;
    /// Index `index` in tab `tabID`.
    TabOrdering(std::int32_t tabID, std::int32_t index) : TabID(tabID), Index(index) {}

    std::int32_t TabID = 0;
    std::int32_t Index = 0;
};

/// A named playback set-up: which assets play on which canvases, with trim, marks, levels and what follows.
class ZORVIC_API Preset : public Object {
public:
    std::string Name;
    std::string Notes;
    std::string Color;  ///< text form is the unit's business
    std::vector<CanvasInfo> Canvases;
    std::unordered_map<std::int32_t, PresetMark> Gotos;       ///< by mark ID
    std::unordered_map<std::int32_t, PresetMark> Countdowns;  ///< by mark ID
    std::vector<std::uint16_t> Volume;                        ///< 0 to 65535 per channel, left first
    std::map<std::int32_t, TabOrdering> TabDisplayOrder;      ///< by tab id
    std::int32_t PK = 0;                                      ///< key on the unit; 0 before the unit assigned one
    std::int32_t Loop = 0;                                    ///< further passes; -1 without end
    std::int32_t Link = 0;                                    ///< PK of the preset that follows; 0 or below: none
    std::int32_t DissolveInMS = 0;
    std::int32_t DissolveOutMS = 0;
    std::int32_t FadeInMS = 0;
    std::int32_t FadeOutMS = 0;
    std::int32_t InPosition = 0;   ///< remaining time of the in point; 0: not set
    std::int32_t OutPosition = 0;  ///< remaining time of the out point; 0: untrimmed
    std::int32_t Dissolve = 0;
    bool FreezeAtEnd = false;

    /// Bit set of the players that feed the canvas; ZORVIC_PLAYER_INVALID when there are none or no such canvas.
    Player GetPlayersForCanvas(std::uint32_t canvasIndex) const;
    /// The first player that feeds the canvas, or ZORVIC_PLAYER_INVALID.
    Player GetActivePlayerForCanvas(std::uint32_t canvasIndex) const;
    /// The canvas that the player (one flag) feeds, inside this preset, or null.
    CanvasInfo* LookupCanvasByPlayer(Player player) const;
    /// First and last player number of the canvas, newly allocated and owned by the caller; null without players.
    std::array<std::uint32_t, 2>* GetPlayerRangeForCanvas(std::uint32_t canvasIndex) const;
};

/// Whether and how a preset runs.
class ZORVIC_API PresetState : public Object {
public:
    std::int32_t PK = 0;
    std::int32_t TRT = 0;           ///< total running time, ms
    std::uint32_t CurrentLoop = 0;  ///< loop pass now playing
    bool IsPlaying = false;
    bool IsPaused = false;
    bool IsSelected = false;  ///< this is the unit's selected preset
};

/// Where a preset is, and how loud.
class ZORVIC_API TimeCode : public Object {
public:
    std::int32_t PK = 0;
    std::int32_t Time = 0;             ///< play position, remaining time
    std::vector<std::int32_t> VUData;  ///< audio levels 0 to 100, left and right first
};

/// Set-up of the unit's video I/O card.
class ZORVIC_API KonaHardwareState : public Object {
public:
    std::array<ResolutionMode, 4> Resolutions{};  ///< one per SDI output
    RefreshMode RefreshRate = ZORVIC_REFRESH_INVALID;
    Zorvic::HDRMode HDRMode = ZORVIC_HDR_DISABLED;
    EOTFMode EOTFSetting = ZORVIC_EOTF_NORMAL;
    KonaAudioConfig AudioConfig = ZORVIC_KAC_DISABLED;
    bool ConstLumin = false;
};

/// A media file in the unit's store.
class ZORVIC_API Asset : public Object {
public:
    std::string FullPath;  ///< path on the unit; the asset's identity
    std::string Checksum;
    std::int64_t LastModified = 0;
    std::int64_t TotalSize = 0;    ///< bytes
    std::int64_t CurrentSize = 0;  ///< bytes present so far; below TotalSize while ingesting
    AssetState Status = ZORVIC_ASSETSTATE_INVALID;
};

/// What a probe of a media file found. TotalSize is unsigned here and signed in Asset, on purpose.
class ZORVIC_API AssetMetadata : public Object {
public:
    std::string FilePath;
    std::string VideoFormat;
    std::string AudioFormat;
    std::string ContainerFormat;
    Size2D Resolution;
    std::uint64_t TotalSize = 0;    ///< bytes
    std::uint32_t VBitrate = 0;     ///< bits per second
    std::uint32_t ABitrate = 0;     ///< bits per second
    std::uint32_t ASampleRate = 0;  ///< Hz
    std::uint32_t AChannels = 0;
    std::uint32_t FPS = 0;
    std::int32_t Duration = 0;  ///< ms
};

/// A drive of the unit, to import from or its own store.
class ZORVIC_API Drive : public Object {
public:
    std::string Mountpoint;   ///< what GetDiskAssets takes as drive
    std::int64_t Total = 0;   ///< bytes
    std::int64_t Used = 0;    ///< bytes
    std::int64_t Free = 0;    ///< bytes
    bool IsExternal = false;  ///< removable or attached, as opposed to the unit's own store
};

/// An entry of a directory on one of the unit's drives.
class ZORVIC_API ExternalAsset : public Object {
public:
    std::string Filename;  ///< last path component
    std::string FullPath;  ///< what InstallAsset takes
    std::int64_t FileSize = 0;
    bool IsDirectory = false;
};

/// A unit found on the local network.
class ZORVIC_API LANZorvic : public Object {
public:
    std::string APIVersion;
    std::string CommunicatorVersion;
    std::string GUID;
    std::string Nickname;
    std::string IP;  ///< dotted IPv4 address, with ":port" when the port is not the default
    UnitRole CurrentRole = ZORVIC_ROLE_INVALID;
    UnitType Type = ZORVIC_UTYPE_INVALID;
};

}  // namespace Zorvic
