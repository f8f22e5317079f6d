#pragma once

#include "app/core/UniqueFd.h"

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <algorithm>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace tallowmere::test {

// A TCP connection inside the test process between two loopback addresses other than
// 127.0.0.1: the client at kClientAddress talks to a listener at kServerAddress, so each end
// sees a distinct remote address.
struct LoopbackConnection {
    static constexpr const char* kServerAddress = "127.0.0.2";
    static constexpr const char* kClientAddress = "127.0.0.3";

    UniqueFd listener, client, server;

    LoopbackConnection()
    {
        listener.reset(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
        sockaddr_in address = endpoint(kServerAddress);
        socklen_t length = sizeof address;
        if (::bind(listener.get(), reinterpret_cast<sockaddr*>(&address), length) != 0
            || ::listen(listener.get(), 1) != 0
            || ::getsockname(listener.get(), reinterpret_cast<sockaddr*>(&address), &length) != 0)
            throw std::runtime_error(std::string("cannot listen on ") + kServerAddress);
        client.reset(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
        sockaddr_in local = endpoint(kClientAddress);
        if (::bind(client.get(), reinterpret_cast<sockaddr*>(&local), sizeof local) != 0
            || ::connect(client.get(), reinterpret_cast<sockaddr*>(&address), sizeof address) != 0)
            throw std::runtime_error(std::string("cannot connect to ") + kServerAddress);
        server.reset(::accept4(listener.get(), nullptr, nullptr, SOCK_CLOEXEC));
    }

    // Moves `up` bytes from client to server and `down` bytes back, each read to the last byte.
    void exchange(std::size_t up, std::size_t down)
    {
        std::thread serverSide([&] {
            receiveAll(server.get(), up);
            sendAll(server.get(), down);
        });
        sendAll(client.get(), up);
        receiveAll(client.get(), down);
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
    static void sendAll(int fd, std::size_t count)
    {
        const std::vector<char> chunk(16 * 1024, 'x');
        while (count > 0) {
            const ssize_t sent = ::send(fd, chunk.data(), std::min(count, chunk.size()), MSG_NOSIGNAL);
            if (sent <= 0)
                return;
            count -= static_cast<std::size_t>(sent);
        }
    }
    static void receiveAll(int fd, std::size_t count)
    {
        std::vector<char> buffer(64 * 1024);
        while (count > 0) {
            const ssize_t got = ::recv(fd, buffer.data(), std::min(count, buffer.size()), 0);
            if (got <= 0)
                return;
            count -= static_cast<std::size_t>(got);
        }
    }
};

} // namespace tallowmere::test
