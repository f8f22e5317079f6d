#pragma once

#include "core/UniqueFd.h"
#include "monitors/SockDiagRecord.h"

#include <atomic>
#include <cstdint>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

namespace tallowmere {

// The kernel's notices of closing TCP sockets (IPv4 and IPv6), each with the socket's final
// counters, read on a thread of its own into a bounded buffer. When the buffer is full, or the
// kernel had to drop notices because we fell behind, the loss is counted, never stored.
class SockDiagDestroyListener {
public:
    // Keeps at most `capacity` notices between two take() calls; with `uid` only that user's
    // sockets are kept.
    explicit SockDiagDestroyListener(std::size_t capacity = 16384, std::optional<std::uint32_t> uid = std::nullopt);
    ~SockDiagDestroyListener();
    SockDiagDestroyListener(const SockDiagDestroyListener&) = delete;
    SockDiagDestroyListener& operator=(const SockDiagDestroyListener&) = delete;

    // False when the kernel refused the subscription; closes are then never reported.
    bool isListening() const { return thread_.joinable(); }

    // The sockets closed since the previous call, oldest first.
    std::vector<SockDiagRecord> take();

    // Notices lost so far: buffer full, or the kernel's overrun (ENOBUFS, counted once each).
    std::uint64_t dropped() const { return dropped_.load(); }

    // Decodes one received buffer into `into` (at most `capacity` entries, only `uid`'s when
    // given); returns how many records did not fit.
    static std::size_t collect(std::span<const std::byte> buffer, std::optional<std::uint32_t> uid,
                               std::size_t capacity, std::vector<SockDiagRecord>& into);

private:
    void run();
    void receiveAvailable(std::vector<std::byte>& buffer);

    const std::size_t capacity_;
    const std::optional<std::uint32_t> uid_;
    UniqueFd socket_;
    UniqueFd wake_;
    std::mutex mutex_;
    std::vector<SockDiagRecord> closed_;
    std::atomic<std::uint64_t> dropped_{0};
    std::thread thread_;
};

} // namespace tallowmere
