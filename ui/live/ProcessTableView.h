#pragma once

#include <QColor>
#include <QTableView>

namespace tallowmere {

class ProcessTableModel;
struct Theme;

// The table a process list is shown in: painted rows (name over a quiet detail line, figures
// right-aligned), a quiet header whose clicks sort the model, whole-row single selection.
class ProcessTableView : public QTableView {
    Q_OBJECT
public:
    static constexpr int rowHeight = 34;
    static constexpr int headerHeight = 26;

    ProcessTableView(const Theme& theme, QColor accent, ProcessTableModel* model, QWidget* parent = nullptr);

    // The two figure columns' widths; the name column takes the rest.
    void setFigureWidths(int first, int second);
    // Tall enough for `rows` rows below the header; more rows scroll.
    void setVisibleRows(int rows);
};

} // namespace tallowmere
