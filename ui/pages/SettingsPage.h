#pragma once

#include "core/LaunchAtLogin.h"
#include "ui/pages/SettingsTexts.h"

#include <QWidget>

class QLabel;
class QProgressBar;
class QPushButton;

namespace tallowmere {

class AppSettings;
class StatsServer;
class Switch;
class UpdateService;
struct Theme;

// The program's switches, the agent server's address and client configuration, updates and
// the version. The switches write the preferences; AppServices applies them.
class SettingsPage : public QWidget {
    Q_OBJECT
public:
    SettingsPage(const Theme& theme, AppSettings& settings, StatsServer& server, UpdateService& updates,
                 LaunchAtLogin launchAtLogin, QWidget* parent = nullptr);

    const SettingsTexts& texts() const { return texts_; }
    // Puts the client configuration on the system clipboard as plain text.
    void copyConfig();

private:
    QWidget* makeSwitchRow(const QString& title, const QString& description, Switch* control);
    QWidget* makeServerBlock();
    QWidget* makeUpdateSection();
    void setLaunchAtLogin(bool enabled);
    void refresh();
    quint16 shownPort() const;

    const Theme& theme_;
    AppSettings& settings_;
    StatsServer& server_;
    UpdateService& updates_;
    LaunchAtLogin launchAtLogin_;
    SettingsTexts texts_;

    Switch* menuBarSwitch_;
    Switch* recordingSwitch_;
    Switch* loginSwitch_;
    Switch* serverSwitch_;
    QWidget* serverBlock_ = nullptr;
    QLabel* serverStatus_ = nullptr;
    QLabel* endpoint_ = nullptr;
    QWidget* errorRow_ = nullptr;
    QLabel* errorText_ = nullptr;
    QLabel* config_ = nullptr;
    QLabel* updateHeadline_ = nullptr;
    QLabel* updateDetail_ = nullptr;
    QProgressBar* updateBusy_ = nullptr;
    QPushButton* updateButton_ = nullptr;
};

} // namespace tallowmere
