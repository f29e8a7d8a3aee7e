#include "text/refusaltext.h"

#include <QCoreApplication>

namespace {

constexpr std::size_t MaxNameBytes = 256;
constexpr std::size_t MaxNotesBytes = 65536;

QString Say(const char* text) {
    return QCoreApplication::translate("PresetBuilder", text);
}

/// A unit only says that it refuses. So what is known to be too much for one is named.
QString RefusedContentText(const Zorvic::Preset& preset) {
    const auto tooLong = [](const char* text, std::size_t bytes, std::size_t most) {
        return Say(text).arg(bytes).arg(most);
    };
    if (preset.Name.size() > MaxNameBytes)
        return tooLong(QT_TRANSLATE_NOOP("PresetBuilder", "Not saved: the name is too long (%1 bytes, at most %2)."),
                       preset.Name.size(), MaxNameBytes);
    if (preset.Notes.size() > MaxNotesBytes)
        return tooLong(QT_TRANSLATE_NOOP("PresetBuilder", "Not saved: the notes are too long (%1 bytes, at most %2)."),
                       preset.Notes.size(), MaxNotesBytes);
    return Say(
        QT_TRANSLATE_NOOP("PresetBuilder", "Not saved: the unit refuses the preset; a limit of it is exceeded."));
}

}  // namespace

QString NotSavedText(Zorvic::StatusCode status, const Zorvic::Preset& preset) {
    if (status == Zorvic::ZORVIC_STATUS_MISUSED) return RefusedContentText(preset);
    if (status != Zorvic::ZORVIC_STATUS_NETWORKERROR)
        return Say(QT_TRANSLATE_NOOP("PresetBuilder", "Not saved: the unit could not store the preset."));
    if (preset.PK != 0)
        return Say(QT_TRANSLATE_NOOP("PresetBuilder", "Not saved: the unit does not answer. Save again when it does."));
    // The answer may be all that was lost.
    return Say(QT_TRANSLATE_NOOP(
        "PresetBuilder", "The unit does not answer. When it does, save again if the preset is not in its list."));
}

QString RefusedText(const QString& what, Zorvic::StatusCode status, const QString& reason) {
    const auto say = [](const char* text) { return QCoreApplication::translate("ZorvicView", text); };
    QString why = reason;
    if (status == Zorvic::ZORVIC_STATUS_NETWORKERROR) {
        why = say(QT_TRANSLATE_NOOP("ZorvicView", "the unit does not answer"));
    } else if (why.isEmpty()) {
        why = status == Zorvic::ZORVIC_STATUS_MISUSED
                  ? say(QT_TRANSLATE_NOOP("ZorvicView", "the unit refuses it"))
                  : say(QT_TRANSLATE_NOOP("ZorvicView", "the unit could not do it"));
    }
    return say(QT_TRANSLATE_NOOP("ZorvicView", "Not done: %1 (%2)")).arg(what, why);
}

QString NoMetadataText(const Zorvic::Asset* asset) {
    if (!asset) return Say(QT_TRANSLATE_NOOP("PresetBuilder", "the unit does not know it as a media file"));
    switch (asset->Status) {
        case Zorvic::ZORVIC_ASSETSTATE_INGESTING:
            return Say(QT_TRANSLATE_NOOP("PresetBuilder", "it is still being copied"));
        case Zorvic::ZORVIC_ASSETSTATE_PROCESSING:
            return Say(QT_TRANSLATE_NOOP("PresetBuilder", "the unit is still reading it"));
        case Zorvic::ZORVIC_ASSETSTATE_ERROR:
            return Say(QT_TRANSLATE_NOOP("PresetBuilder", "the unit cannot read it"));
        default:
            return Say(QT_TRANSLATE_NOOP("PresetBuilder", "the unit does not tell what is in it"));
    }
}
