#pragma once

#include <QItemDelegate>

class QTreeWidget;

/// Rows of the preset list: all of one height, whatever the font.
class PresetTreeDelegate : public QItemDelegate {
    Q_OBJECT

public:
    explicit PresetTreeDelegate(QTreeWidget* parent);

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;

private:
    QTreeWidget* Parent;
};
