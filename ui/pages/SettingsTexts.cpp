#include "ui/pages/SettingsTexts.h"

namespace tallowmere {

namespace {

const QString dash = QStringLiteral("\u2014");

UpdateSection updateSection(const UpdateState& state, const QString& version)
{
    const QString check = QStringLiteral("Check for Updates");
    switch (state.kind()) {
    case UpdateState::Kind::idle: return {QStringLiteral("Version ") + version, std::nullopt, check};
    case UpdateState::Kind::upToDate: return {QStringLiteral("You're up to date."), std::nullopt, check};
    case UpdateState::Kind::checking: return {QStringLiteral("Checking for updates\u2026"), std::nullopt, std::nullopt, true};
    case UpdateState::Kind::available: {
        const QString offered = state.availableUpdate() ? state.availableUpdate()->version : dash;
        return {QStringLiteral("Version ") + offered + QStringLiteral(" is available"), QStringLiteral("You have ") + version,
                QStringLiteral("Update Now")};
    }
    case UpdateState::Kind::downloading: return {QStringLiteral("Downloading update\u2026"), std::nullopt, std::nullopt, true};
    case UpdateState::Kind::installing:
        return {QStringLiteral("Installing\u2026 the app will relaunch."), std::nullopt, std::nullopt, true};
    case UpdateState::Kind::failed: return {state.failureMessage(), std::nullopt, QStringLiteral("Try Again")};
    }
    return {};
}

} // namespace

QString mcpEndpoint(quint16 port)
{
    return QStringLiteral("http://127.0.0.1:") + QString::number(port) + QStringLiteral("/mcp");
}

QString mcpClientConfig(quint16 port)
{
    return QStringLiteral("{\n  \"mcpServers\": {\n    \"system-stats\": {\n      \"url\": \"") + mcpEndpoint(port)
        + QStringLiteral("\"\n    }\n  }\n}");
}

SettingsTexts makeSettingsTexts(const SettingsInputs& in)
{
    SettingsTexts texts;
    texts.version = in.version.isEmpty() ? dash : in.version;
    texts.build = in.build.isEmpty() ? dash : in.build;
    texts.buildLine = QStringLiteral("Build ") + texts.build;
    texts.showServerBlock = in.serverEnabled;
    texts.serverStatus = in.serverRunning ? QStringLiteral("Running") : QStringLiteral("Starting\u2026");
    texts.endpoint = mcpEndpoint(in.port);
    texts.serverError = in.serverError;
    texts.clientConfig = mcpClientConfig(in.port);
    texts.update = updateSection(in.update, texts.version);
    return texts;
}

} // namespace tallowmere
