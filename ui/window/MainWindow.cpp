#include "ui/window/MainWindow.h"

#include "ui/components/Icons.h"
#include "ui/components/Theme.h"
#include "ui/live/LiveCards.h"
#include "ui/pages/InventoryPage.h"
#include "ui/pages/SettingsPage.h"
#include "update/UpdateService.h"

#include <QAction>
#include <QCloseEvent>
#include <QCoreApplication>
#include <QLabel>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QSplitter>
#include <QStackedWidget>
#include <QTimer>
#include <QToolBar>
#include <QVBoxLayout>

#include <tuple>

namespace tallowmere {

namespace {

// Sidebar rows carry the page they select: 0...12 the categories in order, 13 settings.
constexpr int settingsKey = 13;
constexpr int headerKey = -1;

int keyOf(const SidebarSelection& selection)
{
    return selection.settings ? settingsKey : static_cast<int>(selection.category);
}

SidebarSelection selectionOf(int key)
{
    return key == settingsKey ? SidebarSelection::settingsPage() : SidebarSelection::forCategory(static_cast<SpecCategory>(key));
}

QColor sidebarColor(const Theme& theme)
{
    return theme.dark ? theme.colors.window.lighter(125) : theme.colors.window.darker(103);
}

QString hex(const QColor& c)
{
    return c.name(QColor::HexArgb);
}

QString sidebarStyle(const Theme& theme)
{
    const QColor selected = Theme::withOpacity(theme.colors.accent, theme.dark ? 0.30 : 0.16);
    return QStringLiteral("QListWidget { background: %1; border: none; outline: none; }"
                          "QListWidget::item { padding: 5px 8px; border-radius: 7px; margin: 1px 8px; }"
                          "QListWidget::item:selected { background: %2; color: %3; }"
                          "QListWidget::item:hover:!selected { background: %4; }")
        .arg(hex(sidebarColor(theme)), hex(selected), hex(theme.colors.text), hex(theme.colors.cardHover));
}

QString toolbarStyle(const Theme& theme)
{
    return QStringLiteral("QToolBar { background: %1; border: none; border-bottom: 1px solid %2; padding: 4px 8px;"
                          " spacing: 4px; }"
                          "QToolButton { border: none; border-radius: 6px; padding: 4px; }"
                          "QToolButton:hover { background: %3; }")
        .arg(hex(sidebarColor(theme)), hex(theme.colors.separator), hex(theme.colors.cardHover));
}

// Plain Qt widgets (scroll bars, the alert) drawn in the theme's colours.
QPalette windowPalette(const Theme& theme)
{
    QPalette palette;
    const Theme::Colors& c = theme.colors;
    palette.setColor(QPalette::Window, c.window);
    palette.setColor(QPalette::WindowText, c.text);
    palette.setColor(QPalette::Base, c.card);
    palette.setColor(QPalette::AlternateBase, c.cardHover);
    palette.setColor(QPalette::Text, c.text);
    palette.setColor(QPalette::Button, c.card);
    palette.setColor(QPalette::ButtonText, c.text);
    palette.setColor(QPalette::Highlight, c.accent);
    palette.setColor(QPalette::HighlightedText, Qt::white);
    palette.setColor(QPalette::PlaceholderText, c.tertiaryText);
    palette.setColor(QPalette::ToolTipBase, c.card);
    palette.setColor(QPalette::ToolTipText, c.text);
    palette.setColor(QPalette::Light, c.cardHover);
    palette.setColor(QPalette::Midlight, c.track);
    palette.setColor(QPalette::Mid, c.track);
    palette.setColor(QPalette::Dark, c.window.darker(130));
    palette.setColor(QPalette::Shadow, QColor(0, 0, 0, 80));
    palette.setColor(QPalette::Disabled, QPalette::WindowText, c.tertiaryText);
    palette.setColor(QPalette::Disabled, QPalette::Text, c.tertiaryText);
    palette.setColor(QPalette::Disabled, QPalette::ButtonText, c.tertiaryText);
    return palette;
}

// What the detail column shows while nothing is selected.
QWidget* makeNoSelection(const Theme& theme, QWidget* parent)
{
    auto* box = new QWidget(parent);
    box->setObjectName(QStringLiteral("emptySelection"));
    auto* layout = new QVBoxLayout(box);
    layout->addStretch(1);
    auto* icon = new QLabel(box);
    icon->setPixmap(Icons::tinted(QStringLiteral("square.grid.2x2"), theme.colors.tertiaryText, 48, box->devicePixelRatioF()));
    layout->addWidget(icon, 0, Qt::AlignHCenter);
    for (const auto& [text, font, color] :
         {std::tuple(QStringLiteral("Select a Category"), Theme::font(16, QFont::DemiBold), theme.colors.text),
          std::tuple(QStringLiteral("Choose a section from the sidebar to view system details."), Theme::font(11),
                     theme.colors.secondaryText)}) {
        auto* label = new QLabel(text, box);
        label->setFont(font);
        QPalette palette = label->palette();
        palette.setColor(QPalette::WindowText, color);
        label->setPalette(palette);
        layout->addWidget(label, 0, Qt::AlignHCenter);
    }
    layout->addStretch(1);
    return box;
}

} // namespace

MainWindow::MainWindow(const Theme& theme, WindowServices services, QWidget* parent)
    : QMainWindow(parent)
    , theme_(theme)
    , services_(std::move(services))
    , inputs_(services_.gatherInputs ? services_.gatherInputs() : PageInputs{})
{
    setObjectName(QStringLiteral("TallowmereMainWindow"));
    setWindowTitle(QStringLiteral("Tallowmere"));
    setMinimumSize(1080, 720);
    setPalette(windowPalette(theme));
    setAutoFillBackground(true);

    buildToolbar();
    auto* splitter = new QSplitter(this);
    splitter->setChildrenCollapsible(false);
    splitter->setHandleWidth(1);
    buildSidebar();
    splitter->addWidget(sidebar_);
    stack_ = new QStackedWidget(splitter);
    emptyState_ = makeNoSelection(theme, stack_);
    stack_->addWidget(emptyState_);
    splitter->addWidget(stack_);
    splitter->setStretchFactor(1, 1);
    splitter->setSizes({240, 1040});
    setCentralWidget(splitter);

    connect(&services_.updateService, &UpdateService::stateChanged, this, &MainWindow::onUpdateStateChanged);
    select(SidebarSelection::forCategory(SpecCategory::summary));
    onUpdateStateChanged();
}

MainWindow::~MainWindow() = default;

void MainWindow::buildToolbar()
{
    auto* toolbar = new QToolBar(this);
    toolbar->setObjectName(QStringLiteral("TallowmereMainToolbar"));
    toolbar->setMovable(false);
    toolbar->setFloatable(false);
    toolbar->setToolButtonStyle(Qt::ToolButtonIconOnly);
    toolbar->setIconSize(QSize(18, 18));
    toolbar->setStyleSheet(toolbarStyle(theme_));
    toolbar->toggleViewAction()->setEnabled(false);
    setContextMenuPolicy(Qt::NoContextMenu);
    const QColor ink = theme_.colors.text;

    back_ = toolbar->addAction(Icons::tintedIcon(QStringLiteral("chevron.left"), ink, 18), QStringLiteral("Back"));
    back_->setShortcut(QKeySequence(Qt::ALT | Qt::Key_Left));
    connect(back_, &QAction::triggered, this, &MainWindow::goBack);
    forward_ = toolbar->addAction(Icons::tintedIcon(QStringLiteral("chevron.right"), ink, 18), QStringLiteral("Forward"));
    forward_->setShortcut(QKeySequence(Qt::ALT | Qt::Key_Right));
    connect(forward_, &QAction::triggered, this, &MainWindow::goForward);
    refresh_ = toolbar->addAction(Icons::tintedIcon(QStringLiteral("arrow.clockwise"), ink, 18), QStringLiteral("Refresh"));
    refresh_->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_R));
    refresh_->setToolTip(QStringLiteral("Refresh (Ctrl+R)"));
    connect(refresh_, &QAction::triggered, this, &MainWindow::refresh);
    addToolBar(Qt::TopToolBarArea, toolbar);

    auto* close = new QAction(this);
    close->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_W));
    connect(close, &QAction::triggered, this, &QWidget::close);
    auto* quit = new QAction(this);
    quit->setShortcut(QKeySequence(Qt::CTRL | Qt::Key_Q));
    connect(quit, &QAction::triggered, qApp, &QCoreApplication::quit);
    addActions({close, quit});
}

