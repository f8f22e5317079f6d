#include "tests/server/LoopbackClient.h"

#include "tests/support/TestSupport.h"

#include <netinet/in.h>
#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstring>
#include <thread>

namespace tallowmere::test {

namespace {

ClientResult run(const ClientPlan& plan)
{
    ClientResult result;
    sockaddr_in6 a6{AF_INET6, htons(plan.port), 0, {}, 0};
    sockaddr_in a4{AF_INET, htons(plan.port), {htonl(plan.address.toIPv4Address())}, {}};
    const bool v6 = plan.address.protocol() == QAbstractSocket::IPv6Protocol;
    const Q_IPV6ADDR bytes = plan.address.toIPv6Address();
    std::memcpy(&a6.sin6_addr, &bytes, sizeof bytes);
    const int fd = ::socket(v6 ? AF_INET6 : AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    result.connected = ::connect(fd, v6 ? reinterpret_cast<sockaddr*>(&a6) : reinterpret_cast<sockaddr*>(&a4),
                                 v6 ? sizeof a6 : sizeof a4) == 0;
    for (std::size_t i = 0; result.connected && i < plan.pieces.size(); ++i) {
        if (i > 0)
            std::this_thread::sleep_for(plan.pause);
        ::send(fd, plan.pieces[i].constData(), static_cast<size_t>(plan.pieces[i].size()), MSG_NOSIGNAL);
    }
    if (plan.closeAfterSending)
        ::shutdown(fd, SHUT_WR);
    char buffer[65536];
    pollfd p{fd, POLLIN, 0};
    while (result.connected && ::poll(&p, 1, static_cast<int>(plan.readTimeout.count())) > 0) {
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
    auto client = startClient({port, {request}});
    return finish(client);
}

ParsedResponse parseResponse(const QByteArray& bytes)
{
    ParsedResponse response;
    const qsizetype end = bytes.indexOf("\r\n\r\n");
    const QList<QByteArray> lines = bytes.left(std::max<qsizetype>(end, 0)).split('\n');
    response.statusLine = lines.first().trimmed();
    for (qsizetype i = 1; i < lines.size(); ++i) {
        const qsizetype colon = lines[i].indexOf(':');
        response.headers.emplace_back(lines[i].left(colon), lines[i].mid(colon + 1).trimmed());
    }
    response.body = end < 0 ? QByteArray() : bytes.mid(end + 4);
    return response;
}

} // namespace tallowmere::test
