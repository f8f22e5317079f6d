#include "tests/support/TestSupport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTest>

#include <stdexcept>

namespace tallowmere::test {

QString fixturePath(const QString& relative)
{
    return QStringLiteral(TALLOWMERE_FIXTURES_DIR "/") + relative;
}

bool waitUntil(const std::function<bool()>& predicate, int timeoutMs)
{
    return QTest::qWaitFor(predicate, timeoutMs);
}

void writeFile(const QString& root, const QString& relative, const QByteArray& content)
{
    const QString path = root + u'/' + relative;
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
        throw std::runtime_error("cannot write test file " + path.toStdString());
    file.write(content);
}

QByteArray readFile(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return file.readAll();
}

ScopedEnv::ScopedEnv(const char* name, const QByteArray& value)
    : name_(name)
{
    if (qEnvironmentVariableIsSet(name))
        previous_ = qgetenv(name);
    qputenv(name, value);
}

ScopedEnv::~ScopedEnv()
{
    if (previous_)
        qputenv(name_.constData(), *previous_);
    else
        qunsetenv(name_.constData());
}

} // namespace tallowmere::test
