#include "server/ConnectionPool.h"

#include "core/UniqueFd.h"

#include <QSocketNotifier>

#include <cerrno>
#include <fcntl.h>
#include <sys/socket.h>

namespace tallowmere {

namespace {

using Clock = std::chrono::steady_clock;

// Reads are at most this large, so one client's burst cannot balloon a buffer at once.
constexpr qsizetype kReadChunk = 65536;

// A notifier may be the sender of the signal being handled, so it is switched off at once
// and deleted when control is back in the event loop.
struct LaterDeleter {
    void operator()(QSocketNotifier* notifier) const
    {
        notifier->setEnabled(false);
        notifier->deleteLater();
    }
};

} // namespace

struct ConnectionPool::Connection {
    UniqueFd fd;
    RequestReader reader;
    QByteArray out;
    qsizetype sent = 0;
    Clock::time_point deadline;
    std::unique_ptr<QSocketNotifier, LaterDeleter> readNotifier;
    std::unique_ptr<QSocketNotifier, LaterDeleter> writeNotifier;

    Connection(int descriptor, const RequestLimits& limits, Clock::time_point until)
        : fd(descriptor), reader(limits), deadline(until)
    {
    }
};

ConnectionPool::ConnectionPool(Handler handler, QObject* parent)
    : ConnectionPool(std::move(handler), Limits{}, parent)
{
}

ConnectionPool::ConnectionPool(Handler handler, Limits limits, QObject* parent)
    : QObject(parent), handler_(std::move(handler)), limits_(limits)
{
    sweep_.setInterval(std::chrono::milliseconds(250));
    connect(&sweep_, &QTimer::timeout, this, &ConnectionPool::sweepExpired);
}

ConnectionPool::~ConnectionPool() = default;

void ConnectionPool::adopt(int fd)
{
    const int flags = ::fcntl(fd, F_GETFL);
    if (flags < 0 || ::fcntl(fd, F_SETFL, flags | O_NONBLOCK) < 0) {
        ::close(fd);
        return;
    }
    const quint64 id = nextId_++;
    auto [it, inserted] = connections_.emplace(
        id, std::make_unique<Connection>(fd, limits_.request, Clock::now() + limits_.deadline));
    // Clients usually send their request right after connecting, so it is often waiting
    // already and can be answered without watching the socket at all.
    receive(it);
    // Only a newcomer that has to wait takes a place, from the one waiting longest.
    if (openConnections() > limits_.maxConnections)
        close(connections_.begin());
    if (!connections_.empty() && !sweep_.isActive())
        sweep_.start();
}

void ConnectionPool::onReadable(quint64 id)
{
    const auto it = connections_.find(id);
    if (it != connections_.end())
        receive(it);
}

void ConnectionPool::onWritable(quint64 id)
{
    const auto it = connections_.find(id);
    if (it != connections_.end())
        send(it);
}

void ConnectionPool::receive(Iterator it)
{
    Connection& c = *it->second;
    char chunk[kReadChunk];
    for (;;) {
        const ssize_t n = ::recv(c.fd.get(), chunk, sizeof chunk, 0);
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
            if (!c.readNotifier) {
                c.readNotifier.reset(new QSocketNotifier(c.fd.get(), QSocketNotifier::Read, this));
                const quint64 id = it->first;
                connect(c.readNotifier.get(), &QSocketNotifier::activated, this, [this, id] { onReadable(id); });
            }
            return;
        }
        if (n <= 0) {
            // The peer stopped sending (or failed) before a whole request arrived.
            close(it);
            return;
        }
        switch (c.reader.append(chunk, n)) {
        case RequestReader::Status::incomplete:
            continue;
        case RequestReader::Status::complete:
            c.readNotifier.reset();
            answer(it, handler_(c.reader.take()));
            return;
        case RequestReader::Status::bodyTooLarge:
            c.readNotifier.reset();
            answer(it, HTTPResponse::text(QByteArrayLiteral("413 Payload Too Large")));
            return;
        case RequestReader::Status::malformed:
        case RequestReader::Status::headTooLarge:
            close(it);
            return;
        }
    }
}

void ConnectionPool::answer(Iterator it, const HTTPResponse& response)
{
    it->second->out = frameResponse(response);
    send(it);
}

void ConnectionPool::send(Iterator it)
{
    Connection& c = *it->second;
    while (c.sent < c.out.size()) {
        const ssize_t n = ::send(c.fd.get(), c.out.constData() + c.sent,
                                 static_cast<size_t>(c.out.size() - c.sent), MSG_NOSIGNAL);
        if (n < 0 && errno == EINTR)
            continue;
        if (n < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
            if (!c.writeNotifier) {
                c.writeNotifier.reset(new QSocketNotifier(c.fd.get(), QSocketNotifier::Write, this));
                const quint64 id = it->first;
                connect(c.writeNotifier.get(), &QSocketNotifier::activated, this, [this, id] { onWritable(id); });
            }
            return;
        }
        if (n < 0) {
            close(it); // send errors end the connection, nothing more
            return;
        }
        c.sent += n;
    }
    finish(it);
}

void ConnectionPool::finish(Iterator it)
{
    // Closing a socket with unread bytes makes the kernel reset it, which can destroy the
    // answer in flight; so say we are done, take what is already there, then close.
    const int fd = it->second->fd.get();
    ::shutdown(fd, SHUT_WR);
    char sink[4096];
    for (int round = 0; round < 16; ++round) {
        const ssize_t n = ::recv(fd, sink, sizeof sink, 0);
        if (n <= 0 && !(n < 0 && errno == EINTR))
            break;
    }
    close(it);
}

void ConnectionPool::close(Iterator it)
{
    connections_.erase(it);
    if (connections_.empty())
        sweep_.stop();
}

void ConnectionPool::sweepExpired()
{
    const auto now = Clock::now();
    for (auto it = connections_.begin(); it != connections_.end();) {
        if (it->second->deadline <= now)
            it = connections_.erase(it);
        else
            ++it;
    }
    if (connections_.empty())
        sweep_.stop();
}

} // namespace tallowmere
