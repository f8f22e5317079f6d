#include "tests/ui/TrayTestKit.h"
#include "ui/tray/MenuBarController.h"

#include <QGuiApplication>
#include <QScreen>

#include <gtest/gtest.h>

using namespace tallowmere;

TEST(MenuBarController, OpenAppRaisesAVisibleWindowElseAsksForOneAndQuitEndsTheProgram)
{
    test::TrayTestKit kit;
    MenuBarController controller(test::missingBus());
    int asked = 0;
    int quits = 0;
    controller.openMainWindow = [&] { ++asked; };
    controller.quit = [&] { ++quits; };
    controller.setServices(kit.services());
    controller.installStatusItem();
    ASSERT_TRUE(controller.hasStatusItem());

    controller.togglePopover(QPoint(100, 20));
    ASSERT_TRUE(controller.popover()->isVisible());
    controller.openApp();
    EXPECT_FALSE(controller.popover()->isVisible());
    EXPECT_EQ(asked, 1);

    QWidget window;
    window.show();
    controller.openApp();
    EXPECT_EQ(asked, 1) << "a visible window is only brought forward";

    controller.popover()->onQuit();
    EXPECT_EQ(quits, 1);

    // Off and on again: one item, a fresh popover.
    controller.removeStatusItem();
    EXPECT_FALSE(controller.hasStatusItem());
    EXPECT_EQ(controller.popover(), nullptr);
    controller.installStatusItem();
    EXPECT_TRUE(controller.hasStatusItem());
    EXPECT_NE(controller.popover(), nullptr);
}

TEST(MenuBarStatsPopover, OpensUnderThePointAndStaysOnScreen)
{
    test::TrayTestKit kit;
    MenuBarStatsPopover popover(kit.services());
    const QRect area = QGuiApplication::primaryScreen()->availableGeometry();

    popover.popUp(QPoint(area.center().x(), area.top() + 10));
    EXPECT_EQ(popover.x(), area.center().x() - MenuBarStatsPopover::kSize.width() / 2);
    if (area.height() > MenuBarStatsPopover::kSize.height() + 20) {
        EXPECT_GE(popover.y(), area.top() + 10);
    }

    // A panel in the bottom-right corner: the popover opens upwards and keeps inside.
    popover.hide();
    popover.popUp(area.bottomRight() - QPoint(2, 2));
    EXPECT_TRUE(area.contains(popover.geometry()) || popover.height() > area.height());
    EXPECT_LE(popover.geometry().right(), area.right());
}
