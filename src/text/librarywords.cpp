#include "text/librarywords.h"

#include <QCoreApplication>

#include <algorithm>
#include <iterator>

namespace {

/// Listed, so that the name of a preset is never taken for one of them by a look-up that knows no better.
const char* const Words[] = {
    QT_TRANSLATE_NOOP("Library", "take"),        QT_TRANSLATE_NOOP("Library", "pause"),
    QT_TRANSLATE_NOOP("Library", "resume"),      QT_TRANSLATE_NOOP("Library", "end"),
    QT_TRANSLATE_NOOP("Library", "seek"),        QT_TRANSLATE_NOOP("Library", "goto"),
    QT_TRANSLATE_NOOP("Library", "link"),        QT_TRANSLATE_NOOP("Library", "loop"),
    QT_TRANSLATE_NOOP("Library", "hold"),        QT_TRANSLATE_NOOP("Library", "edit"),
    QT_TRANSLATE_NOOP("Library", "delete"),      QT_TRANSLATE_NOOP("Library", "import"),
    QT_TRANSLATE_NOOP("Library", "connect"),     QT_TRANSLATE_NOOP("Library", "leave"),
    QT_TRANSLATE_NOOP("Library", "fault"),       QT_TRANSLATE_NOOP("Library", "power"),
    QT_TRANSLATE_NOOP("Library", "not known"),   QT_TRANSLATE_NOOP("Library", "shown"),
    QT_TRANSLATE_NOOP("Library", "not shown"),   QT_TRANSLATE_NOOP("Library", "sound only"),
    QT_TRANSLATE_NOOP("Library", "Notes"),       QT_TRANSLATE_NOOP("Library", "Colour"),
    QT_TRANSLATE_NOOP("Library", "Volume"),      QT_TRANSLATE_NOOP("Library", "Place in the list"),
    QT_TRANSLATE_NOOP("Library", "Loop"),        QT_TRANSLATE_NOOP("Library", "Link"),
    QT_TRANSLATE_NOOP("Library", "Dissolve in"), QT_TRANSLATE_NOOP("Library", "Dissolve out"),
    QT_TRANSLATE_NOOP("Library", "Fade in"),     QT_TRANSLATE_NOOP("Library", "Fade out"),
    QT_TRANSLATE_NOOP("Library", "In point"),    QT_TRANSLATE_NOOP("Library", "Out point"),
    QT_TRANSLATE_NOOP("Library", "Dissolve"),    QT_TRANSLATE_NOOP("Library", "Hold at the end"),
    QT_TRANSLATE_NOOP("Library", "without end"), QT_TRANSLATE_NOOP("Library", "yes"),
    QT_TRANSLATE_NOOP("Library", "no"),          QT_TRANSLATE_NOOP("Library", "Single"),
    QT_TRANSLATE_NOOP("Library", "Primary"),     QT_TRANSLATE_NOOP("Library", "Mirror"),
};

}  // namespace

QString LibraryWord(const std::string& word) {
    const auto* const known = std::find(std::begin(Words), std::end(Words), word);
    return known == std::end(Words) ? QString::fromStdString(word) : QCoreApplication::translate("Library", *known);
}