void MainWindow::buildSidebar()
{
    sidebar_ = new QListWidget(this);
    sidebar_->setObjectName(QStringLiteral("sidebar"));
    sidebar_->setAccessibleName(QStringLiteral("Categories"));
    sidebar_->setMinimumWidth(240);
    sidebar_->setMaximumWidth(320);
    sidebar_->setIconSize(QSize(18, 18));
    sidebar_->setFont(Theme::font(10.5));
    sidebar_->setStyleSheet(sidebarStyle(theme_));
    sidebar_->setFrameShape(QFrame::NoFrame);
    sidebar_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);

    addSidebarHeader(QString());
    for (SpecCategory category : allSpecCategories())
        if (categorySection(category) == QLatin1String("Overview"))
            addSidebarRow(static_cast<int>(category), categoryIcon(category), categoryTitle(category));
    for (const QString& section : sidebarSections()) {
        addSidebarHeader(section);
        for (SpecCategory category : allSpecCategories())
            if (categorySection(category) == section)
                addSidebarRow(static_cast<int>(category), categoryIcon(category), categoryTitle(category));
    }
    addSidebarHeader(QString());
    addSidebarRow(settingsKey, QStringLiteral("gearshape"), QStringLiteral("Settings"));
    connect(sidebar_, &QListWidget::itemSelectionChanged, this, &MainWindow::onSidebarSelectionChanged);
}

