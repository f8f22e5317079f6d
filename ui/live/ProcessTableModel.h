#pragma once

#include <QAbstractTableModel>
#include <QList>
#include <QString>

#include <array>
#include <functional>

namespace tallowmere {

// One line of a process list, keyed by what identifies it across refreshes (a pid, or a
// program name). The two figures are both sort keys and what the figure columns show.
struct ProcessTableRow {
    QString key;
    QString name;
    QString detail;   // the quiet line under the name ("PID 812"); may be empty
    QString badge;    // a small count beside the name; may be empty
    std::array<double, 2> figures{};
    bool operator==(const ProcessTableRow&) const = default;
};

// How one list looks: the headers and formats of its two figure columns, which column a
// header click sorts by (a share column sorts like the memory it is a share of), and how many
// rows it keeps.
struct ProcessTableLayout {
    std::array<QString, 2> figureHeaders;
    std::array<std::function<QString(double)>, 2> formats;
    std::array<int, 3> sortColumnOf{0, 1, 2};
    int rowLimit = 1000;
};

// The rows of a process list, sorted and cut to the row limit. A refresh keeps each row's
// identity: rows that stay are updated in place, the others removed or inserted, and a new
// order is a layout change that carries persistent indexes along, so a view keeps its
// selection and scroll position. Ascending order is by the figure or the case-insensitive
// name, ties broken by name and then key; descending is exactly its reverse.
class ProcessTableModel : public QAbstractTableModel {
    Q_OBJECT
public:
    static constexpr int nameColumn = 0;
    enum Role { DetailRole = Qt::UserRole + 1, BadgeRole, KeyRole };

    explicit ProcessTableModel(ProcessTableLayout layout, QObject* parent = nullptr);

    void setRows(QList<ProcessTableRow> rows);
    const QList<ProcessTableRow>& rows() const { return shown_; }
    int sortColumn() const { return sortColumn_; }
    Qt::SortOrder sortOrder() const { return sortOrder_; }

    int rowCount(const QModelIndex& parent = {}) const override;
    int columnCount(const QModelIndex& parent = {}) const override;
    QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    // The one entry point of the sort state: the header and the "Sort by" menu both land here.
    void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;

signals:
    void sortChanged(int column, Qt::SortOrder order);

private:
    QList<ProcessTableRow> sortedAndCut(QList<ProcessTableRow> rows) const;
    void removeRowsMissingFrom(const QList<ProcessTableRow>& target);
    void appendRowsNewIn(const QList<ProcessTableRow>& target);
    void reorderTo(QList<ProcessTableRow> target);

    ProcessTableLayout layout_;
    QList<ProcessTableRow> latest_;  // the last rows handed in, uncut, for re-sorting
    QList<ProcessTableRow> shown_;
    int sortColumn_ = 1;
    Qt::SortOrder sortOrder_ = Qt::DescendingOrder;
};

} // namespace tallowmere
