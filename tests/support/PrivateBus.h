#pragma once

#include <QDBusConnection>
#include <QProcess>
#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

namespace tallowmere::test {

// A private dbus-daemon for one test, with python3-dbusmock templates standing in for the
// system services (logind, upower, gnome_screensaver). Everything is stopped on destruction.
class PrivateBus {
public:
    PrivateBus();
    ~PrivateBus();
    PrivateBus(const PrivateBus&) = delete;
    PrivateBus& operator=(const PrivateBus&) = delete;

    bool isUp() const { return !address_.isEmpty(); }
    const QString& address() const { return address_; }

    // A connection of our own to the private bus, as the code under test would get it.
    QDBusConnection connection(const QString& name = QStringLiteral("test")) const;

    // Starts `python3 -m dbusmock --template NAME` on this bus and waits until `busName`
    // is owned. `parameters` is the template's JSON parameter text, if any.
    bool startTemplate(const QString& templateName, const QString& busName, const QString& parameters = {});

    // Calls a method of the dbusmock control interface (org.freedesktop.DBus.Mock) of `busName`.
    QDBusMessage callMock(const QString& busName, const QString& path, const QString& method,
                          const QVariantList& arguments) const;

private:
    std::unique_ptr<QProcess> daemon_;
    std::vector<std::unique_ptr<QProcess>> mocks_;
    QString address_;
};

// A connection that never reached a bus: services given it run without their system peers.
inline QDBusConnection missingBus() { return QDBusConnection(QStringLiteral("tallowmere-no-such-bus")); }

} // namespace tallowmere::test
