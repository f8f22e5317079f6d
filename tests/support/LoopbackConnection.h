#pragma once

#include "core/UniqueFd.h"
#include "tests/support/TestSupport.h"

#include <arpa/inet.h>
#include <sys/socket.h>

#include <algorithm>
#include <stdexcept>
#include <thread>
#include <vector>

namespace tallowmere::test {

// The command name this test process is attributed under.
inline QString ownCommand() { return QString::fromUtf8(readFile("/proc/self/comm")).trimmed(); }

// A TCP connection inside the test process between two loopback addresses other than
// 127.0.0.1: the client at kClientAddress talks to a listener at kServerAddress, so each end
// sees a distinct remote address.
struct LoopbackConnection {
    static constexpr const char* kServerAddress = "127.0.0.2";
    static constexpr const char* kClientAddress = "127.0.0.3";

    UniqueFd listener{::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)};
    UniqueFd client{::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)};
    UniqueFd server;

    LoopbackConnection()
    {
        sockaddr_in address = endpoint(kServerAddress), local = endpoint(kClientAddress);
        socklen_t length = sizeof address;
        if (::bind(listener.get(), reinterpret_cast<sockaddr*>(&address), length) != 0 || ::listen(listener.get(), 1) != 0
            || ::getsockname(listener.get(), reinterpret_cast<sockaddr*>(&address), &length) != 0
            || ::bind(client.get(), reinterpret_cast<sockaddr*>(&local), sizeof local) != 0
            || ::connect(client.get(), reinterpret_cast<sockaddr*>(&address), sizeof address) != 0)
            throw std::runtime_error("cannot set up the loopback connection");
        server.reset(::accept4(listener.get(), nullptr, nullptr, SOCK_CLOEXEC));
    }

    // Moves `up` bytes from client to server and `down` bytes back, each read to the last byte.
    void exchange(std::size_t up, std::size_t down)
    {
        std::thread serverSide([&] {
            transfer(server.get(), up, false);
            transfer(server.get(), down, true);
        });
        transfer(client.get(), up, true);
        transfer(client.get(), down, false);
        serverSide.join();
    }

private:
    static sockaddr_in endpoint(const char* ip)
    {
        sockaddr_in address{};
        address.sin_family = AF_INET;
        inet_pton(AF_INET, ip, &address.sin_addr);
        return address;
    }
    static void transfer(int fd, std::size_t count, bool send)
    {
        std::vector<char> buffer(64 * 1024, 'x');
        while (count > 0) {
            const std::size_t chunk = std::min(count, buffer.size());
            const ssize_t done = send ? ::send(fd, buffer.data(), chunk, MSG_NOSIGNAL) : ::recv(fd, buffer.data(), chunk, 0);
            if (done <= 0)
                return;
            count -= static_cast<std::size_t>(done);
        }
    }
};

} // namespace tallowmere::test
