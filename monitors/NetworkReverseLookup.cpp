#include "monitors/NetworkReverseLookup.h"

#include "core/WorkerPool.h"

#include <QMetaObject>
#include <QMutex>
#include <QThreadPool>

#include <arpa/inet.h>
#include <netdb.h>
#include <netinet/in.h>
#include <sys/socket.h>

namespace tallowmere {

std::optional<QString> reverseLookup(const QString& ip)
{
    const QByteArray text = ip.toLatin1();
    sockaddr_storage address{};
    socklen_t length = 0;
    if (ip.contains(u':')) {
        auto* v6 = reinterpret_cast<sockaddr_in6*>(&address);
        v6->sin6_family = AF_INET6;
        length = sizeof(sockaddr_in6);
        if (::inet_pton(AF_INET6, text.constData(), &v6->sin6_addr) != 1)
            return std::nullopt;
    } else {
        auto* v4 = reinterpret_cast<sockaddr_in*>(&address);
        v4->sin_family = AF_INET;
        length = sizeof(sockaddr_in);
        if (::inet_pton(AF_INET, text.constData(), &v4->sin_addr) != 1)
            return std::nullopt;
    }
    char host[1025] = {};
    if (::getnameinfo(reinterpret_cast<const sockaddr*>(&address), length, host, sizeof host, nullptr, 0,
                      NI_NAMEREQD) != 0)
        return std::nullopt;
    if (host[0] == '\0')
        return std::nullopt;
    return QString::fromUtf8(host);
}

namespace {

// A slow resolver may hold a lookup for seconds; a few idle-priority threads of their own keep
// lookups from holding up other background work.
QThreadPool& lookupPool()
{
    static const std::unique_ptr<QThreadPool> pool = makeWorkerPool(4, QThread::IdlePriority);
    return *pool;
}

} // namespace

// Where workers post answers; empty once the owner is being destroyed.
struct ReverseLookups::Mailbox {
    QMutex mutex;
    QObject* context = nullptr;
};

ReverseLookups::ReverseLookups(Lookup lookup, Deliver deliver)
    : lookup_(std::move(lookup))
    , deliver_(std::move(deliver))
    , mailbox_(std::make_shared<Mailbox>())
{
    mailbox_->context = &context_;
}

ReverseLookups::~ReverseLookups()
{
    QMutexLocker lock(&mailbox_->mutex);
    mailbox_->context = nullptr;
}

void ReverseLookups::start(const QString& ip)
{
    lookupPool().start([mailbox = mailbox_, lookup = lookup_, deliver = &deliver_, ip] {
        {
            QMutexLocker lock(&mailbox->mutex);
            if (!mailbox->context)
                return;
        }
        std::optional<QString> name = lookup(ip);
        QMutexLocker lock(&mailbox->mutex);
        // The answer runs on the context's thread, where the context and `deliver` are
        // destroyed together, so it never finds `deliver` gone.
        if (mailbox->context) {
            QMetaObject::invokeMethod(mailbox->context, [deliver, ip, name = std::move(name)] { (*deliver)(ip, name); },
                                      Qt::QueuedConnection);
        }
    });
}

} // namespace tallowmere
