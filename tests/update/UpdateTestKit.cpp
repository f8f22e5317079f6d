#include "tests/update/UpdateTestKit.h"

#include "tests/support/TestSupport.h"

#include <QFile>
#include <QTcpSocket>

#include <openssl/evp.h>
#include <sys/stat.h>

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
    writeScript(folder + QStringLiteral("/bin/tallowmere"),
                "printf '%s\\n%s\\n' '" + label.toUtf8() + "' \"$0\" > '" + marker.toUtf8() + "'\n");
    writeFile(folder, QStringLiteral("share/label.txt"), label.toUtf8());
}

QStringList markerLines(const QString& marker)
{
    return QString::fromUtf8(readFile(marker)).split(u'\n', Qt::SkipEmptyParts);
}

int fileMode(const QString& path)
{
    struct stat status {};
    return ::lstat(QFile::encodeName(path).constData(), &status) == 0 ? static_cast<int>(status.st_mode & 07777) : -1;
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

QByteArray feedXml(qint64 build, const QUrl& archive, const QByteArray& version, const QByteArray& signature)
{
    const QByteArray signatureElement = signature.isNull() ? QByteArray() : "  <signature>" + signature.toBase64() + "</signature>\n";
    return "<?xml version=\"1.0\"?>\n<feed><entry>\n  <version>" + version + "</version>\n  <build>"
        + QByteArray::number(build) + "</build>\n  <url>" + archive.toEncoded()
        + "</url>\n  <releaseNotes>Notes.</releaseNotes>\n" + signatureElement + "</entry></feed>\n";
}

SigningKey::SigningKey()
{
    EVP_PKEY_CTX* context = EVP_PKEY_CTX_new_id(EVP_PKEY_ED25519, nullptr);
    if (!context || EVP_PKEY_keygen_init(context) != 1 || EVP_PKEY_keygen(context, &key_) != 1)
        throw std::runtime_error("cannot make an Ed25519 key");
    EVP_PKEY_CTX_free(context);
}

SigningKey::~SigningKey()
{
    EVP_PKEY_free(key_);
}

QByteArray SigningKey::publicKey() const
{
    QByteArray raw(32, '\0');
    size_t size = static_cast<size_t>(raw.size());
    EVP_PKEY_get_raw_public_key(key_, reinterpret_cast<unsigned char*>(raw.data()), &size);
    return raw;
}

QByteArray SigningKey::sign(const QByteArray& message) const
{
    QByteArray signature(64, '\0');
    size_t size = static_cast<size_t>(signature.size());
    EVP_MD_CTX* context = EVP_MD_CTX_new();
    const bool ok = EVP_DigestSignInit(context, nullptr, nullptr, nullptr, key_) == 1
        && EVP_DigestSign(context, reinterpret_cast<unsigned char*>(signature.data()), &size,
                          reinterpret_cast<const unsigned char*>(message.constData()), static_cast<size_t>(message.size())) == 1;
    EVP_MD_CTX_free(context);
    if (!ok)
        throw std::runtime_error("cannot sign");
    return signature;
}

QByteArray craftedZip(const QString& path, const QList<ZipEntry>& entries)
{
    QString script = QStringLiteral("import zipfile, sys\nz = zipfile.ZipFile(sys.argv[1], 'w')\n");
    for (const ZipEntry& entry : entries) {
        const int mode = entry.link ? 0120777 : entry.executable ? 0100755 : 0100644;
        script += QStringLiteral("i = zipfile.ZipInfo(bytes.fromhex('%1').decode()); i.create_system = 3; "
                                 "i.external_attr = %2 << 16; z.writestr(i, bytes.fromhex('%3'))\n")
                      .arg(QString::fromLatin1(entry.name.toUtf8().toHex()))
                      .arg(mode)
                      .arg(QString::fromLatin1(entry.content.toHex()));
    }
    script += QStringLiteral("z.close()\n");
    QProcess python;
    python.start(QStringLiteral("/usr/bin/python3"), {QStringLiteral("-c"), script, path});
    if (!python.waitForFinished(30'000) || python.exitCode() != 0)
        throw std::runtime_error("python3 zipfile failed: " + python.readAllStandardError().toStdString());
    return readFile(path);
}

} // namespace tallowmere::test
