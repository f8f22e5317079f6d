#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace tallowmere {

// What one start of the program was asked to do.
struct RunOptions {
    enum class Mode { gui, headless, help, checkUpdate, snapshot, pictures, history };
    Mode mode = Mode::gui;
    std::optional<bool> server;     // --server on|off
    std::optional<bool> record;     // --record on|off
    std::optional<quint16> port;    // --port N
    QString picturesDirectory;      // --pictures DIR
    QString historyRange;           // --history RANGE, checked when it runs
};

struct CommandLineResult {
    std::optional<RunOptions> options; // absent when the arguments are wrong
    QString error;                     // says what is wrong, for stderr
};

// `arguments` includes the program name first, as QCoreApplication gives it.
CommandLineResult parseCommandLine(const QStringList& arguments);

QString commandLineHelp();

} // namespace tallowmere
