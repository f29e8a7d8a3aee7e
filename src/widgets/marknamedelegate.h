#pragma once

#include <QPointer>
#include <QStyledItemDelegate>

class QTreeWidget;

/// Cells of a marks table, and the editors of its names. Return and Escape stay in the editor: without that the tab's
/// window-wide keys would fire the transport. What is typed survives a change of the name elsewhere. One editor is open
/// at a time.
class MarkNameDelegate : public QStyledItemDelegate {
    Q_OBJECT

public:
    explicit MarkNameDelegate(QTreeWidget* parent);

    /// Closes an open editor and drops what was typed.
    void Cancel();

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option, const QModelIndex& index) const override;
    void setEditorData(QWidget* editor, const QModelIndex& index) const override;

protected:
    bool eventFilter(QObject* object, QEvent* event) override;

private:
    mutable QPointer<QWidget> Editor;
    mutable bool IsFilled = false;
};
