#include "widgets/marknamedelegate.h"

#include "widgets/remainingcell.h"

#include <QKeyEvent>
#include <QStyle>
#include <QTreeWidget>

#include <utility>

MarkNameDelegate::MarkNameDelegate(QTreeWidget* parent) : QStyledItemDelegate(parent) {}

void MarkNameDelegate::Cancel() {
    if (Editor) {
        emit closeEditor(Editor, QAbstractItemDelegate::RevertModelCache);
    }
}

void MarkNameDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const {
    QStyledItemDelegate::paint(painter, option, index);
    QStyleOptionViewItem cell = option;
    initStyleOption(&cell, index);
    const QRect text = cell.widget->style()->subElementRect(QStyle::SE_ItemViewItemText, &cell, cell.widget);
    PaintOnSelection(*painter, option, index, text.left() - cell.rect.left());
}

QWidget* MarkNameDelegate::createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                                        const QModelIndex& index) const {
    Editor = QStyledItemDelegate::createEditor(parent, option, index);
    IsFilled = false;
    return Editor;
}

void MarkNameDelegate::setEditorData(QWidget* editor, const QModelIndex& index) const {
    if (std::exchange(IsFilled, true)) return;
    QStyledItemDelegate::setEditorData(editor, index);
}

bool MarkNameDelegate::eventFilter(QObject* object, QEvent* event) {
    if (event->type() == QEvent::ShortcutOverride) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Return || key == Qt::Key_Enter || key == Qt::Key_Escape) {
            event->accept();
            return true;
        }
    }
    return QStyledItemDelegate::eventFilter(object, event);
}
