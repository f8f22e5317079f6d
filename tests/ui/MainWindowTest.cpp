#include "WindowTestKit.h"

#include "core/PreferenceKeys.h"
#include "ui/window/MainWindow.h"
#include "ui/window/MainWindowController.h"
#include "ui/window/WindowFrame.h"

#include <QAbstractButton>
#include <QAction>
#include <QCoreApplication>
#include <QGuiApplication>
#include <QMessageBox>
#include <QScreen>
#include <QVBoxLayout>

#include <gtest/gtest.h>

using namespace tallowmere;

namespace {

SidebarSelection page(SpecCategory c)
{
    return SidebarSelection::forCategory(c);
}

struct MainWindowTest : ::testing::Test {
    test::WindowTestKit kit;
    MainWindow window{Theme::darkTheme(), kit.services()};

    QString pageName() const { return window.currentPage()->objectName(); }
    void settle() { QCoreApplication::processEvents(); }
};

} // namespace

TEST_F(MainWindowTest, StartsOnSummaryAndBackAndForwardFollowTheVisitedPages)
{
    EXPECT_EQ(pageName(), "page:Summary");
    EXPECT_FALSE(window.backAction()->isEnabled());
    window.select(page(SpecCategory::cpu));
    window.select(page(SpecCategory::ram));
    window.goBack();
    settle();
    EXPECT_EQ(window.history().selection(), page(SpecCategory::cpu));
    EXPECT_EQ(pageName(), "page:CPU");
    EXPECT_TRUE(window.forwardAction()->isEnabled());

    // A new selection drops the RAM entry ahead.
    window.select(page(SpecCategory::storage));
    EXPECT_FALSE(window.forwardAction()->isEnabled());
    EXPECT_EQ(window.history().entries(),
              QList<SidebarSelection>({page(SpecCategory::summary), page(SpecCategory::cpu), page(SpecCategory::storage)}));

    // The current page again adds nothing.
    window.select(page(SpecCategory::storage));
    EXPECT_EQ(window.history().entries().size(), 3);

    // Back then forward returns to the same page without new entries.
    window.goBack();
    settle();
    window.goForward();
    settle();
    EXPECT_EQ(window.history().selection(), page(SpecCategory::storage));
    EXPECT_EQ(window.history().entries().size(), 3);
    EXPECT_FALSE(window.history().isHistoryNavigation());
    EXPECT_FALSE(window.forwardAction()->isEnabled());

    window.select(SidebarSelection::settingsPage());
    EXPECT_EQ(pageName(), "page:Settings");
    window.select(std::nullopt);
    EXPECT_EQ(pageName(), "emptySelection");
    QStringList texts;
    for (const QLabel* label : window.currentPage()->findChildren<QLabel*>())
        texts << label->text();
    EXPECT_TRUE(texts.contains("Select a Category"));
    EXPECT_TRUE(texts.contains("Choose a section from the sidebar to view system details."));
    EXPECT_EQ(window.history().entries().size(), 4) << "clearing the selection records nothing";
}

TEST(MainWindow, LivePagesGetTheirLiveCardsOnceWhenFirstShown)
{
    test::WindowTestKit kit;
    QList<SpecCategory> filled;
    WindowServices services = kit.services();
    services.addLiveCards = [&filled](SpecCategory category, InventoryPage& page) {
        filled.append(category);
        page.liveCardsLayout()->addWidget(new QLabel(QStringLiteral("live")));
    };
    MainWindow window(Theme::darkTheme(), std::move(services));
    for (SpecCategory category : allSpecCategories())
        window.select(SidebarSelection::forCategory(category));
    window.select(SidebarSelection::forCategory(SpecCategory::cpu));
    EXPECT_EQ(filled, QList<SpecCategory>({SpecCategory::cpu, SpecCategory::ram, SpecCategory::battery, SpecCategory::storage,
                                            SpecCategory::camera, SpecCategory::network}));
}

