#include "monitors/CPUMonitoringService.h"
#include "ui/live/WhileShown.h"

#include <QStackedWidget>
#include <QWidget>

#include <gtest/gtest.h>

namespace tallowmere {
namespace {

// A window holding two pages, the way the main window stacks them.
struct TwoPages {
    // Declared first so it outlives the window, whose closing still reports a change.
    QList<bool> changes;
    QWidget window;
    QStackedWidget* stack = new QStackedWidget(&window);
    QWidget* first = new QWidget;
    QWidget* second = new QWidget;

    TwoPages()
    {
        stack->addWidget(first);
        stack->addWidget(second);
        whileShown(second, [this](bool shown) { changes.append(shown); });
    }
};

TEST(WhileShown, FollowsThePageThroughSwitchesClosingAndDestruction)
{
    TwoPages pages;
    pages.window.show();
    EXPECT_TRUE(pages.changes.isEmpty()) << "a page behind another is not shown";

    pages.stack->setCurrentWidget(pages.second);
    pages.stack->setCurrentWidget(pages.second);
    EXPECT_EQ(pages.changes, QList<bool>({true})) << "once per change";

    pages.stack->setCurrentWidget(pages.first);
    pages.stack->setCurrentWidget(pages.second);
    pages.window.close();
    EXPECT_EQ(pages.changes, QList<bool>({true, false, true, false}));

    pages.window.show();
    EXPECT_EQ(pages.changes.last(), true) << "reopening the window shows the page it left on";
    delete pages.second;
    EXPECT_EQ(pages.changes.last(), false) << "a destroyed page reports itself gone";
}

TEST(WhileShown, TheServicePageFlagFollowsThePageAndSurvivesTheServiceGoingFirst)
{
    TwoPages pages;
    auto service = std::make_unique<CPUMonitoringService>();
    demandWhileShown(pages.second, service.get());
    pages.window.show();
    EXPECT_FALSE(service->pageActive());
    pages.stack->setCurrentWidget(pages.second);
    EXPECT_TRUE(service->pageActive());
    pages.window.hide();
    EXPECT_FALSE(service->pageActive());

    pages.window.show();
    service.reset();
    pages.window.hide();
}

} // namespace
} // namespace tallowmere
