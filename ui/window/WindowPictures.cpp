#include "ui/window/WindowPictures.h"

#include "ui/live/UsageHistoryCard.h"
#include "ui/pages/InventoryPage.h"
#include "ui/window/MainWindow.h"

#include <QAbstractButton>
#include <QApplication>
#include <QEventLoop>
#include <QLayout>
#include <QScrollArea>
#include <QTimer>

#include <memory>
#include <vector>

namespace tallowmere {

namespace {

QString fileName(const QString& title, const QString& suffix)
{
    QString name = title.toLower().replace(u' ', u'-');
    return QStringLiteral("window-") + name + (suffix.isEmpty() ? QString() : u'-' + suffix) + QStringLiteral(".png");
}

std::unique_ptr<MainWindow> openWindow(const Theme& theme, const WindowServices& services)
{
    auto window = std::make_unique<MainWindow>(theme, services);
    window->resize(1280, 860);
    window->show();
    return window;
}

void runEventsFor(std::chrono::milliseconds time)
{
    QEventLoop loop;
    QTimer::singleShot(time, &loop, &QEventLoop::quit);
    loop.exec();
}

bool hasLiveCards(const MainWindow& window)
{
    const auto* page = qobject_cast<const InventoryPage*>(window.currentPage());
    return page && page->record().hasLiveCards;
}

// Switches the usage history to the week and waits (a few seconds at most) for the store.
void showWeekOfHistory(MainWindow& window)
{
    auto* card = window.currentPage()->findChild<UsageHistoryCard*>();
    if (!card)
        return;
    QEventLoop loop;
    int answers = 0;
    const auto answered = [&] {
        if (++answers == 2)
            loop.quit();
    };
    QObject::connect(&card->model(), &NetworkHistoryViewModel::bucketsChanged, &loop, answered);
    QObject::connect(&card->model(), &NetworkHistoryViewModel::appsChanged, &loop, answered);
    QTimer::singleShot(5000, &loop, &QEventLoop::quit);
    card->rangeButton(HistoryRange::week)->click();
    loop.exec();
    // The busiest app shows its endpoints.
    if (!card->model().apps().empty())
        card->model().toggleExpanded(card->model().apps().front().id);
}

// The page's whole scrolling content, as tall as it needs to be.
QImage wholePage(MainWindow& window)
{
    auto* scroll = window.currentPage()->findChild<QScrollArea*>();
    if (!scroll)
        return window.grab().toImage();
    QWidget* content = scroll->widget();
    // Let rows added a moment ago reach the layouts before asking how tall the page is.
    QApplication::processEvents();
    content->layout()->activate();
    content->resize(content->width(), content->sizeHint().height());
    QApplication::processEvents();
    return content->grab().toImage();
}

} // namespace

QList<std::pair<QString, QImage>> renderWindowPages(WindowServices services, const Theme& theme, const QString& suffix,
                                                    std::chrono::milliseconds sampling)
{
    QList<std::pair<QString, QImage>> pictures;
    const auto take = [&](MainWindow& window, const QString& title) {
        // Cards added after the page appeared need a few passes to settle their layouts.
        for (int pass = 0; pass < 3; ++pass)
            QApplication::processEvents();
        pictures.append({fileName(title, suffix), window.grab().toImage()});
    };
    // The pages without live cards first, in one window; the live ones are set aside.
    QList<SpecCategory> live;
    {
        std::unique_ptr<MainWindow> window = openWindow(theme, services);
        for (SpecCategory category : allSpecCategories()) {
            window->select(SidebarSelection::forCategory(category));
            if (hasLiveCards(*window))
                live.append(category);
            else
                take(*window, categoryTitle(category));
        }
        window->select(SidebarSelection::settingsPage());
        take(*window, QStringLiteral("Settings"));
    }
    std::vector<std::unique_ptr<MainWindow>> windows;
    for (SpecCategory category : live) {
        windows.push_back(openWindow(theme, services));
        windows.back()->select(SidebarSelection::forCategory(category));
    }
    runEventsFor(sampling);
    for (qsizetype i = 0; i < live.size(); ++i) {
        MainWindow& window = *windows[static_cast<std::size_t>(i)];
        take(window, categoryTitle(live[i]));
        // Live cards run below the window's height; each page is also drawn whole.
        if (live[i] == SpecCategory::network)
            showWeekOfHistory(window);
        pictures.append({fileName(categoryTitle(live[i]) + QStringLiteral(" full"), suffix), wholePage(window)});
    }
    return pictures;
}

} // namespace tallowmere
