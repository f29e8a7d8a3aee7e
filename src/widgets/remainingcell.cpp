#include "widgets/remainingcell.h"

#include "text/timetext.h"

#include <QBrush>
#include <QPainter>
#include <QStyleOptionViewItem>
#include <QTreeWidgetItem>

namespace {

/// Dark in every style: times that are not urgent are white.
constexpr QRgb TimeGround = 0xff0b1117;

bool ShowCell(QTreeWidgetItem* row, int column, const QString& text, const QBrush& brush) {
    const bool differs = row->text(column) != text || row->foreground(column) != brush;
    if (differs) {
        row->setText(column, text);
        row->setForeground(column, brush);
    }
    return differs;
}

}  // namespace

bool ShowRemaining(QTreeWidgetItem* row, int column, int remainingMS) {
    return ShowCell(row, column, ClockText(remainingMS), QColor(RemainingTimeColor(remainingMS)));
}

void PaintOnSelection(QPainter& painter, const QStyleOptionViewItem& option, const QModelIndex& index, int indent) {
    const auto colour = index.data(Qt::ForegroundRole).value<QBrush>();
    if (!option.state.testFlag(QStyle::State_Selected) || colour.style() == Qt::NoBrush) return;
    const int margin = option.widget->style()->pixelMetric(QStyle::PM_FocusFrameHMargin, &option, option.widget) + 1;
    const QRect ground = option.rect.adjusted(0, 2, -2, -2);
    painter.fillRect(ground, QColor::fromRgb(TimeGround));
    painter.setPen(colour.color());
    painter.drawText(ground.adjusted(indent + margin, 0, 0, 0), Qt::AlignLeft | Qt::AlignVCenter,
                     index.data().toString());
}

bool ShowLength(QTreeWidgetItem* row, int column, int lengthMS) {
    return ShowCell(row, column, ClockText(lengthMS), {});
}
