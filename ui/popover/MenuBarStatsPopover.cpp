#include "ui/popover/MenuBarStatsPopover.h"

#include "history/NetworkMonitoringService.h"
#include "monitors/CPUMonitoringService.h"
#include "monitors/MemoryMonitoringService.h"
#include "power/BatteryMonitoringService.h"
#include "ui/components/HoverButton.h"
#include "ui/components/SectionLabel.h"
#include "ui/components/Theme.h"
#include "ui/popover/AudioSection.h"
#include "ui/popover/PowerSections.h"
#include "ui/popover/SystemSection.h"
#include "ui/tray/StripRenderer.h"

#include <QEvent>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QPainter>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QVBoxLayout>

namespace tallowmere {

MenuBarStatsPopover::MenuBarStatsPopover(const TrayServices& services, QWidget* parent)
    : QWidget(parent, Qt::Tool | Qt::FramelessWindowHint | Qt::WindowStaysOnTopHint)
    , services_(services)
{
    const Theme& theme = Theme::darkTheme();
    setObjectName(QStringLiteral("popover"));
    setWindowTitle(QStringLiteral("Tallowmere"));
    setAccessibleName(QStringLiteral("Tallowmere dashboard"));
    setFixedSize(kSize);
    QPalette palette;
    palette.setColor(QPalette::Window, theme.colors.window);
    palette.setColor(QPalette::Base, theme.colors.window);
    palette.setColor(QPalette::WindowText, theme.colors.text);
    palette.setColor(QPalette::Text, theme.colors.text);
    palette.setColor(QPalette::Button, theme.colors.card);
    palette.setColor(QPalette::ButtonText, theme.colors.text);
    setPalette(palette);
    setAutoFillBackground(true);

    auto* scroll = new QScrollArea(this);
    scroll->setFrameShape(QFrame::NoFrame);
    scroll->setWidgetResizable(true);
    scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    // A thin, quiet scroll bar: the desktop's own would be light on the dark panel.
    scroll->verticalScrollBar()->setStyleSheet(QStringLiteral(
        "QScrollBar:vertical { background: transparent; width: 8px; margin: 2px; }"
        "QScrollBar::handle:vertical { background: rgba(255, 255, 255, 56); border-radius: 2px; min-height: 32px; }"
        "QScrollBar::add-line:vertical, QScrollBar::sub-line:vertical { height: 0; }"
        "QScrollBar::add-page:vertical, QScrollBar::sub-page:vertical { background: none; }"));
    scroll->setWidget(buildContent(services));
    readStrip();
    auto* outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    outer->addWidget(scroll);

    connect(&services_.cpu->monitor(), &CPUMonitor::historyChanged, this, &MenuBarStatsPopover::refreshStrip);
    connect(&services_.memory->monitor(), &MemoryMonitor::historyChanged, this, &MenuBarStatsPopover::refreshStrip);
    connect(&services_.network->monitor(), &NetworkMonitor::historyChanged, this, &MenuBarStatsPopover::refreshStrip);
    connect(services_.battery, &BatteryMonitoringService::batteryChanged, this, &MenuBarStatsPopover::refreshStrip);
}

QWidget* MenuBarStatsPopover::buildContent(const TrayServices& s)
{
    const Theme& theme = Theme::darkTheme();
    auto* content = new QWidget;
    content->setAutoFillBackground(true);
    content->setPalette(palette());
    auto* column = new QVBoxLayout(content);
    column->setContentsMargins(theme.spacing.large, theme.spacing.medium, theme.spacing.large, theme.spacing.large);
    column->setSpacing(theme.spacing.medium);

    strip_ = new StripWidget(theme.colors.text, content);
    column->addWidget(strip_, 0, Qt::AlignHCenter);
    column->addWidget(new Separator(theme, Qt::Horizontal, content));
    column->addWidget(new SectionLabel(theme, QStringLiteral("System"), {}, content));
    column->addWidget(new SystemSection(theme, *s.cpu, *s.memory, *s.disk, *s.network, *s.battery, content));
    column->addWidget(new Separator(theme, Qt::Horizontal, content));
    column->addWidget(new AudioSection(theme, *s.audio, content));
    column->addWidget(new Separator(theme, Qt::Horizontal, content));
    column->addWidget(new SleepWakeSection(theme, *s.power, content));
    column->addWidget(new Separator(theme, Qt::Horizontal, content));
    column->addWidget(new KeepAwakeSection(theme, *s.keepAwake, content));
    column->addWidget(new Separator(theme, Qt::Horizontal, content));

    auto* footer = new QHBoxLayout;
    footer->setSpacing(theme.spacing.small);
    auto* open = new HoverButton(theme, QStringLiteral("Open Tallowmere"), content);
    open->setObjectName(QStringLiteral("openApp"));
    auto* quit = new HoverButton(theme, QStringLiteral("Quit"), content);
    quit->setObjectName(QStringLiteral("quit"));
    connect(open, &HoverButton::clicked, this, [this] {
        if (onOpenApp)
            onOpenApp();
    });
    connect(quit, &HoverButton::clicked, this, [this] {
        if (onQuit)
            onQuit();
    });
    footer->addWidget(open, 1);
    footer->addWidget(quit, 1);
    column->addLayout(footer);
    column->addStretch();
    return content;
}

void MenuBarStatsPopover::refreshStrip()
{
    // A closed popover draws nothing; showing it reads the figures afresh.
    if (isVisible())
        readStrip();
}

void MenuBarStatsPopover::readStrip()
{
    strip_->setFigures(StripFigures::read(*services_.cpu, *services_.memory, *services_.network, *services_.battery));
}

void MenuBarStatsPopover::popUp(QPoint anchor)
{
    QScreen* screen = QGuiApplication::screenAt(anchor);
    if (!screen)
        screen = QGuiApplication::primaryScreen();
    QRect area = screen ? screen->availableGeometry() : QRect(QPoint(0, 0), kSize);
    QPoint topLeft(anchor.x() - kSize.width() / 2, anchor.y() + 4);
    // A panel at the bottom of the screen reports a point near the bottom edge: open upwards.
    if (topLeft.y() + kSize.height() > area.bottom())
        topLeft.setY(anchor.y() - 4 - kSize.height());
    topLeft.setX(std::clamp(topLeft.x(), area.left(), std::max(area.left(), area.right() - kSize.width())));
    topLeft.setY(std::clamp(topLeft.y(), area.top(), std::max(area.top(), area.bottom() - kSize.height())));
    move(topLeft);
    show();
    raise();
    activateWindow();
}

bool MenuBarStatsPopover::event(QEvent* event)
{
    // Clicking anywhere else closes the popover, as a menu would.
    if (event->type() == QEvent::WindowDeactivate && isVisible())
        hide();
    return QWidget::event(event);
}

void MenuBarStatsPopover::showEvent(QShowEvent* event)
{
    readStrip();
    QWidget::showEvent(event);
}

void MenuBarStatsPopover::hideEvent(QHideEvent* event)
{
    QWidget::hideEvent(event);
    emit closed();
}

} // namespace tallowmere
