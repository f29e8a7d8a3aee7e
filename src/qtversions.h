#pragma once

#include <QIcon>
#include <QKeySequence>
#include <QLibraryInfo>
#include <QWidget>
#include <QWindow>

// What Qt 5 and Qt 6 have different words for.

/// Key and modifiers of the first key press.
inline unsigned FirstKey(const QKeySequence& keys) {
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    return static_cast<unsigned>(keys[0]);
#else
    return static_cast<unsigned>(keys[0].toCombined());
#endif
}

/// As sharp as the widget's screen.
inline QPixmap PixmapFor(const QWidget& widget, const QIcon& icon, const QSize& size) {
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    return icon.pixmap(widget.window()->windowHandle(), size);
#else
    return icon.pixmap(size, widget.devicePixelRatio());
#endif
}

/// Directory of Qt's own translations.
inline QString QtTranslations() {
#if QT_VERSION < QT_VERSION_CHECK(6, 0, 0)
    return QLibraryInfo::location(QLibraryInfo::TranslationsPath);
#else
    return QLibraryInfo::path(QLibraryInfo::TranslationsPath);
#endif
}
