#pragma once

// Enumerations shared by console, library and unit. Names and values are part of the interface: a console may run
// against another maker's library, and a newer unit may send values that are not listed here.

namespace Zorvic {

/// Result of every unit operation. ZORVIC_STATUS_OK is success, every other value is a failure.
enum StatusCode : int {
    ZORVIC_STATUS_INVALID = -1,
    ZORVIC_STATUS_OK = 0,
    ZORVIC_STATUS_FAILED = 1,         ///< the unit understood and refused
    ZORVIC_STATUS_UNIMPLEMENTED = 2,  ///< the unit or the library cannot do this yet
    ZORVIC_STATUS_INTERNALERROR = 3,  ///< a fault of the unit
    ZORVIC_STATUS_MISUSED = 4,        ///< the arguments make no sense
    ZORVIC_STATUS_NETWORKERROR = 5,   ///< no link, or no answer in time
    ZORVIC_STATUS_UNSUPPORTED = 6,
    ZORVIC_STATUS_MAX = 7
};

/// Kinds of change a unit reports.
enum StateEventType : int {
    ZORVIC_STATE_INVALID = 0,
    ZORVIC_STATE_PRESETS = 1,
    ZORVIC_STATE_PRESETSTATES = 2,
    ZORVIC_STATE_ASSETS = 3,
    ZORVIC_STATE_HWSTATE = 4,
    ZORVIC_STATE_TIMECODE = 5,
    ZORVIC_STATE_MAX = 6
};

/// Bit set of outputs. The number of a single flag is its bit position plus one.
enum Player : int {
    ZORVIC_PLAYER_INVALID = 0,
    ZORVIC_PLAYER_1 = 1,
    ZORVIC_PLAYER_2 = 2,
    ZORVIC_PLAYER_3 = 4,
    ZORVIC_PLAYER_4 = 8,
    ZORVIC_PLAYER_MAXVALUE = 8
};

/// Bit set of output sinks. MAXVALUE stays below the highest flag: existing units depend on it.
enum SinkType : int {
    ZORVIC_SINK_INVALID = 0,
    ZORVIC_SINK_DEMO = 1,
    ZORVIC_SINK_KONA = 2,
    ZORVIC_SINK_NDI = 4,
    ZORVIC_SINK_BMD = 8,
    ZORVIC_SINK_MAXVALUE = 4
};

/// Bit set of SDI connectors.
enum SDIOutput : int {
    ZORVIC_SDI_INVALID = 0,
    ZORVIC_SDI_1 = 1,
    ZORVIC_SDI_2 = 2,
    ZORVIC_SDI_3 = 4,
    ZORVIC_SDI_4 = 8,
    ZORVIC_SDI_MAXVALUE = 8
};

/// How far a media file is on its way to being played.
enum AssetState : int {
    ZORVIC_ASSETSTATE_INVALID = 0,
    ZORVIC_ASSETSTATE_READY = 1,
    ZORVIC_ASSETSTATE_INGESTING = 2,
    ZORVIC_ASSETSTATE_ERROR = 3,
    ZORVIC_ASSETSTATE_PROCESSING = 4,
    ZORVIC_ASSETSTATE_MAX = 5
};

/// Video mode of an output; ResolutionMap has its text and ResolutionSizeMap its size.
enum ResolutionMode : int {
    ZORVIC_RES_INVALID = 0,
    ZORVIC_RES_720P = 1,
    ZORVIC_RES_1080P = 2,
    ZORVIC_RES_2160P = 3,
    ZORVIC_RES_1080I = 4,
    ZORVIC_RES_MAX = 5
};

/// Pictures per second; RefreshMap has the text.
enum RefreshMode : int {
    ZORVIC_REFRESH_INVALID = 0,
    ZORVIC_REFRESH_23_98 = 1,
    ZORVIC_REFRESH_24 = 2,
    ZORVIC_REFRESH_25 = 3,
    ZORVIC_REFRESH_29_97 = 4,
    ZORVIC_REFRESH_30 = 5,
    ZORVIC_REFRESH_50 = 6,
    ZORVIC_REFRESH_59_94 = 7,
    ZORVIC_REFRESH_60 = 8,
    ZORVIC_REFRESH_MAX = 9
};

/// What an output says about the range of its colours.
enum HDRMode : int {
    ZORVIC_HDR_DISABLED = 0,
    ZORVIC_HDR_BT2020 = 1,
    ZORVIC_HDR_DCI_P3 = 2,
    ZORVIC_HDR_DOLBY = 3,
    ZORVIC_HDR_MAX = 4
};

/// How an output's signal becomes light.
enum EOTFMode : int {
    ZORVIC_EOTF_NORMAL = 0,
    ZORVIC_EOTF_HLG = 1,
    ZORVIC_EOTF_PQ = 2,
    ZORVIC_EOTF_UNSPECIFIED = 3,
    ZORVIC_EOTF_MAX = 4
};

/// Audio embedding of the video card: one SDI value, with the dual-mode flag or-ed onto it where it applies.
enum KonaAudioConfig : int {
    ZORVIC_KAC_DISABLED = 0,
    ZORVIC_KAC_SDI1 = 1,
    ZORVIC_KAC_SDI2 = 2,
    ZORVIC_KAC_SDI3 = 4,
    ZORVIC_KAC_SDI4 = 8,
    ZORVIC_KAC_MAX_SDI = 8,
    ZORVIC_KAC_DUALMODE_FLAG = 16,
    ZORVIC_KAC_MAX = 17
};

/// Placements that AttachAssetToCanvas knows.
enum EasyCanvasAlignment : int {
    ZORVIC_ECALIGN_INVALID = 0,
    ZORVIC_ECALIGN_TOPLEFT = 1,
    ZORVIC_ECALIGN_TOPCENTER = 2,
    ZORVIC_ECALIGN_TOPRIGHT = 3,
    ZORVIC_ECALIGN_BOTTOMLEFT = 4,
    ZORVIC_ECALIGN_BOTTOMCENTER = 5,
    ZORVIC_ECALIGN_BOTTOMRIGHT = 6,
    ZORVIC_ECALIGN_CENTERRIGHT = 7,
    ZORVIC_ECALIGN_CENTERLEFT = 8,
    ZORVIC_ECALIGN_CENTERED = 9,
    ZORVIC_ECALIGN_SCALED_CENTERED = 10,
    ZORVIC_ECALIGN_SCALED_LEFT = 11,
    ZORVIC_ECALIGN_SCALED_RIGHT = 12,
    ZORVIC_ECALIGN_SCALED_TOP = 13,
    ZORVIC_ECALIGN_SCALED_BOTTOM = 14,
    ZORVIC_ECALIGN_STRETCHED = 15,
    ZORVIC_ECALIGN_MAX = 16
};

/// How a canvas spans its outputs. The one scoped enumeration: its enumerators carry no prefix.
enum class CanvasOrientationEnum : int {
    Invalid = 0,
    Custom = 1,
    Single = 2,
    Standard = 3,
    Landscape = 4,
    Portrait = 5
};

/// Place of a unit in a group.
enum UnitRole : int {
    ZORVIC_ROLE_INVALID = 0,
    ZORVIC_ROLE_SINGLE = 1,
    ZORVIC_ROLE_PRIMARY = 2,
    ZORVIC_ROLE_MIRROR = 3,
    ZORVIC_ROLE_MAX = 4
};

/// Make of a unit.
enum UnitType : int {
    ZORVIC_UTYPE_INVALID = 0,
    ZORVIC_UTYPE_SERVER_T4X = 1,
    ZORVIC_UTYPE_SERVER_M20X = 2,
    ZORVIC_UTYPE_LUMEN = 3,
    ZORVIC_UTYPE_MAX = 4
};

}  // namespace Zorvic
