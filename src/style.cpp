#include "style.h"

#include <QApplication>
#include <QFile>
#include <QPalette>
#include <QTextStream>

#include <array>
#include <iostream>

namespace {

struct PaletteEntry {
    QPalette::ColorRole Role;
    QRgb Normal;
    QRgb Disabled;
};

constexpr std::array<PaletteEntry, 20> DarkColours = {{
    {QPalette::Window, 0xff19232d, 0xff19232d},
    {QPalette::WindowText, 0xffe6ebf0, 0xff788896},
    {QPalette::Base, 0xff0b1117, 0xff19232d},
    {QPalette::AlternateBase, 0xff10171f, 0xff19232d},
    {QPalette::Text, 0xffe6ebf0, 0xff788896},
    {QPalette::PlaceholderText, 0xff8f9dab, 0xff788896},
    {QPalette::Button, 0xff2b3a49, 0xff1e2933},
    {QPalette::ButtonText, 0xffe6ebf0, 0xff788896},
    {QPalette::BrightText, 0xffffffff, 0xff788896},
    {QPalette::ToolTipBase, 0xff2b3a49, 0xff2b3a49},
    {QPalette::ToolTipText, 0xffffffff, 0xffffffff},
    {QPalette::Highlight, 0xffae602c, 0xff455364},
    {QPalette::HighlightedText, 0xffffffff, 0xffb4bec8},
    {QPalette::Link, 0xffe8a06c, 0xff788896},
    {QPalette::LinkVisited, 0xffe8a06c, 0xff788896},
    {QPalette::Light, 0xff455364, 0xff455364},
    {QPalette::Midlight, 0xff22303d, 0xff22303d},
    {QPalette::Mid, 0xff2b3a49, 0xff2b3a49},
    {QPalette::Dark, 0xff0d141a, 0xff0d141a},
    {QPalette::Shadow, 0xff000000, 0xff000000},
}};

/// Base colours come from the palette: style rules for every widget would cost start-up time for each of them.
QPalette DarkPalette() {
    QPalette palette;
    for (const auto& entry : DarkColours) {
        palette.setColor(QPalette::Active, entry.Role, QColor::fromRgb(entry.Normal));
        palette.setColor(QPalette::Inactive, entry.Role, QColor::fromRgb(entry.Normal));
        palette.setColor(QPalette::Disabled, entry.Role, QColor::fromRgb(entry.Disabled));
    }
    // A selection in a list that does not have the focus is a shade quieter.
    palette.setColor(QPalette::Inactive, QPalette::Highlight, QColor::fromRgb(0xff7a4522));
    return palette;
}

}  // namespace

QFont SizeDefaultFont(int pointSize) {
    QFont font(QFont().defaultFamily(), pointSize);
    font.setStyleStrategy(QFont::PreferAntialias);
    return font;
}

void TryLoadStyle(QApplication& application) {
    QFile file(QStringLiteral(":qdarkstyle/style.qss"));
    if (!file.exists() || !file.open(QFile::ReadOnly | QFile::Text)) {
        std::cout << "Error opening dark style sheet" << std::endl;
        return;
    }
    QApplication::setStyle(QStringLiteral("Fusion"));
    QApplication::setPalette(DarkPalette());
    application.setStyleSheet(QTextStream(&file).readAll());
}
