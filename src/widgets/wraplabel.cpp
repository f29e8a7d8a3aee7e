#include "widgets/wraplabel.h"

#include <QAbstractTextDocumentLayout>
#include <QPainter>
#include <QStyle>
#include <QStyleOption>
#include <QTextDocument>
#include <QtMath>

#include <algorithm>

namespace {

constexpr int TextMargin = 2;
const QChar Ellipsis(0x2026);
const QChar BreakHere(0x200B);  // has no width

bool IsSeparator(QChar c) {
    return c == QLatin1Char('\\') || c == QLatin1Char('/');
}

/// Text engines know words, not paths. What stands between angle brackets is no text when the label is rich.
QString WithBreaks(const QString& text, bool isRich) {
    QString broken;
    bool inTag = false;
    for (const QChar c : text) {
        broken += c;
        if (isRich && c == QLatin1Char('<')) inTag = true;
        if (!inTag && (IsSeparator(c) || c == QLatin1Char('_'))) broken += BreakHere;
        if (c == QLatin1Char('>')) inTag = false;
    }
    return broken;
}

/// The path without one more of its leading folders; the same when only the file name is left.
QString WithoutFolder(const QString& path) {
    const auto from = std::find_if_not(path.begin(), path.end(), [](QChar c) { return c == Ellipsis; });
    const auto folder = std::find_if_not(from, path.end(), IsSeparator);
    const auto separator = std::find_if(folder, path.end(), IsSeparator);
    return separator == path.end() ? path : Ellipsis + path.mid(static_cast<int>(separator - path.begin()));
}

}  // namespace

bool WrapLabel::IsRich() const {
    return textFormat() == Qt::RichText || (textFormat() == Qt::AutoText && Qt::mightBeRichText(text()));
}

void WrapLabel::LayOut(QTextDocument& document, const QString& content, int width, QTextOption::WrapMode mode) const {
    QTextOption option(alignment());
    option.setWrapMode(mode);
    document.setDefaultTextOption(option);
    document.setDefaultFont(font());
    document.setDocumentMargin(TextMargin);
    if (IsRich()) {
        document.setHtml(WithBreaks(content, true));
    } else {
        document.setPlainText(WithBreaks(content, false));
    }
    document.setTextWidth(width);
}

void WrapLabel::LayOutElided(QTextDocument& document) const {
    LayOut(document, text(), width());
    if (IsRich()) return;
    const auto fits = [&] { return document.size().height() <= height(); };
    QString shown = text();
    for (QString shorter; !fits() && (shorter = WithoutFolder(shown)) != shown; shown = shorter)
        LayOut(document, shorter, width());
    // The name alone: its start and its end tell most. Breaks leave lines partly unused, so the room is found by
    // trying.
    const QFontMetrics metrics = fontMetrics();
    int room = qMax(1, height() / metrics.lineSpacing()) * width();
    for (; !fits() && room > metrics.averageCharWidth(); room -= metrics.averageCharWidth())
        LayOut(document, metrics.elidedText(shown, Qt::ElideMiddle, room), width(), QTextOption::WrapAnywhere);
}

int WrapLabel::heightForWidth(int width) const {
    QTextDocument document;
    LayOut(document, text(), width);
    return qCeil(document.size().height());
}

QSize WrapLabel::sizeHint() const {
    QTextDocument document;
    LayOut(document, text(), -1);
    return {qCeil(document.idealWidth()), qCeil(document.size().height())};
}

QSize WrapLabel::minimumSizeHint() const {
    return {0, fontMetrics().lineSpacing() + 2 * TextMargin};
}

void WrapLabel::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    QStyleOption option;
    option.initFrom(this);
    style()->drawPrimitive(QStyle::PE_Widget, &option, &painter, this);

    QTextDocument document;
    LayOutElided(document);
    QAbstractTextDocumentLayout::PaintContext context;
    context.palette = palette();
    context.palette.setColor(QPalette::Text, palette().color(foregroundRole()));
    document.documentLayout()->draw(&painter, context);
}
