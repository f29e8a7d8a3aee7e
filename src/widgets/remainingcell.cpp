#include "widgets/remainingcell.h"

#include "text/timetext.h"

#include <QBrush>
#include <QTreeWidgetItem>

namespace {

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

bool ShowLength(QTreeWidgetItem* row, int column, int lengthMS) {
    return ShowCell(row, column, ClockText(lengthMS), {});
}
