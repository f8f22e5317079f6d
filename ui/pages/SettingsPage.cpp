#include "ui/pages/SettingsPage.h"

#include "ui/components/Label.h"
#include "core/AppSettings.h"
#include "core/BuildInfo.h"
#include "server/StatsServer.h"
#include "ui/components/Card.h"
#include "ui/components/Icons.h"
#include "ui/components/InfoRow.h"
#include "ui/components/Switch.h"
#include "ui/components/Theme.h"
#include "ui/pages/InventoryPage.h"
#include "update/UpdateService.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QSignalBlocker>

namespace tallowmere {

namespace {

void setCheckedQuietly(Switch* control, bool checked)
{
    const QSignalBlocker blocker(control);
    control->setChecked(checked);
    control->update();
}

} // namespace

SettingsPage::SettingsPage(const Theme& theme, AppSettings& settings, StatsServer& server, UpdateService& updates,
                           LaunchAtLogin launchAtLogin, QWidget* parent)
    : QWidget(parent)
    , theme_(theme)
    , settings_(settings)
    , server_(server)
    , updates_(updates)
    , launchAtLogin_(std::move(launchAtLogin))
    , menuBarSwitch_(new Switch(theme, this))
    , recordingSwitch_(new Switch(theme, this))
    , loginSwitch_(new Switch(theme, this))
    , serverSwitch_(new Switch(theme, this))
{
    setObjectName(QStringLiteral("page:Settings"));
    texts_ = makeSettingsTexts({.version = QString::fromLatin1(build::version), .build = QString::number(build::buildNumber)});
    const QColor accent = theme.colors.accent;

    auto* content = new QWidget;
    auto* layout = new QVBoxLayout(content);
    const int margin = theme.spacing.section + 10;
    layout->setContentsMargins(margin, margin, margin, margin);
    layout->setSpacing(theme.spacing.section);
    layout->addWidget(makePageHeader(theme, QStringLiteral("gearshape"), theme.colors.secondaryText,
                                     QStringLiteral("Settings"), texts_.buildLine, content));

    auto* menuBar = new Card(theme, QStringLiteral("Menu Bar"), QStringLiteral("menubar.rectangle"), accent, content);
    menuBar->body()->addWidget(makeSwitchRow(QStringLiteral("Show Stats in Menu Bar"),
        QStringLiteral("Displays live CPU, memory, and disk usage with gauge icons in the menu bar."), menuBarSwitch_));
    layout->addWidget(menuBar);

    auto* network = new Card(theme, QStringLiteral("Network Monitoring"), QStringLiteral("antenna.radiowaves.left.and.right"),
                             accent, content);
    network->body()->addWidget(makeSwitchRow(QStringLiteral("Record Network Activity"),
        QStringLiteral("Keeps tracking per-app network usage in the background and saves it to a local database, so "
                       "history is available even when you're not on the Network page."), recordingSwitch_));
    network->body()->addWidget(makeSwitchRow(QStringLiteral("Launch at Login"),
        QStringLiteral("Starts Tallowmere automatically so network recording isn't interrupted by reboots."), loginSwitch_));
    layout->addWidget(network);

    auto* agent = new Card(theme, QStringLiteral("Agent Access"), QStringLiteral("sparkles"), accent, content);
    agent->body()->addWidget(makeSwitchRow(QStringLiteral("Enable MCP Server"),
        QStringLiteral("Runs a built-in MCP server on a loopback address so an AI agent (Cursor, Claude, etc.) can read "
                       "live system stats. No extra software needed."), serverSwitch_));
    agent->body()->addWidget(makeServerBlock());
    layout->addWidget(agent);

    auto* update = new Card(theme, QStringLiteral("Software Update"), QStringLiteral("arrow.down.circle"), accent, content);
    update->body()->addWidget(makeUpdateSection());
    layout->addWidget(update);

    auto* about = new Card(theme, QStringLiteral("About"), QStringLiteral("info.circle"), accent, content);
    about->body()->addWidget(new InfoRow(theme, QStringLiteral("Version"), texts_.version, false, false, about));
    about->body()->addWidget(new InfoRow(theme, QStringLiteral("Build Number"), texts_.build, false, false, about));
    layout->addWidget(about);
    layout->addStretch(1);

    auto* outer = new QVBoxLayout(this);
    outer->setContentsMargins(0, 0, 0, 0);
    outer->addWidget(makeScrollingPage(theme, content, this));

    loginSwitch_->setChecked(launchAtLogin_.status() == LaunchAtLogin::Status::enabled);
    connect(menuBarSwitch_, &Switch::toggled, &settings_, &AppSettings::setMenuBarEnabled);
    connect(recordingSwitch_, &Switch::toggled, &settings_, &AppSettings::setNetworkRecordingEnabled);
    connect(serverSwitch_, &Switch::toggled, &settings_, &AppSettings::setLocalServerEnabled);
    connect(loginSwitch_, &Switch::toggled, this, &SettingsPage::setLaunchAtLogin);
    for (auto signal : {&AppSettings::menuBarEnabledChanged, &AppSettings::localServerEnabledChanged,
                        &AppSettings::networkRecordingEnabledChanged})
        connect(&settings_, signal, this, &SettingsPage::refresh);
    connect(&server_, &StatsServer::isRunningChanged, this, &SettingsPage::refresh);
    connect(&server_, &StatsServer::lastErrorChanged, this, &SettingsPage::refresh);
    connect(&updates_, &UpdateService::stateChanged, this, &SettingsPage::refresh);
    refresh();
}

QWidget* SettingsPage::makeSwitchRow(const QString& title, const QString& description, Switch* control)
{
    auto* row = new QWidget(this);
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(0, theme_.spacing.tight, 0, theme_.spacing.tight);
    layout->setSpacing(theme_.spacing.large);
    auto* texts = new QVBoxLayout;
    texts->setSpacing(2);
    texts->addWidget(makeLabel(title, Theme::font(10.5, QFont::Medium), theme_.colors.text, row));
    QLabel* detail = makeLabel(description, Theme::font(9.5), theme_.colors.secondaryText, row);
    detail->setWordWrap(true);
    texts->addWidget(detail);
    layout->addLayout(texts, 1);
    control->setObjectName(QStringLiteral("switch:") + title);
    control->setAccessibleName(title);
    control->setParent(row);
    layout->addWidget(control, 0, Qt::AlignVCenter);
    return row;
}

QWidget* SettingsPage::makeServerBlock()
{
    serverBlock_ = new QWidget(this);
    serverBlock_->setObjectName(QStringLiteral("serverBlock"));
    auto* layout = new QVBoxLayout(serverBlock_);
    layout->setContentsMargins(0, theme_.spacing.small, 0, 0);
    layout->setSpacing(theme_.spacing.small);

    auto* status = new QHBoxLayout;
    serverStatus_ = makeLabel(QString(), Theme::font(10, QFont::Medium), theme_.colors.text, serverBlock_);
    serverStatus_->setObjectName(QStringLiteral("serverStatus"));
    endpoint_ = makeLabel(QString(), Theme::monoFont(10), theme_.colors.secondaryText, serverBlock_);
    endpoint_->setObjectName(QStringLiteral("endpoint"));
    endpoint_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    status->addWidget(serverStatus_);
    status->addStretch(1);
    status->addWidget(endpoint_);
    layout->addLayout(status);

    errorRow_ = new QWidget(serverBlock_);
    auto* error = new QHBoxLayout(errorRow_);
    error->setContentsMargins(0, 0, 0, 0);
    error->addWidget(makeLabel(QStringLiteral("Error"), Theme::font(10, QFont::DemiBold), theme_.colors.critical, errorRow_));
    errorText_ = makeLabel(QString(), Theme::font(10), theme_.colors.critical, errorRow_);
    errorText_->setObjectName(QStringLiteral("serverError"));
    errorText_->setWordWrap(true);
    error->addWidget(errorText_, 1);
    layout->addWidget(errorRow_);

    layout->addWidget(makeLabel(QStringLiteral("Add to your MCP client config:"), Theme::font(9.5), theme_.colors.secondaryText,
                                serverBlock_));
    config_ = makeLabel(QString(), Theme::monoFont(9.5), theme_.colors.text, serverBlock_);
    config_->setObjectName(QStringLiteral("clientConfig"));
    config_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    config_->setMargin(theme_.spacing.medium);
    config_->setAutoFillBackground(true);
    QPalette block = config_->palette();
    block.setColor(QPalette::Window, theme_.colors.window);
    config_->setPalette(block);
    layout->addWidget(config_);

    QPushButton* copy = makeActionButton(theme_, QStringLiteral("Copy config"), false, serverBlock_);
    copy->setObjectName(QStringLiteral("copyConfig"));
    copy->setIcon(Icons::tintedIcon(QStringLiteral("doc.on.doc"), theme_.colors.text, 14));
    connect(copy, &QPushButton::clicked, this, &SettingsPage::copyConfig);
    layout->addWidget(copy, 0, Qt::AlignLeft);
    return serverBlock_;
}

QWidget* SettingsPage::makeUpdateSection()
{
    auto* box = new QWidget(this);
    auto* layout = new QHBoxLayout(box);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(theme_.spacing.medium);
    updateBusy_ = new QProgressBar(box);
    updateBusy_->setRange(0, 0);
    updateBusy_->setFixedWidth(60);
    updateBusy_->setTextVisible(false);
    layout->addWidget(updateBusy_);
    auto* texts = new QVBoxLayout;
    updateHeadline_ = makeLabel(QString(), Theme::font(10.5, QFont::Medium), theme_.colors.text, box);
    updateHeadline_->setObjectName(QStringLiteral("updateHeadline"));
    updateHeadline_->setWordWrap(true);
    updateDetail_ = makeLabel(QString(), Theme::font(9.5), theme_.colors.secondaryText, box);
    updateDetail_->setObjectName(QStringLiteral("updateDetail"));
    texts->addWidget(updateHeadline_);
    texts->addWidget(updateDetail_);
    layout->addLayout(texts, 1);
    updateButton_ = makeActionButton(theme_, QString(), true, box);
    updateButton_->setObjectName(QStringLiteral("updateButton"));
    connect(updateButton_, &QPushButton::clicked, this, [this] {
        if (updates_.state().is(UpdateState::Kind::available))
            updates_.installUpdate();
        else
            updates_.checkForUpdates(true);
    });
    layout->addWidget(updateButton_, 0, Qt::AlignVCenter);
    return box;
}

void SettingsPage::setLaunchAtLogin(bool enabled)
{
    const bool ok = enabled ? launchAtLogin_.registerItem() : launchAtLogin_.unregisterItem();
    // A failure is not announced: the switch just shows what is really set up.
    if (!ok)
        setCheckedQuietly(loginSwitch_, launchAtLogin_.status() == LaunchAtLogin::Status::enabled);
}

quint16 SettingsPage::shownPort() const
{
    return server_.isRunning() && server_.listeningPort() != 0 ? server_.listeningPort() : server_.port();
}

void SettingsPage::refresh()
{
    texts_ = makeSettingsTexts({.serverEnabled = settings_.localServerEnabled(),
                                .serverRunning = server_.isRunning(),
                                .port = shownPort(),
                                .serverError = server_.lastError(),
                                .update = updates_.state(),
                                .version = QString::fromLatin1(build::version),
                                .build = QString::number(build::buildNumber)});
    setCheckedQuietly(menuBarSwitch_, settings_.menuBarEnabled());
    setCheckedQuietly(recordingSwitch_, settings_.networkRecordingEnabled());
    setCheckedQuietly(serverSwitch_, settings_.localServerEnabled());

    serverBlock_->setVisible(texts_.showServerBlock);
    serverStatus_->setText(QStringLiteral("\u25CF ") + texts_.serverStatus);
    QPalette statusPalette = serverStatus_->palette();
    statusPalette.setColor(QPalette::WindowText, server_.isRunning() ? theme_.colors.battery : theme_.colors.warning);
    serverStatus_->setPalette(statusPalette);
    endpoint_->setText(texts_.endpoint);
    errorRow_->setVisible(texts_.serverError.has_value());
    errorText_->setText(texts_.serverError.value_or(QString()));
    config_->setText(texts_.clientConfig);

    const UpdateSection& update = texts_.update;
    updateHeadline_->setText(update.headline);
    updateDetail_->setText(update.detail.value_or(QString()));
    updateDetail_->setVisible(update.detail.has_value());
    updateBusy_->setVisible(update.busy);
    updateButton_->setVisible(update.button.has_value());
    updateButton_->setText(update.button.value_or(QString()));
    updateButton_->setAccessibleName(updateButton_->text());
}

void SettingsPage::copyConfig()
{
    QGuiApplication::clipboard()->setText(texts_.clientConfig);
}

} // namespace tallowmere
