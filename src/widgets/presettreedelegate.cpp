#include "widgets/presettreedelegate.h"

#include <QTreeWidget>

PresetTreeDelegate::PresetTreeDelegate(QTreeWidget* parent) : QItemDelegate(parent), Parent(parent) {}

QSize PresetTreeDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const {
    constexpr int RowHeight = 24;
    return {QItemDelegate::sizeHint(option, index).width(), RowHeight};
}
