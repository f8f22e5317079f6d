#pragma once

#include <QByteArray>
#include <QString>

#include <functional>
#include <optional>

namespace tallowmere::test {

// Absolute path of a file under tests/fixtures.
QString fixturePath(const QString& relative);

// Runs the event loop until `predicate` holds or `timeoutMs` passes; returns the predicate.
bool waitUntil(const std::function<bool()>& predicate, int timeoutMs = 5000);

// Writes `content` to root/relative, creating the folders on the way.
void writeFile(const QString& root, const QString& relative, const QByteArray& content);

QByteArray readFile(const QString& path);

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
