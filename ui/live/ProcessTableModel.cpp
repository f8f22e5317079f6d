#include "ui/live/ProcessTableModel.h"

#include <QHash>
#include <QSet>

#include <algorithm>

namespace tallowmere {

namespace {

// Keys compare by length first so that pids order as numbers; program names are unique, so
// for them this only has to be consistent.
int compareKeys(const QString& a, const QString& b)
{
    if (a.size() != b.size())
        return a.size() < b.size() ? -1 : 1;
    return a.compare(b);
}

bool ascendingLess(const ProcessTableRow& a, const ProcessTableRow& b, int column)
{
    if (column != ProcessTableModel::nameColumn) {
        const double x = a.figures[static_cast<std::size_t>(column - 1)];
        const double y = b.figures[static_cast<std::size_t>(column - 1)];
        if (x != y)
            return x < y;
    }
    if (const int byName = a.name.compare(b.name, Qt::CaseInsensitive))
        return byName < 0;
    return compareKeys(a.key, b.key) < 0;
}

int alignmentOf(int column)
{
    return int(column == ProcessTableModel::nameColumn ? Qt::AlignLeft | Qt::AlignVCenter : Qt::AlignRight | Qt::AlignVCenter);
}

} // namespace

ProcessTableModel::ProcessTableModel(ProcessTableLayout layout, QObject* parent)
    : QAbstractTableModel(parent)
    , layout_(std::move(layout))
{
}

int ProcessTableModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : static_cast<int>(shown_.size());
}

int ProcessTableModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : 3;
}

QVariant ProcessTableModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || index.row() >= shown_.size())
        return {};
    const ProcessTableRow& row = shown_[index.row()];
    const int column = index.column();
    switch (role) {
    case Qt::DisplayRole:
        if (column == nameColumn)
            return row.name;
        return layout_.formats[static_cast<std::size_t>(column - 1)](row.figures[static_cast<std::size_t>(column - 1)]);
    case Qt::ToolTipRole:
        return column == nameColumn ? QVariant(row.name) : QVariant();
    case Qt::TextAlignmentRole:
        return alignmentOf(column);
    case DetailRole: return row.detail;
    case BadgeRole: return row.badge;
    case KeyRole: return row.key;
    default: return {};
    }
}

QVariant ProcessTableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || section < 0 || section > 2)
        return {};
    if (role == Qt::DisplayRole)
        return section == nameColumn ? QStringLiteral("Process") : layout_.figureHeaders[static_cast<std::size_t>(section - 1)];
    if (role == Qt::TextAlignmentRole)
        return alignmentOf(section);
    // A first click on a figure column shows the largest first, on the name column A to Z.
    if (role == Qt::InitialSortOrderRole)
        return int(section == nameColumn ? Qt::AscendingOrder : Qt::DescendingOrder);
    return {};
}

void ProcessTableModel::sort(int column, Qt::SortOrder order)
{
    if (column < 0 || column > 2)
        return;
    column = layout_.sortColumnOf[static_cast<std::size_t>(column)];
    if (column == sortColumn_ && order == sortOrder_)
        return;
    sortColumn_ = column;
    sortOrder_ = order;
    QList<ProcessTableRow> target = sortedAndCut(latest_);
    removeRowsMissingFrom(target);
    appendRowsNewIn(target);
    reorderTo(std::move(target));
    emit sortChanged(sortColumn_, sortOrder_);
}

void ProcessTableModel::setRows(QList<ProcessTableRow> rows)
{
    latest_ = std::move(rows);
    QList<ProcessTableRow> target = sortedAndCut(latest_);
    removeRowsMissingFrom(target);
    appendRowsNewIn(target);
    reorderTo(std::move(target));
}

QList<ProcessTableRow> ProcessTableModel::sortedAndCut(QList<ProcessTableRow> rows) const
{
    const int column = sortColumn_;
    std::sort(rows.begin(), rows.end(),
              [column](const ProcessTableRow& a, const ProcessTableRow& b) { return ascendingLess(a, b, column); });
    if (sortOrder_ == Qt::DescendingOrder)
        std::reverse(rows.begin(), rows.end());
    if (rows.size() > layout_.rowLimit)
        rows.resize(layout_.rowLimit);
    return rows;
}

void ProcessTableModel::removeRowsMissingFrom(const QList<ProcessTableRow>& target)
{
    QSet<QString> keep;
    keep.reserve(target.size());
    for (const ProcessTableRow& row : target)
        keep.insert(row.key);
    // From the bottom, one run of leaving rows at a time, so indexes above stay valid.
    int last = static_cast<int>(shown_.size()) - 1;
    while (last >= 0) {
        if (keep.contains(shown_[last].key)) {
            --last;
            continue;
        }
        int first = last;
        while (first > 0 && !keep.contains(shown_[first - 1].key))
            --first;
        beginRemoveRows({}, first, last);
        shown_.remove(first, last - first + 1);
        endRemoveRows();
        last = first - 1;
    }
}

void ProcessTableModel::appendRowsNewIn(const QList<ProcessTableRow>& target)
{
    QSet<QString> present;
    present.reserve(shown_.size());
    for (const ProcessTableRow& row : shown_)
        present.insert(row.key);
    QList<ProcessTableRow> added;
    for (const ProcessTableRow& row : target)
        if (!present.contains(row.key))
            added.append(row);
    if (added.isEmpty())
        return;
    const int first = static_cast<int>(shown_.size());
    beginInsertRows({}, first, first + static_cast<int>(added.size()) - 1);
    shown_.append(std::move(added));
    endInsertRows();
}

// `target` holds the same keys as the shown rows, possibly in another order and with new figures.
void ProcessTableModel::reorderTo(QList<ProcessTableRow> target)
{
    int firstChanged = -1;
    int lastChanged = -1;
    bool sameOrder = true;
    for (qsizetype i = 0; i < target.size(); ++i) {
        if (shown_[i].key != target[i].key) {
            sameOrder = false;
            break;
        }
        if (shown_[i] != target[i]) {
            if (firstChanged < 0)
                firstChanged = static_cast<int>(i);
            lastChanged = static_cast<int>(i);
        }
    }
    if (sameOrder) {
        shown_ = std::move(target);
        if (firstChanged >= 0)
            emit dataChanged(index(firstChanged, 0), index(lastChanged, 2));
        return;
    }
    emit layoutAboutToBeChanged({}, QAbstractItemModel::VerticalSortHint);
    QHash<QString, int> rowOf;
    rowOf.reserve(target.size());
    for (qsizetype i = 0; i < target.size(); ++i)
        rowOf.insert(target[i].key, static_cast<int>(i));
    const QModelIndexList from = persistentIndexList();
    QModelIndexList to;
    to.reserve(from.size());
    for (const QModelIndex& old : from)
        to.append(index(rowOf.value(shown_[old.row()].key), old.column()));
    shown_ = std::move(target);
    changePersistentIndexList(from, to);
    emit layoutChanged({}, QAbstractItemModel::VerticalSortHint);
}

} // namespace tallowmere
