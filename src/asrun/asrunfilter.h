#pragma once

#include <QSortFilterProxyModel>
#include <QStringList>

/// The rows of an as-run sheet that hold all words of a text.
class AsRunFilter : public QSortFilterProxyModel {
    Q_OBJECT

public:
    using QSortFilterProxyModel::QSortFilterProxyModel;

    void SetText(const QString& text);

protected:
    bool filterAcceptsRow(int row, const QModelIndex& parent) const override;

private:
    QStringList Words;
};
