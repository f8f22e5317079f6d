#pragma once

#include "core/UniqueFd.h"
#include "tests/support/TestSupport.h"

#include <QByteArray>

#include <netdb.h>
#include <poll.h>
#include <sys/socket.h>

#include <chrono>
#include <future>
#include <thread>
#include <vector>

namespace tallowmere::test {

struct ClientResult {
    bool connected = false;
    QByteArray received; // all the server sent before closing

    QByteArray status() const { return received.left(received.indexOf("\r\n")); }
    QByteArray body() const { return received.mid(received.indexOf("\r\n\r\n") + 4); }
};

// A plain socket client on a worker thread, so the server keeps running on this one: writes
// each piece with a pause between them, may close its sending side, then reads until the
// server closes or `readTimeout` passes in silence.
struct ClientPlan {
    quint16 port = 0;
    std::vector<QByteArray> pieces;
    std::chrono::milliseconds pause{30};
    bool closeAfterSending = false;
    std::chrono::milliseconds readTimeout{5000};
    QByteArray address = "127.0.0.1";
};

inline std::future<ClientResult> startClient(ClientPlan plan)
{
    return std::async(std::launch::async, [plan = std::move(plan)] {
        ClientResult result;
        addrinfo hints{AI_NUMERICHOST, AF_UNSPEC, SOCK_STREAM, 0, 0, nullptr, nullptr, nullptr};
        addrinfo* target = nullptr;
        if (::getaddrinfo(plan.address.constData(), QByteArray::number(plan.port).constData(), &hints, &target) != 0)
            return result;
        const UniqueFd fd(::socket(target->ai_family, SOCK_STREAM | SOCK_CLOEXEC, 0));
        result.connected = ::connect(fd.get(), target->ai_addr, target->ai_addrlen) == 0;
        ::freeaddrinfo(target);
        for (std::size_t i = 0; result.connected && i < plan.pieces.size(); ++i) {
            if (i > 0)
                std::this_thread::sleep_for(plan.pause);
            ::send(fd.get(), plan.pieces[i].constData(), static_cast<size_t>(plan.pieces[i].size()), MSG_NOSIGNAL);
        }
        if (plan.closeAfterSending)
            ::shutdown(fd.get(), SHUT_WR);
        char buffer[65536];
        pollfd p{fd.get(), POLLIN, 0};
        for (ssize_t n = 0; result.connected && ::poll(&p, 1, static_cast<int>(plan.readTimeout.count())) > 0;) {
            if ((n = ::recv(fd.get(), buffer, sizeof buffer, 0)) <= 0)
                break;
            result.received.append(buffer, n);
        }
        return result;
    });
}

// Runs the event loop until the client is done.
inline ClientResult finish(std::future<ClientResult>& client)
{
    waitUntil([&] { return client.wait_for(std::chrono::seconds(0)) == std::future_status::ready; }, 20000);
    return client.get();
}

inline ClientResult exchange(quint16 port, const QByteArray& request, QByteArray address = "127.0.0.1")
{
    auto client = startClient({port, {request}, {}, false, std::chrono::milliseconds(5000), std::move(address)});
    return finish(client);
}

} // namespace tallowmere::test
