#include "widgets/presettreedelegate.h"

#include "widgets/remainingcell.h"

#include <QPainter>
#include <QTreeWidget>

PresetTreeDelegate::PresetTreeDelegate(QTreeWidget* parent) : QItemDelegate(parent), Parent(parent) {}

void PresetTreeDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const {
    if (option.state.testFlag(QStyle::State_MouseOver)) {
        painter->fillRect(option.rect, option.palette.color(QPalette::Midlight));
    }
    QItemDelegate::paint(painter, option, index);
    PaintOnSelection(*painter, option, index, 0);
}

QSize PresetTreeDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const {
    constexpr int RowHeight = 24;
    return {QItemDelegate::sizeHint(option, index).width(), RowHeight};
}