TEST_F(MainWindowTest, RefreshGathersAgainAndUpdatesBuiltPages)
{
    EXPECT_EQ(kit.gatherings, 1);
    window.select(page(SpecCategory::operatingSystem));
    kit.inputs.info.osComputerName = QStringLiteral("heron");
    window.refreshAction()->trigger();
    EXPECT_EQ(kit.gatherings, 2);
    const auto* page = qobject_cast<InventoryPage*>(window.currentPage());
    ASSERT_NE(page, nullptr);
    EXPECT_EQ(page->record().cards[0].rows[1].value, "heron");
}

TEST_F(MainWindowTest, UpdateAlertAppearsOncePerOffer)
{
    AvailableUpdate update;
    update.version = QStringLiteral("2.1");
    const UpdateState offer = UpdateState::available(update);
    kit.updates.setState(offer);
    settle();
    QMessageBox* alert = window.updateAlert();
    ASSERT_NE(alert, nullptr);
    EXPECT_TRUE(alert->isVisible());
    EXPECT_EQ(alert->windowTitle(), "Update Available");
    EXPECT_EQ(alert->text(), "Tallowmere 2.1 is available. The app will update and relaunch automatically.");
    QStringList buttons;
    for (QAbstractButton* b : alert->buttons())
        buttons << b->text();
    EXPECT_TRUE(buttons.contains("Update Now") && buttons.contains("Later"));

    for (QAbstractButton* b : alert->buttons())
        if (b->text() == "Later")
            b->click();
    settle();
    EXPECT_FALSE(alert->isVisible());
    EXPECT_EQ(kit.updates.state(), offer) << "Later only dismisses";

    kit.updates.setState(UpdateState::checking());
    EXPECT_EQ(window.updateAlert(), alert) << "no alert outside the available state";
    kit.updates.setState(offer);
    EXPECT_NE(window.updateAlert(), alert) << "a new offer after a change of state alerts again";
}

TEST(WindowFrame, RestoresOnlyUsableFrames)
{
    const QRect screen(0, 0, 1920, 1080);
    EXPECT_EQ(windowFrame::restore(std::nullopt, {screen}, screen), QRect(320, 110, 1280, 860));
    EXPECT_EQ(windowFrame::restore(QRect(10, 10, 800, 600), {screen}, screen), QRect(320, 110, 1280, 860));
    EXPECT_EQ(windowFrame::restore(QRect(100, 50, 1200, 800), {screen}, screen), QRect(100, 50, 1200, 800));
    // Left on a screen that is gone: same size, back on the primary screen.
    EXPECT_EQ(windowFrame::restore(QRect(2500, 40, 1200, 800), {screen}, screen), QRect(360, 140, 1200, 800));
    EXPECT_EQ(windowFrame::restore(QRect(2500, 40, 1200, 800), {screen, QRect(1920, 0, 1920, 1080)}, screen),
              QRect(2500, 40, 1200, 800));

    EXPECT_EQ(windowFrame::parse(windowFrame::format(QRect(-5, 7, 1300, 900))), QRect(-5, 7, 1300, 900));
    EXPECT_EQ(windowFrame::parse(QStringLiteral("1 2 3")), std::nullopt);
    EXPECT_EQ(windowFrame::parse(QStringLiteral("a b c d")), std::nullopt);
}

TEST(MainWindowController, SmallSavedFrameOpensAtDefaultSizeAndClosingSavesTheFrame)
{
    test::WindowTestKit kit;
    kit.preferences.setValue(keys::mainWindowFrame, QStringLiteral("0 0 800 600"));
    MainWindowController controller(kit.services());
    EXPECT_EQ(controller.window().geometry().size(), QSize(1280, 860));
    const QRect available = QGuiApplication::primaryScreen()->availableGeometry();
    EXPECT_EQ(controller.window().geometry().center(), QRect(QPoint(), QSize(1280, 860)).translated(
        available.center() - QRect(QPoint(), QSize(1280, 860)).center()).center());

    controller.showWindow();
    controller.window().setGeometry(40, 60, 1100, 760);
    int closedCount = 0;
    QObject::connect(&controller, &MainWindowController::closed, [&closedCount] { ++closedCount; });
    controller.window().close();
    EXPECT_FALSE(controller.window().isVisible());
    EXPECT_EQ(closedCount, 1);
    EXPECT_EQ(kit.preferences.readString(keys::mainWindowFrame).value, "40 60 1100 760");
}
