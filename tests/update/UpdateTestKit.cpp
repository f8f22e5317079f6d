#include "tests/update/UpdateTestKit.h"

#include "tests/support/TestSupport.h"

#include <QFile>
#include <QTcpSocket>

#include <stdexcept>

namespace tallowmere::test {

LoopbackHttpServer::LoopbackHttpServer()
{
    if (!server_.listen(QHostAddress::LocalHost, 0))
        throw std::runtime_error("cannot listen on 127.0.0.1");
    connect(&server_, &QTcpServer::newConnection, this, [this] {
        while (QTcpSocket* socket = server_.nextPendingConnection()) {
            connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
            connect(socket, &QTcpSocket::readyRead, this, [this, socket] {
                if (socket->peek(socket->bytesAvailable()).contains("\r\n\r\n"))
                    respond(socket, socket->readAll());
            });
        }
    });
}

QUrl LoopbackHttpServer::url(const QString& path) const
{
    return QUrl(QStringLiteral("http://127.0.0.1:%1%2").arg(server_.serverPort()).arg(path));
}

void LoopbackHttpServer::respond(QTcpSocket* socket, const QByteArray& head)
{
    const QString path = QString::fromUtf8(head.split(' ').value(1)); // "GET /path HTTP/1.1"
    requests_[path] += 1;
    const auto [status, body] = answers_.value(path, {404, "not found"});
    if (status != 0)
        socket->write("HTTP/1.1 " + QByteArray::number(status) + " X\r\nContent-Length: "
                      + QByteArray::number(body.size()) + "\r\nConnection: close\r\n\r\n" + body);
    socket->disconnectFromHost();
}

void makeFakeApp(const QString& folder, const QString& label, const QString& marker)
{
    writeFile(folder, QStringLiteral("bin/tallowmere"),
              "#!/bin/sh\nprintf '%s\\n%s\\n' '" + label.toUtf8() + "' \"$0\" > '" + marker.toUtf8() + "'\n");
    QFile::setPermissions(folder + QStringLiteral("/bin/tallowmere"),
                          QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner | QFile::ReadOther | QFile::ExeOther);
    writeFile(folder, QStringLiteral("share/label.txt"), label.toUtf8());
}

QStringList markerLines(const QString& marker)
{
    return QString::fromUtf8(readFile(marker)).split(u'\n', Qt::SkipEmptyParts);
}

QByteArray zipOf(const QString& staging, const QStringList& entries)
{
    const QString archive = staging + QStringLiteral(".zip");
    QFile::remove(archive);
    QProcess zip;
    zip.setWorkingDirectory(staging);
    zip.start(QStringLiteral("/usr/bin/zip"), QStringList{QStringLiteral("-qr"), archive} + entries);
    if (!zip.waitForFinished(30'000) || zip.exitCode() != 0)
        throw std::runtime_error("zip failed: " + zip.readAllStandardError().toStdString());
    return readFile(archive);
}

QByteArray feedXml(qint64 build, const QUrl& archive, const QByteArray& version)
{
    return "<?xml version=\"1.0\"?>\n<feed><entry>\n  <version>" + version + "</version>\n  <build>"
        + QByteArray::number(build) + "</build>\n  <url>" + archive.toEncoded()
        + "</url>\n  <releaseNotes>Notes.</releaseNotes>\n</entry></feed>\n";
}

} // namespace tallowmere::test
