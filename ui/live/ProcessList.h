#pragma once

#include "ui/live/ProcessTableModel.h"

#include <QList>
#include <QWidget>

class QActionGroup;
class QLabel;
class QMenu;
class QStackedWidget;
class QToolButton;

namespace tallowmere {

class ProcessTableView;
struct Theme;

// One entry of the "Sort by" menu: its label and the column it sorts.
struct SortChoice {
    QString label;
    int column = 0;
};

// A process list as both live pages show it: the "Sort by" menu, the table, and a message in
// its place while there are no rows. The menu and the header clicks drive the one sort state
// the model keeps, and each shows what the other chose. The menu's button is the owner's to
// place (a card puts it in its title row).
class ProcessList : public QWidget {
    Q_OBJECT
public:
    ProcessList(const Theme& theme, QColor accent, ProcessTableLayout layout, QList<SortChoice> choices,
                int visibleRows, QWidget* parent = nullptr);

    void setRows(QList<ProcessTableRow> rows);
    // What stands in for the table while it has no rows.
    void setEmptyText(const QString& text);

    ProcessTableModel& model() const { return *model_; }
    ProcessTableView& view() const { return *view_; }
    QMenu& sortMenu() const { return *menu_; }
    QToolButton* sortButton() const { return sortButton_; }
    bool showsEmptyText() const;
    QString emptyText() const;

private:
    void showSort(int column, Qt::SortOrder order);
    void showEmptyOrTable();

    ProcessTableModel* model_;
    ProcessTableView* view_;
    QLabel* empty_;
    QStackedWidget* stack_;
    QMenu* menu_;
    QToolButton* sortButton_;
    QActionGroup* fields_;
    QActionGroup* orders_;
};

} // namespace tallowmere
