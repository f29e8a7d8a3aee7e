#include "widgets/wraplabel.h"

#include <QAbstractTextDocumentLayout>
#include <QPainter>
#include <QStyle>
#include <QStyleOption>
#include <QTextDocument>
#include <QtMath>

namespace {

constexpr int TextMargin = 2;

}  // namespace

bool WrapLabel::IsRich() const {
    return textFormat() == Qt::RichText || (textFormat() == Qt::AutoText && Qt::mightBeRichText(text()));
}

void WrapLabel::LayOut(QTextDocument& document, const QString& content, int width) const {
    QTextOption option(alignment());
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    document.setDefaultTextOption(option);
    document.setDefaultFont(font());
    document.setDocumentMargin(TextMargin);
    if (IsRich()) {
        document.setHtml(content);
    } else {
        document.setPlainText(content);
    }
    document.setTextWidth(width);
}

void WrapLabel::LayOutElided(QTextDocument& document) const {
    LayOut(document, text(), width());
    if (IsRich()) return;
    const QFontMetrics metrics = fontMetrics();
    int room = qMax(1, height() / metrics.lineSpacing()) * width();
    // Breaks leave lines partly unused, so the room is found by trying.
    while (document.size().height() > height() && room > metrics.averageCharWidth()) {
        LayOut(document, metrics.elidedText(text(), Qt::ElideMiddle, room), width());
        room -= qMax(1, width() / 4);
    }
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
