#pragma once

#include "update/UpdateState.h"

#include <QString>

#include <optional>

namespace tallowmere {

// What the settings page needs to know besides the switches themselves.
struct SettingsInputs {
    bool serverEnabled = false;
    bool serverRunning = false;
    quint16 port = 0;
    std::optional<QString> serverError{};
    UpdateState update{};
    QString version{}; // empty when unknown
    QString build{};   // empty when unknown
};

// The software-update section for one update state.
struct UpdateSection {
    QString headline{};
    std::optional<QString> detail{};
    std::optional<QString> button{}; // "Check for Updates", "Update Now" or "Try Again"
    bool busy = false;             // a progress indicator beside the headline

    bool operator==(const UpdateSection&) const = default;
};

// The settings page's texts for one moment.
struct SettingsTexts {
    QString buildLine{};
    bool showServerBlock = false;
    QString serverStatus{};
    QString endpoint{};
    std::optional<QString> serverError{};
    QString clientConfig{};
    UpdateSection update{};
    QString version{};
    QString build{};
};

SettingsTexts makeSettingsTexts(const SettingsInputs& inputs);
// The address agents are given; the copied configuration holds the same text.
QString mcpEndpoint(quint16 port);
// The configuration block offered for copying into an agent's MCP client.
QString mcpClientConfig(quint16 port);

} // namespace tallowmere
