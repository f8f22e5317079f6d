#include "tests/server/LoopbackClient.h"

#include "tests/support/TestSupport.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <thread>

namespace tallowmere::test {

namespace {

ClientResult run(const ClientPlan& plan)
{
    ClientResult result;
    sockaddr_storage storage{};
    socklen_t length = 0;
    if (plan.address.protocol() == QAbstractSocket::IPv6Protocol) {
        auto* a = reinterpret_cast<sockaddr_in6*>(&storage);
        a->sin6_family = AF_INET6;
        a->sin6_port = htons(plan.port);
        const Q_IPV6ADDR bytes = plan.address.toIPv6Address();
        memcpy(&a->sin6_addr, &bytes, sizeof bytes);
        length = sizeof *a;
    } else {
        auto* a = reinterpret_cast<sockaddr_in*>(&storage);
        a->sin_family = AF_INET;
        a->sin_port = htons(plan.port);
        a->sin_addr.s_addr = htonl(plan.address.toIPv4Address());
        length = sizeof *a;
    }
    const int fd = ::socket(storage.ss_family, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0)
        return result;
    if (::connect(fd, reinterpret_cast<sockaddr*>(&storage), length) != 0) {
        ::close(fd);
        return result;
    }
    result.connected = true;
    for (std::size_t i = 0; i < plan.pieces.size(); ++i) {
        if (i > 0)
            std::this_thread::sleep_for(plan.pause);
        const QByteArray& piece = plan.pieces[i];
        qsizetype sent = 0;
        while (sent < piece.size()) {
            const ssize_t n = ::send(fd, piece.constData() + sent, static_cast<size_t>(piece.size() - sent), MSG_NOSIGNAL);
            if (n <= 0)
                break;
            sent += n;
        }
    }
    if (plan.closeAfterSending)
        ::shutdown(fd, SHUT_WR);
    char buffer[65536];
    for (;;) {
        pollfd p{fd, POLLIN, 0};
        if (::poll(&p, 1, static_cast<int>(plan.readTimeout.count())) <= 0)
            break;
        const ssize_t n = ::recv(fd, buffer, sizeof buffer, 0);
        if (n <= 0)
            break;
        result.received.append(buffer, n);
    }
    ::close(fd);
    return result;
}

} // namespace

std::future<ClientResult> startClient(ClientPlan plan)
{
    return std::async(std::launch::async, [plan = std::move(plan)] { return run(plan); });
}

ClientResult finish(std::future<ClientResult>& client)
{
    waitUntil([&] { return client.wait_for(std::chrono::seconds(0)) == std::future_status::ready; }, 20000);
    return client.get();
}

ClientResult exchange(quint16 port, const QByteArray& request)
{
    ClientPlan plan;
    plan.port = port;
    plan.pieces = {request};
    auto client = startClient(plan);
    return finish(client);
}

QByteArray ParsedResponse::header(const QByteArray& name) const
{
    for (const auto& [key, value] : headers) {
        if (key.compare(name, Qt::CaseInsensitive) == 0)
            return value;
    }
    return {};
}

ParsedResponse parseResponse(const QByteArray& bytes)
{
    ParsedResponse response;
    const qsizetype end = bytes.indexOf("\r\n\r\n");
    if (end < 0)
        return response;
    const QList<QByteArray> lines = bytes.left(end).split('\n');
    response.statusLine = lines.first().trimmed();
    for (qsizetype i = 1; i < lines.size(); ++i) {
        const QByteArray line = lines[i].trimmed();
        const qsizetype colon = line.indexOf(':');
        response.headers.emplace_back(line.left(colon), line.mid(colon + 1).trimmed());
    }
    response.body = bytes.mid(end + 4);
    return response;
}

} // namespace tallowmere::test
