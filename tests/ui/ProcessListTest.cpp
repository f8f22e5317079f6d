#include "ui/components/Theme.h"
#include "ui/live/CpuMemoryFigures.h"
#include "ui/live/ProcessList.h"
#include "ui/live/ProcessTableView.h"

#include <QHeaderView>
#include <QMenu>
#include <QScrollBar>
#include <QSignalSpy>
#include <QTest>

#include <gtest/gtest.h>

namespace tallowmere {
namespace {

ProcessCPUUsage process(std::int32_t pid, const char* name, double cpu, std::uint64_t memory = 0)
{
    return {pid, pid, QString::fromLatin1(name), cpu, memory};
}

QStringList names(const ProcessTableModel& model)
{
    QStringList out;
    for (const ProcessTableRow& row : model.rows())
        out.append(row.name);
    return out;
}

QAction* menuAction(QMenu& menu, const QString& text)
{
    for (QAction* a : menu.actions())
        if (a->text() == text)
            return a;
    return nullptr;
}

struct CpuList {
    ProcessList list{Theme::darkTheme(), Theme::darkTheme().colors.cpu, cpuProcessLayout(),
                     {{QStringLiteral("CPU usage"), 1}, {QStringLiteral("Memory"), 2}, {QStringLiteral("Name"), 0}}, 8};
    ProcessTableModel& model = list.model();
    QHeaderView& header = *list.view().horizontalHeader();

    void clickHeader(int section)
    {
        QTest::mouseClick(header.viewport(), Qt::LeftButton, {},
                          QPoint(header.sectionViewportPosition(section) + 10, header.height() / 2));
    }
};

TEST(ProcessList, MenuAndHeaderDriveOneSortStateAndDescendingIsTheExactReverse)
{
    CpuList l;
    l.list.resize(500, 400);
    l.list.show();
    // Two processes share a name, so the reversal also covers ties.
    l.list.setRows(cpuProcessRows({process(7, "bash", 3), process(3, "Xorg", 9), process(5, "bash", 1),
                                   process(9, "akonadi", 9)}));
    EXPECT_EQ(names(l.model), QStringList({"Xorg", "akonadi", "bash", "bash"}))
        << "busiest first; descending reverses the ascending order, ties included";

    menuAction(l.list.sortMenu(), QStringLiteral("Name"))->trigger();
    menuAction(l.list.sortMenu(), QStringLiteral("Ascending"))->trigger();
    const QList<ProcessTableRow> ascending = l.model.rows();
    EXPECT_EQ(names(l.model), QStringList({"akonadi", "bash", "bash", "Xorg"})) << "names compare without case";
    EXPECT_EQ(l.header.sortIndicatorSection(), 0);
    EXPECT_EQ(l.header.sortIndicatorOrder(), Qt::AscendingOrder);

    l.clickHeader(0);
    EXPECT_EQ(l.model.sortOrder(), Qt::DescendingOrder);
    EXPECT_TRUE(menuAction(l.list.sortMenu(), QStringLiteral("Descending"))->isChecked());
    QList<ProcessTableRow> reversed(ascending.rbegin(), ascending.rend());
    EXPECT_EQ(l.model.rows(), reversed);

    l.clickHeader(2);
    EXPECT_TRUE(menuAction(l.list.sortMenu(), QStringLiteral("Memory"))->isChecked())
        << "a first click on a figure column shows the largest first";
    EXPECT_TRUE(menuAction(l.list.sortMenu(), QStringLiteral("Descending"))->isChecked());
}

TEST(ProcessList, ARefreshUpdatesInPlaceKeepingSelectionAndScrollPosition)
{
    CpuList l;
    l.list.show();
    QList<ProcessCPUUsage> all;
    for (int pid = 1; pid <= 200; ++pid)
        all.append(process(pid, "worker", pid));
    l.list.setRows(cpuProcessRows(all));
    ProcessTableView& view = l.list.view();
    view.selectRow(120);  // pid 80
    view.verticalScrollBar()->setValue(view.verticalScrollBar()->maximum() / 2);
    const int scrolled = view.verticalScrollBar()->value();

    QSignalSpy resets(&l.model, &QAbstractItemModel::modelReset);
    QSignalSpy changed(&l.model, &QAbstractItemModel::dataChanged);
    QSignalSpy removed(&l.model, &QAbstractItemModel::rowsRemoved);
    QSignalSpy inserted(&l.model, &QAbstractItemModel::rowsInserted);

    all[79].cpuPercent = 500;    // pid 80 moves to the top
    all.removeAt(10);            // pid 11 ends
    all.append(process(999, "fresh", 0.5));
    l.list.setRows(cpuProcessRows(all));
    EXPECT_EQ(resets.count(), 0);
    EXPECT_EQ(removed.count(), 1);
    EXPECT_EQ(inserted.count(), 1);
    const QModelIndexList selected = view.selectionModel()->selectedRows();
    ASSERT_EQ(selected.size(), 1);
    EXPECT_EQ(selected.first().row(), 0);
    EXPECT_EQ(selected.first().data(ProcessTableModel::KeyRole).toString(), QStringLiteral("80"));
    EXPECT_EQ(view.verticalScrollBar()->value(), scrolled);

    all[0].cpuPercent = 1.5;     // pid 1 keeps its place above the fresh one
    l.list.setRows(cpuProcessRows(all));
    const int row = l.model.rowCount() - 2;
    ASSERT_EQ(changed.count(), 1) << "same order: only the changed rows are announced";
    EXPECT_EQ(changed.first().at(0).value<QModelIndex>().row(), row);
    EXPECT_EQ(changed.first().at(1).value<QModelIndex>().row(), row);
    EXPECT_EQ(l.model.index(row, 1).data().toString(), QStringLiteral("1.5%"));
}

TEST(ProcessList, MemoryListKeepsFiftyProgramsAndItsShareHeaderSortsByMemory)
{
    ProcessList list(Theme::darkTheme(), Theme::darkTheme().colors.memory, memoryProcessLayout(),
                     {{QStringLiteral("Memory"), 1}, {QStringLiteral("Name"), 0}}, 8);
    QList<ProcessMemoryUsage> programs;
    for (int i = 0; i < 120; ++i)
        programs.append({QStringLiteral("p%1").arg(i), QStringLiteral("p%1").arg(i), std::uint64_t(i) << 20, i / 10.0, i % 3 + 1});
    list.setRows(memoryProcessRows(programs));
    ProcessTableModel& model = list.model();
    ASSERT_EQ(model.rowCount(), 50);
    EXPECT_EQ(model.rows().first().name, QStringLiteral("p119"));
    EXPECT_EQ(model.index(0, 1).data().toString(), QStringLiteral("119 MB"));
    EXPECT_EQ(model.index(0, 2).data().toString(), QStringLiteral("11.9%"));
    EXPECT_EQ(model.index(0, 0).data(ProcessTableModel::BadgeRole).toString(), QStringLiteral("3"));

    model.sort(2, Qt::AscendingOrder);
    EXPECT_EQ(model.sortColumn(), 1);
    EXPECT_EQ(list.view().horizontalHeader()->sortIndicatorSection(), 1);
    EXPECT_EQ(model.rows().first().name, QStringLiteral("p0")) << "the smallest 50 now";
}

} // namespace
} // namespace tallowmere
