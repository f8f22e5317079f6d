#pragma once

#include <QByteArray>
#include <QHash>
#include <QProcess>
#include <QStringList>
#include <QTcpServer>
#include <QUrl>

class QTcpSocket;
struct evp_pkey_st;

namespace tallowmere::test {

// HTTP/1.1 on 127.0.0.1: each path answers with a fixed status and body (404 when unknown);
// status 0 closes the connection without answering.
class LoopbackHttpServer : public QObject {
public:
    LoopbackHttpServer();
    void serve(const QString& path, const QByteArray& body, int status = 200) { answers_[path] = {status, body}; }
    QUrl url(const QString& path) const;
    int requestCount(const QString& path) const { return requests_.value(path); }

private:
    void respond(QTcpSocket* socket, const QByteArray& head);
    QTcpServer server_;
    QHash<QString, std::pair<int, QByteArray>> answers_;
    QHash<QString, int> requests_;
};

// A copy of the program whose bin/tallowmere writes `label` and the path it was started from,
// one per line, to `marker`; share/label.txt holds the label too.
void makeFakeApp(const QString& folder, const QString& label, const QString& marker);
QStringList markerLines(const QString& marker);
// The permission bits of a file (07777), -1 when it does not exist.
int fileMode(const QString& path);

// `entries` of `staging`, zipped with the real zip tool.
QByteArray zipOf(const QString& staging, const QStringList& entries);

// A feed offering `build` at `archive`, with the signature (raw bytes) when one is given.
QByteArray feedXml(qint64 build, const QUrl& archive, const QByteArray& version = "9.9", const QByteArray& signature = {});

// A fresh Ed25519 key pair made with OpenSSL, standing in for the one releases are signed with.
class SigningKey {
public:
    SigningKey();
    ~SigningKey();
    SigningKey(const SigningKey&) = delete;
    SigningKey& operator=(const SigningKey&) = delete;
    QByteArray publicKey() const; // raw 32 bytes
    QByteArray sign(const QByteArray& message) const; // raw 64 bytes

private:
    ::evp_pkey_st* key_ = nullptr;
};

// A zip archive written entry by entry with Python's zipfile, so that names and links no
// ordinary tool would store ("../x", "/abs", a link out of the folder) can be made.
struct ZipEntry {
    QString name;
    QByteArray content;         // the link's target for a link
    bool link = false;
    bool executable = false;
};
QByteArray craftedZip(const QString& path, const QList<ZipEntry>& entries);

// A real process standing in for the running program until stop().
struct StandIn {
    StandIn()
    {
        process.start(QStringLiteral("/bin/sleep"), {QStringLiteral("120")});
        process.waitForStarted();
        pid = process.processId(); // QProcess forgets it once the child has ended
    }
    ~StandIn() { stop(); }
    void stop()
    {
        process.kill();
        process.waitForFinished();
    }
    QProcess process;
    qint64 pid = 0;
};

} // namespace tallowmere::test
