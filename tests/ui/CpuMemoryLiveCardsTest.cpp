#include "monitors/CPUMonitoringService.h"
#include "monitors/MemoryMonitoringService.h"
#include "tests/ui/WindowTestKit.h"
#include "ui/components/AreaGraph.h"
#include "ui/live/ProcessList.h"

#include <atomic>

#include <gtest/gtest.h>

namespace tallowmere {
namespace {

using namespace std::chrono_literals;

// The CPU monitor fed with a steady half load and one process using half a processor.
struct CpuPage : test::LivePageKit {
    std::atomic<int> tickReads = 0;
    std::atomic<int> walks = 0;
    CPUMonitoringService cpu{std::make_unique<CPUMonitor>(
        CPUSources{[this] {
                       const auto n = static_cast<std::uint32_t>(tickReads++);
                       return std::optional<CPUTicks>(CPUTicks{10 * n, 0, 10 * n, 0});
                   },
                   [this] {
                       const int walk = walks++;
                       ProcessSnapshot snapshot;
                       snapshot.time = std::chrono::system_clock::time_point{} + 2s * walk;
                       snapshot.cpuTime[42] = 1'000'000'000ull * static_cast<std::uint64_t>(walk);
                       snapshot.memory[42] = 3u << 20;
                       snapshot.names[42] = QStringLiteral("compiler");
                       return snapshot;
                   }},
        scheduler)};

    CpuPage()
    {
        WindowServices services = kit.services();
        services.cpu = &cpu;
        build(SpecCategory::cpu, services);
    }
};

TEST(CpuLiveCards, SampleOnlyWhileShownAndFillFromTheirSecondRound)
{
    CpuPage p;
    p.advance(10s);
    EXPECT_FALSE(p.cpu.pageActive());
    EXPECT_EQ(p.tickReads.load(), 0) << "a page behind another samples nothing";
    EXPECT_EQ(p.walks.load(), 0);

    p.stack->setCurrentWidget(p.page);
    EXPECT_TRUE(p.cpu.pageActive());
    ASSERT_NE(p.cpu.monitor().processTask(), nullptr);
    auto* graph = p.page->findChild<AreaGraph*>(QStringLiteral("historyGraph"));
    auto* list = p.page->findChild<ProcessList*>();
    ASSERT_TRUE(graph && list);
    EXPECT_TRUE(graph->isCollecting());
    EXPECT_TRUE(list->showsEmptyText());
    EXPECT_EQ(list->emptyText(), QStringLiteral("Collecting process data\u2026"));

    p.advance(0s);  // the first walk is only the baseline
    EXPECT_TRUE(list->showsEmptyText());
    p.advance(2s);
    EXPECT_FALSE(graph->isCollecting());
    EXPECT_EQ(p.text("headline"), QStringLiteral("50%"));
    EXPECT_EQ(p.text("legend:User"), QStringLiteral("50%"));
    EXPECT_EQ(p.text("legend:System"), QStringLiteral("0%"));
    ASSERT_FALSE(list->showsEmptyText());
    const QModelIndex row = list->model().index(0, 0);
    EXPECT_EQ(row.data().toString(), QStringLiteral("compiler"));
    EXPECT_EQ(row.data(ProcessTableModel::DetailRole).toString(), QStringLiteral("PID 42"));
    EXPECT_EQ(list->model().index(0, 1).data().toString(), QStringLiteral("50.0%"));
    EXPECT_EQ(list->model().index(0, 2).data().toString(), QStringLiteral("3.0 MB"));

    p.stack->setCurrentWidget(p.other);
    EXPECT_FALSE(p.cpu.pageActive());
    EXPECT_EQ(p.cpu.monitor().monitoringTask(), nullptr);
    EXPECT_EQ(p.cpu.monitor().processTask(), nullptr);
    EXPECT_TRUE(list->showsEmptyText()) << "leaving drops the list; a return starts afresh";
    const int walks = p.walks.load();
    p.advance(10s);
    EXPECT_EQ(p.walks.load(), walks);
}

struct MemoryPage : test::LivePageKit {
    MemoryCounters counters{16ull << 30, 6ull << 30, 1ull << 30, 1ull << 29};
    std::atomic<int> collections = 0;
    MemoryMonitoringService memory{std::make_unique<MemoryMonitor>(
        MemorySources{[this] { return std::optional<MemoryCounters>(counters); },
                      [this] {
                          ++collections;
                          return ProgramMemoryMap{{QStringLiteral("firefox-esr"), {2ull << 30, 9}},
                                                  {QStringLiteral("bash"), {4ull << 20, 3}}};
                      }},
        scheduler)};

    MemoryPage()
    {
        WindowServices services = kit.services();
        services.memory = &memory;
        build(SpecCategory::ram, services);
    }
};

TEST(MemoryLiveCards, ShowTheSplitOfUsedMemoryAndTheProgramsOnceRead)
{
    MemoryPage p;
    auto* list = p.page->findChild<ProcessList*>();
    ASSERT_NE(list, nullptr);
    EXPECT_EQ(list->emptyText(), QStringLiteral("Reading process memory\u2026"));
    p.advance(10s);
    EXPECT_EQ(p.collections.load(), 0) << "a page behind another samples nothing";

    p.stack->setCurrentWidget(p.page);
    p.advance(0s);
    EXPECT_TRUE(p.memory.pageActive());
    EXPECT_EQ(p.text("figure:Used"), QStringLiteral("7.5 GB"));
    EXPECT_EQ(p.text("figure:Free"), QStringLiteral("8.5 GB"));
    EXPECT_EQ(p.text("legend:Active"), QStringLiteral("6.0 GB"));
    EXPECT_EQ(p.text("legend:Wired"), QStringLiteral("1.0 GB"));
    EXPECT_EQ(p.text("legend:Compressed"), QStringLiteral("0.5 GB"));
    ASSERT_EQ(list->model().rowCount(), 2);
    EXPECT_EQ(list->model().index(0, 0).data().toString(), QStringLiteral("firefox-esr"));
    EXPECT_EQ(list->model().index(0, 2).data().toString(), QStringLiteral("12.5%"));

    p.stack->setCurrentWidget(p.other);
    EXPECT_FALSE(p.memory.pageActive());
    EXPECT_EQ(p.memory.monitor().perProcessTask(), nullptr);
}

} // namespace
} // namespace tallowmere