void MainWindow::addSidebarHeader(const QString& title)
{
    auto* item = new QListWidgetItem(title, sidebar_);
    item->setFlags(Qt::NoItemFlags);
    item->setData(Qt::UserRole, headerKey);
    item->setFont(Theme::font(9, QFont::DemiBold));
    item->setForeground(theme_.colors.secondaryText);
    item->setSizeHint(QSize(0, title.isEmpty() ? 8 : 30));
}

void MainWindow::addSidebarRow(int key, const QString& icon, const QString& title)
{
    const QColor accent = key == settingsKey ? theme_.colors.secondaryText : categoryAccent(static_cast<SpecCategory>(key), theme_);
    auto* item = new QListWidgetItem(Icons::tintedIcon(icon, accent, 18), title, sidebar_);
    item->setData(Qt::UserRole, key);
    item->setSizeHint(QSize(0, 32));
}

void MainWindow::select(std::optional<SidebarSelection> selection)
{
    if (!selection) {
        sidebar_->clearSelection();
        return;
    }
    for (int row = 0; row < sidebar_->count(); ++row) {
        QListWidgetItem* item = sidebar_->item(row);
        if (item->data(Qt::UserRole).toInt() == keyOf(*selection)) {
            sidebar_->setCurrentItem(item);
            return;
        }
    }
}

void MainWindow::onSidebarSelectionChanged()
{
    const QList<QListWidgetItem*> chosen = sidebar_->selectedItems();
    std::optional<SidebarSelection> selection;
    if (!chosen.isEmpty() && chosen.first()->data(Qt::UserRole).toInt() != headerKey)
        selection = selectionOf(chosen.first()->data(Qt::UserRole).toInt());
    history_.select(selection);
    showPage(selection);
    updateActions();
}

void MainWindow::goBack()
{
    if (const auto selection = history_.goBack()) {
        select(*selection);
        // The flag is cleared after the selection change above has been handled.
        QTimer::singleShot(0, this, [this] { history_.finishHistoryStep(); });
    }
    updateActions();
}

void MainWindow::goForward()
{
    if (const auto selection = history_.goForward()) {
        select(*selection);
        QTimer::singleShot(0, this, [this] { history_.finishHistoryStep(); });
    }
    updateActions();
}

void MainWindow::updateActions()
{
    back_->setEnabled(history_.canGoBack());
    forward_->setEnabled(history_.canGoForward());
}

void MainWindow::showPage(const std::optional<SidebarSelection>& selection)
{
    QWidget* page = selection ? pageFor(*selection) : emptyState_;
    stack_->setCurrentWidget(page);
    emit pageShown(page);
}

QWidget* MainWindow::pageFor(const SidebarSelection& selection)
{
    const int key = keyOf(selection);
    if (QWidget* page = pages_.value(key))
        return page;
    QWidget* page = nullptr;
    if (selection.settings)
        page = new SettingsPage(theme_, services_.settings, services_.statsServer, services_.updateService,
                                services_.launchAtLogin, stack_);
    else {
        auto* inventory = new InventoryPage(theme_, makeSpecPage(selection.category, inputs_), stack_);
        if (inventory->record().hasLiveCards) {
            if (services_.addLiveCards)
                services_.addLiveCards(selection.category, *inventory);
            else
                addLiveCards(theme_, services_, selection.category, *inventory);
        }
        page = inventory;
    }
    stack_->addWidget(page);
    pages_.insert(key, page);
    return page;
}

QWidget* MainWindow::currentPage() const
{
    return stack_->currentWidget();
}

void MainWindow::refresh()
{
    if (services_.gatherInputs)
        inputs_ = services_.gatherInputs();
    for (auto it = pages_.cbegin(); it != pages_.cend(); ++it)
        if (auto* page = qobject_cast<InventoryPage*>(it.value()))
            page->setRecord(makeSpecPage(page->record().category, inputs_));
}

void MainWindow::onUpdateStateChanged()
{
    const UpdateState& state = services_.updateService.state();
    if (!alertGate_.shouldPresent(state))
        return;
    delete alert_;
    alert_ = new QMessageBox(QMessageBox::Information, QStringLiteral("Update Available"),
                             updateAlertMessage(state.availableUpdate() ? state.availableUpdate()->version : QString()),
                             QMessageBox::NoButton, this);
    alert_->setObjectName(QStringLiteral("updateAlert"));
    QPushButton* now = alert_->addButton(QStringLiteral("Update Now"), QMessageBox::AcceptRole);
    alert_->addButton(QStringLiteral("Later"), QMessageBox::RejectRole);
    connect(now, &QPushButton::clicked, &services_.updateService, &UpdateService::installUpdate);
    alert_->open();
}

void MainWindow::closeEvent(QCloseEvent* event)
{
    // The window is kept for the next reopen; only hidden.
    event->accept();
    hide();
    emit closed();
}

} // namespace tallowmere
