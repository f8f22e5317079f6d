#include "app/CommandLine.h"

namespace tallowmere {

namespace {

std::optional<bool> parseSwitch(const QString& text)
{
    const QString lower = text.toLower();
    if (lower == u"on")
        return true;
    if (lower == u"off")
        return false;
    return std::nullopt;
}

// The options that choose what this start does instead of opening the window.
std::optional<RunOptions::Mode> runMode(const QString& name)
{
    if (name == u"--headless")
        return RunOptions::Mode::headless;
    if (name == u"--snapshot")
        return RunOptions::Mode::snapshot;
    if (name == u"--check-update")
        return RunOptions::Mode::checkUpdate;
    return std::nullopt;
}

} // namespace

CommandLineResult parseCommandLine(const QStringList& arguments)
{
    RunOptions options;
    bool headlessOnlyOptionSeen = false;
    for (qsizetype i = 1; i < arguments.size(); ++i) {
        const QString& argument = arguments[i];
        // Accept both "--port 9000" and "--port=9000".
        QString name = argument;
        std::optional<QString> inlineValue;
        if (const qsizetype eq = argument.indexOf(u'='); argument.startsWith(u"--") && eq > 0) {
            name = argument.left(eq);
            inlineValue = argument.mid(eq + 1);
        }
        auto takeValue = [&]() -> std::optional<QString> {
            if (inlineValue)
                return inlineValue;
            if (i + 1 < arguments.size())
                return arguments[++i];
            return std::nullopt;
        };

        if (name == u"--help" || name == u"-h") {
            options.mode = RunOptions::Mode::help;
        } else if (const auto mode = runMode(name)) {
            if (options.mode != RunOptions::Mode::gui && options.mode != *mode && options.mode != RunOptions::Mode::help)
                return {std::nullopt, QStringLiteral("--headless, --snapshot and --check-update go one at a time")};
            if (options.mode != RunOptions::Mode::help)
                options.mode = *mode;
        } else if (name == u"--history") {
            const auto value = takeValue();
            if (!value || (options.mode != RunOptions::Mode::gui && options.mode != RunOptions::Mode::help))
                return {std::nullopt, QStringLiteral("--history takes a range (1H, 24H, 7D or 30D) and goes alone")};
            if (options.mode != RunOptions::Mode::help)
                options.mode = RunOptions::Mode::history;
            options.historyRange = *value;
        } else if (name == u"--server" || name == u"--record") {
            const auto value = takeValue();
            const auto flag = value ? parseSwitch(*value) : std::nullopt;
            if (!flag)
                return {std::nullopt, QStringLiteral("%1 takes \"on\" or \"off\"").arg(name)};
            (name == u"--server" ? options.server : options.record) = flag;
            headlessOnlyOptionSeen = true;
        } else if (name == u"--pictures") {
            const auto value = takeValue();
            if (!value || value->isEmpty())
                return {std::nullopt, QStringLiteral("--pictures takes a folder")};
            if (options.mode != RunOptions::Mode::gui && options.mode != RunOptions::Mode::help)
                return {std::nullopt, QStringLiteral("--pictures goes alone")};
            if (options.mode != RunOptions::Mode::help)
                options.mode = RunOptions::Mode::pictures;
            options.picturesDirectory = *value;
        } else if (name == u"--port") {
            const auto value = takeValue();
            bool ok = false;
            const uint port = value ? value->toUInt(&ok) : 0;
            if (!ok || port == 0 || port > 65535)
                return {std::nullopt, QStringLiteral("--port takes a port number from 1 to 65535")};
            options.port = static_cast<quint16>(port);
            headlessOnlyOptionSeen = true;
        } else {
            return {std::nullopt, QStringLiteral("unknown option %1 (see --help)").arg(argument)};
        }
    }
    if (headlessOnlyOptionSeen && options.mode != RunOptions::Mode::headless && options.mode != RunOptions::Mode::help)
        return {std::nullopt, QStringLiteral("--server, --record and --port go with --headless")};
    return {options, {}};
}

QString commandLineHelp()
{
    return QStringLiteral(
        "Usage: tallowmere [options]\n"
        "\n"
        "A system monitor for the desktop. Without options it opens its window; a second start\n"
        "brings the running one to the front.\n"
        "\n"
        "Options:\n"
        "  --headless        Run without any window: the statistics server and the network\n"
        "                    recording run as the saved settings say, until SIGINT or SIGTERM.\n"
        "                    Without a display the program runs this way by itself.\n"
        "  --server on|off   With --headless: serve statistics on the loopback interface (or\n"
        "                    not) for this run, whatever the settings say.\n"
        "  --record on|off   With --headless: record network activity (or not) for this run.\n"
        "  --port N          With --headless: the statistics server's port (default 8765).\n"
        "  --snapshot        Sample for a few seconds and print every statistic as one JSON\n"
        "                    document, as GET /stats of the statistics server answers it.\n"
        "  --check-update    Check the update feed once and print the outcome. Exit status:\n"
        "                    0 up to date, 100 an update is available, 1 the check failed.\n"
        "  --pictures DIR    Sample this machine for a few seconds and draw the tray icon, the\n"
        "                    strip and the dashboard into PNG files in DIR (no display needed).\n"
        "  --history RANGE   Print the recorded network history of RANGE (1H, 24H, 7D or 30D)\n"
        "                    as JSON: traffic per bucket and the busiest applications.\n"
        "  -h, --help        Show this text.\n"
        "\n"
        "Overrides apply to this run only; the saved settings are not changed.\n");
}

} // namespace tallowmere
