#include "ui/window/MainWindowController.h"

#include "core/PreferenceKeys.h"
#include "core/PreferencesStore.h"
#include "ui/components/Theme.h"
#include "ui/window/MainWindow.h"
#include "ui/window/WindowFrame.h"

#include <QGuiApplication>
#include <QScreen>

namespace tallowmere {

MainWindowController::MainWindowController(WindowServices services, QObject* parent)
    : QObject(parent)
    , preferences_(services.preferences)
    , window_(std::make_unique<MainWindow>(Theme::desktopTheme(), std::move(services)))
{
    restoreFrame();
    connect(window_.get(), &MainWindow::closed, this, [this] {
        saveFrame();
        emit closed();
    });
}

MainWindowController::~MainWindowController()
{
    // Quitting with the window open keeps where it was, as closing it does.
    if (window_->isVisible())
        saveFrame();
}

void MainWindowController::restoreFrame()
{
    const auto saved = windowFrame::parse(preferences_.readString(keys::mainWindowFrame).valueOr(QString()));
    QList<QRect> screens;
    for (const QScreen* screen : QGuiApplication::screens())
        screens.append(screen->availableGeometry());
    const QScreen* primary = QGuiApplication::primaryScreen();
    const QRect primaryArea = primary ? primary->availableGeometry() : QRect(QPoint(0, 0), windowFrame::defaultSize);
    window_->setGeometry(windowFrame::restore(saved, screens, primaryArea));
}

void MainWindowController::saveFrame()
{
    preferences_.setValue(keys::mainWindowFrame, windowFrame::format(window_->geometry()));
}

void MainWindowController::showWindow()
{
    window_->setWindowState(window_->windowState() & ~Qt::WindowMinimized);
    window_->show();
    window_->raise();
    // On X11 this asks the window manager for activation (_NET_ACTIVE_WINDOW); one that
    // prevents focus stealing may mark the window as wanting attention instead.
    window_->activateWindow();
}

} // namespace tallowmere
