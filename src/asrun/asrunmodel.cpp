#include "asrun/asrunmodel.h"

#include "text/librarywords.h"
#include "text/timetext.h"

#include <QColor>
#include <QDateTime>

#include <algorithm>
#include <iterator>
#include <utility>

namespace {

using Zorvic::AsRunEntry;

QString KindText(Zorvic::AsRunKind kind) {
    switch (kind) {
        case Zorvic::ZORVIC_ASRUN_STARTED:
            return AsRunModel::tr("Unit started");
        case Zorvic::ZORVIC_ASRUN_STOPPED:
            return AsRunModel::tr("Unit stopped");
        case Zorvic::ZORVIC_ASRUN_GAP:
            return AsRunModel::tr("Gap");
        case Zorvic::ZORVIC_ASRUN_LOST:
            return AsRunModel::tr("Lost");
        case Zorvic::ZORVIC_ASRUN_CLOCK:
            return AsRunModel::tr("Clock set");
        default: {
            QString text = LibraryWord(Zorvic::AsRunKindText(kind));
            return text.replace(0, 1, text.left(1).toUpper());
        }
    }
}

QString WallText(AsRunEntry::WallTime time) {
    const auto milliseconds = std::chrono::floor<std::chrono::milliseconds>(time.time_since_epoch()).count();
    return QDateTime::fromMSecsSinceEpoch(milliseconds).toString(QStringLiteral("yyyy-MM-dd HH:mm:ss.zzz"));
}

QString PositionText(const AsRunEntry& entry) {
    if (!entry.RemainingMS) return {};
    return ClockText(*entry.RemainingMS) +
           QStringLiteral(".%1").arg(*entry.RemainingMS % 1000, 3, 10, QLatin1Char('0'));
}

QString AskerText(const AsRunEntry& entry) {
    if (entry.Client.empty()) return QString::fromStdString(entry.Address);
    const QString name = QString::fromStdString(entry.Client);
    const QString address = QString::fromStdString(entry.Address);
    return entry.Certified ? AsRunModel::tr("%1 (certified), %2").arg(name, address)
                           : QStringLiteral("%1, %2").arg(name, address);
}

QString DetailText(const AsRunEntry& entry) {
    const QString text = QString::fromStdString(entry.Text).simplified();
    return entry.From ? AsRunModel::tr("from %1: %2").arg(WallText(*entry.From), text) : text;
}

bool IsTrouble(const AsRunEntry& entry) {
    return entry.Kind == Zorvic::ZORVIC_ASRUN_FAULT || entry.Kind == Zorvic::ZORVIC_ASRUN_GAP ||
           entry.Kind == Zorvic::ZORVIC_ASRUN_LOST || entry.Shown == Zorvic::ZORVIC_SHOWN_NOT;
}

}  // namespace

AsRunModel::Row AsRunModel::MakeRow(AsRunEntry entry) {
    const QString preset = QString::fromStdString(entry.Preset).simplified();
    std::array<QString, COLUMN_COUNT> cells = {
        WallText(entry.Wall),
        KindText(entry.Kind),
        entry.PK == 0 ? QString() : QStringLiteral("%1  %2").arg(entry.PK).arg(preset),
        PositionText(entry),
        AskerText(entry),
        LibraryWord(Zorvic::AsRunShownText(entry)),
        DetailText(entry)};
    return {std::move(entry), std::move(cells)};
}

void AsRunModel::Clear() {
    beginResetModel();
    Rows.clear();
    endResetModel();
}

// Most are new and come in their order: those are added in one step.
void AsRunModel::Add(std::vector<AsRunEntry> entries, bool trim) {
    std::ranges::sort(entries, {}, &AsRunEntry::Number);
    const std::uint64_t last = Rows.empty() ? 0 : Rows.back().Entry.Number;
    const auto added = std::ranges::upper_bound(entries, last, {}, &AsRunEntry::Number);
    for (auto known = entries.begin(); known != added; ++known)
        Merge(std::move(*known));
    const auto duplicates = std::ranges::unique(added, entries.end(), {}, &AsRunEntry::Number);
    entries.erase(duplicates.begin(), duplicates.end());
    if (added != entries.end()) {
        const auto count = static_cast<int>(std::distance(added, entries.end()));
        beginInsertRows({}, rowCount(), rowCount() + count - 1);
        std::transform(std::make_move_iterator(added), std::make_move_iterator(entries.end()), std::back_inserter(Rows),
                       &AsRunModel::MakeRow);
        endInsertRows();
    }
    if (rowCount() > (trim ? MostRows : 2 * MostRows)) Trim(rowCount() - MostRows);
}

void AsRunModel::Merge(AsRunEntry entry) {
    const auto numberOf = [](const Row& row) { return row.Entry.Number; };
    const auto place = std::ranges::lower_bound(Rows, entry.Number, {}, numberOf);
    const int row = static_cast<int>(place - Rows.begin());
    if (place != Rows.end() && place->Entry.Number == entry.Number) {
        *place = MakeRow(std::move(entry));
        emit dataChanged(index(row, 0), index(row, COLUMN_COUNT - 1));
        return;
    }
    beginInsertRows({}, row, row);
    Rows.insert(place, MakeRow(std::move(entry)));
    endInsertRows();
}

void AsRunModel::Trim(int count) {
    beginRemoveRows({}, 0, count - 1);
    Rows.erase(Rows.begin(), Rows.begin() + count);
    endRemoveRows();
}

bool AsRunModel::Holds(int row, const QStringList& words) const {
    const auto& cells = Rows[static_cast<std::size_t>(row)].Cells;
    return std::all_of(words.begin(), words.end(), [&](const QString& word) {
        return std::any_of(cells.begin(), cells.end(),
                           [&](const QString& cell) { return cell.contains(word, Qt::CaseInsensitive); });
    });
}

int AsRunModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(Rows.size());
}

int AsRunModel::columnCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : static_cast<int>(COLUMN_COUNT);
}

QVariant AsRunModel::data(const QModelIndex& index, int role) const {
    if (!index.isValid()) return {};
    const Row& row = Rows[static_cast<std::size_t>(index.row())];
    const QString& cell = row.Cells[static_cast<std::size_t>(index.column())];
    if (role == Qt::DisplayRole) return cell;
    if (role == Qt::ToolTipRole && !cell.isEmpty()) return QString(cell.toHtmlEscaped());
    if (role == Qt::ForegroundRole && IsTrouble(row.Entry)) return QColor(0xE8, 0x8A, 0x4E);
    if (role == Qt::TextAlignmentRole && index.column() == POSITION)
        return static_cast<int>(Qt::AlignRight | Qt::AlignVCenter);
    return {};
}

QVariant AsRunModel::headerData(int section, Qt::Orientation orientation, int role) const {
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole) return {};
    const std::array<QString, COLUMN_COUNT> names = {tr("Time"),     tr("What"),  tr("Preset"), tr("Remaining"),
                                                     tr("Asked by"), tr("Shown"), tr("Details")};
    return names[static_cast<std::size_t>(section)];
}
