#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <optional>

namespace tallowmere {

struct ChildResult {
    bool started = false;  // false when the program could not be launched at all
    int exitCode = -1;     // -1 when it crashed or timed out
    QByteArray output;     // standard output; standard error is never kept
};

// Runs a program to completion, reading its standard output. Blocks the calling thread, so
// call it from a detached task, never from the main thread's loops.
ChildResult runChild(const QString& program, const QStringList& arguments, int timeoutMs = 30'000);

// Starts a program that outlives this process, in a session of its own.
bool startDetachedChild(const QString& program, const QStringList& arguments);

} // namespace tallowmere
