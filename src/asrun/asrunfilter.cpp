#include "asrun/asrunfilter.h"

#include "asrun/asrunmodel.h"

void AsRunFilter::SetText(const QString& text) {
    Words = text.split(QLatin1Char(' '), Qt::SkipEmptyParts);
    invalidateFilter();
}

bool AsRunFilter::filterAcceptsRow(int row, const QModelIndex& /*parent*/) const {
    return static_cast<const AsRunModel*>(sourceModel())->Holds(row, Words);
}
