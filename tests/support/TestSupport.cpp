#include "tests/support/TestSupport.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTest>

#include <stdexcept>

namespace tallowmere::test {

QString fixturePath(const QString& relative)
{
    return QStringLiteral(TALLOWMERE_FIXTURES_DIR "/") + relative;
}

QByteArray fixture(const QString& relative)
{
    return readFile(fixturePath(relative));
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

QString programPath()
{
    return QStringLiteral(TALLOWMERE_BINARY_DIR "/tallowmere");
}

ProgramRun runProgram(const QString& program, const QStringList& arguments, int timeoutMs)
{
    QProcess process;
    process.start(program, arguments);
    const bool ended = waitUntil([&] { return process.state() == QProcess::NotRunning; }, timeoutMs);
    if (!ended)
        process.kill();
    process.waitForFinished();
    const bool normal = ended && process.exitStatus() == QProcess::NormalExit;
    return {normal ? process.exitCode() : -1, process.readAllStandardOutput(), process.readAllStandardError()};
}

QString writeScript(const QString& path, const QByteArray& body)
{
    const QFileInfo info(path);
    writeFile(info.absolutePath(), info.fileName(), "#!/bin/sh\n" + body);
    QFile::setPermissions(path, QFile::permissions(path) | QFile::ExeOwner | QFile::ExeGroup | QFile::ExeOther);
    return path;
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
