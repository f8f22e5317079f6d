#include "tests/support/PrivateBus.h"

#include "tests/support/TestSupport.h"

#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QProcessEnvironment>

namespace tallowmere::test {

PrivateBus::PrivateBus()
    : daemon_(std::make_unique<QProcess>())
{
    daemon_->setProgram(QStringLiteral("dbus-daemon"));
    daemon_->setArguments({QStringLiteral("--session"), QStringLiteral("--nofork"), QStringLiteral("--nopidfile"),
                           QStringLiteral("--print-address=1")});
    daemon_->setProcessChannelMode(QProcess::SeparateChannels);
    daemon_->start();
    if (!daemon_->waitForStarted(5000))
        return;
    if (!waitUntil([this] { return daemon_->canReadLine(); }, 5000))
        return;
    address_ = QString::fromUtf8(daemon_->readLine()).trimmed();
}

PrivateBus::~PrivateBus()
{
    for (auto& mock : mocks_) {
        mock->terminate();
        if (!mock->waitForFinished(3000))
            mock->kill();
        mock->waitForFinished(1000);
    }
    if (!address_.isEmpty())
        QDBusConnection::disconnectFromBus(QStringLiteral("test"));
    daemon_->terminate();
    if (!daemon_->waitForFinished(3000))
        daemon_->kill();
    daemon_->waitForFinished(1000);
}

QDBusConnection PrivateBus::connection(const QString& name) const
{
    return QDBusConnection::connectToBus(address_, name);
}

bool PrivateBus::startTemplate(const QString& templateName, const QString& busName, const QString& parameters)
{
    if (!isUp())
        return false;
    auto mock = std::make_unique<QProcess>();
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("DBUS_SYSTEM_BUS_ADDRESS"), address_);
    env.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"), address_);
    mock->setProcessEnvironment(env);
    QStringList arguments{QStringLiteral("-m"), QStringLiteral("dbusmock"), QStringLiteral("--template"), templateName};
    if (!parameters.isEmpty())
        arguments << QStringLiteral("--parameters") << parameters;
    mock->setProgram(QStringLiteral("/usr/bin/python3"));
    mock->setArguments(arguments);
    mock->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    mock->start();
    if (!mock->waitForStarted(5000))
        return false;
    QDBusConnection bus = connection(QStringLiteral("test"));
    QProcess* raw = mock.get();
    mocks_.push_back(std::move(mock));
    return waitUntil([&] {
        return raw->state() == QProcess::Running && bus.interface()->isServiceRegistered(busName).value();
    }, 10000);
}

QDBusMessage PrivateBus::callMock(const QString& busName, const QString& path, const QString& method,
                                  const QVariantList& arguments) const
{
    QDBusMessage message = QDBusMessage::createMethodCall(busName, path, QStringLiteral("org.freedesktop.DBus.Mock"), method);
    message.setArguments(arguments);
    return connection(QStringLiteral("test")).call(message, QDBus::Block, 10000);
}

} // namespace tallowmere::test
