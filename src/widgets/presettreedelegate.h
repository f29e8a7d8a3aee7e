#pragma once

#include <QItemDelegate>

class QTreeWidget;

/// Rows of the preset list: all of one height, whatever the font. The one under the pointer shows it.
class PresetTreeDelegate : public QItemDelegate {
    Q_OBJECT

public:
    explicit PresetTreeDelegate(QTreeWidget* parent);

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

private:
    QTreeWidget* Parent;
};
