#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

namespace tallowmere::test {

// Absolute path of a file under tests/fixtures, and its content.
QString fixturePath(const QString& relative);
QByteArray fixture(const QString& relative);

// Runs the event loop until `predicate` holds or `timeoutMs` passes; returns the predicate.
bool waitUntil(const std::function<bool()>& predicate, int timeoutMs = 5000);

// Writes `content` to root/relative, creating the folders on the way.
void writeFile(const QString& root, const QString& relative, const QByteArray& content);

QByteArray readFile(const QString& path);

// What a finished child process left: exit code (-1 when it did not end in time or crashed)
// and its two output streams.
struct ProgramRun {
    int exitCode = -1;
    QByteArray out;
    QByteArray err;
};

// The program under test, build/tallowmere.
QString programPath();

// Runs `program` to its end while this thread's event loop goes on, so servers living on it
// can answer the child.
ProgramRun runProgram(const QString& program, const QStringList& arguments, int timeoutMs = 30000);

// Writes an executable /bin/sh script (folders made on the way) and returns its path.
QString writeScript(const QString& path, const QByteArray& body);

// Sets an environment variable for the lifetime of the object and restores it after.
class ScopedEnv {
public:
    ScopedEnv(const char* name, const QByteArray& value);
    ~ScopedEnv();
    ScopedEnv(const ScopedEnv&) = delete;
    ScopedEnv& operator=(const ScopedEnv&) = delete;

private:
    QByteArray name_;
    std::optional<QByteArray> previous_;
};

} // namespace tallowmere::test
