#include "monitors/SockDiagDestroyListener.h"
#include "monitors/SockDiagRecord.h"

#include <arpa/inet.h>
#include <linux/inet_diag.h>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <linux/sock_diag.h>
#include <linux/tcp.h>

#include <cstring>

#include <gtest/gtest.h>

namespace tallowmere {
namespace {

// Appends one netlink message laid out as the kernel sends it.
void append(std::vector<std::byte>& out, std::uint16_t type, std::uint32_t sequence, const std::vector<std::byte>& payload)
{
    const nlmsghdr header{static_cast<__u32>(NLMSG_LENGTH(payload.size())), type, 0, sequence, 0};
    const std::size_t at = out.size();
    out.resize(at + NLMSG_SPACE(payload.size()));
    std::memcpy(out.data() + at, &header, sizeof header);
    std::memcpy(out.data() + at + NLMSG_HDRLEN, payload.data(), payload.size());
}

// One socket answer or close notice: `infoBytes` of tcp_info (0: none), then optionally a
// cgroup id behind a padding attribute, and a broken attribute at the end.
struct Socket {
    int family = AF_INET;
    const char* remote = "203.0.113.7";
    std::uint32_t inode = 0;
    std::uint32_t cookie = 0;
    std::uint32_t uid = 0;
    std::uint8_t state = 1;  // established
    std::size_t infoBytes = sizeof(tcp_info);
    std::uint64_t received = 0, acked = 0;
    std::optional<std::uint64_t> cgroup = {};
    bool brokenTail = false;
};

void append(std::vector<std::byte>& out, std::uint32_t sequence, const Socket& socket)
{
    inet_diag_msg message{};
    message.idiag_family = static_cast<__u8>(socket.family);
    message.idiag_inode = socket.inode;
    message.idiag_uid = socket.uid;
    message.idiag_state = socket.state;
    message.id.idiag_cookie[0] = socket.cookie;
    message.id.idiag_cookie[1] = 1;
    inet_pton(socket.family, socket.remote, message.id.idiag_dst);
    std::vector<std::byte> payload(NLMSG_ALIGN(sizeof message));
    std::memcpy(payload.data(), &message, sizeof message);
    auto attribute = [&](unsigned short type, const void* data, std::size_t size, std::size_t length) {
        const std::size_t at = payload.size();
        payload.resize(at + RTA_SPACE(size));
        const rtattr header{static_cast<unsigned short>(length), type};
        std::memcpy(payload.data() + at, &header, sizeof header);
        if (size > 0)
            std::memcpy(payload.data() + at + RTA_LENGTH(0), data, size);
    };
    if (socket.cgroup)
        attribute(INET_DIAG_PAD, nullptr, 0, RTA_LENGTH(0));
    tcp_info info{};
    info.tcpi_bytes_received = socket.received;
    info.tcpi_bytes_acked = socket.acked;
    if (socket.infoBytes > 0)
        attribute(INET_DIAG_INFO, &info, socket.infoBytes, RTA_LENGTH(socket.infoBytes));
    if (socket.cgroup)
        attribute(INET_DIAG_CGROUP_ID, &*socket.cgroup, sizeof *socket.cgroup, RTA_LENGTH(sizeof *socket.cgroup));
    if (socket.brokenTail)
        attribute(INET_DIAG_MARK, nullptr, 0, 200);  // longer than what is left
    append(out, SOCK_DIAG_BY_FAMILY, sequence, payload);
}

TEST(SockDiagRecord, DecodesSocketsOfThisDumpUntilDoneAndFailsOnErrors)
{
    std::vector<std::byte> buffer;
    append(buffer, 7, {.inode = 4242, .received = 1000, .acked = 2000});
    append(buffer, 7, {.family = AF_INET6, .remote = "::ffff:192.168.1.5", .received = 5, .acked = 6});
    // An older kernel's shorter tcp_info still holds both counters; a still shorter one does not.
    append(buffer, 7, {.family = AF_INET6, .remote = "2606:4700::1", .infoBytes = offsetof(tcp_info, tcpi_bytes_received) + 8,
                       .received = 77, .acked = 88});
    append(buffer, 7, {.infoBytes = offsetof(tcp_info, tcpi_bytes_received), .received = 9, .acked = 9});
    append(buffer, 7, {.infoBytes = 0});
    append(buffer, NLMSG_DONE, 7, std::vector<std::byte>(4));
    const SockDiagChunk chunk = decodeSockDiagChunk(buffer, 7);
    EXPECT_TRUE(chunk.done && !chunk.failed);
    ASSERT_EQ(chunk.records.size(), 5u);
    EXPECT_EQ(chunk.records[0].inode, 4242u);
    // An established socket's acknowledged count includes its SYN, which is no byte of data.
    EXPECT_EQ(chunk.records[0].bytes, (ByteCounts{1000, 1999}));
    EXPECT_EQ(remoteAddressText(chunk.records[0]), QStringLiteral("203.0.113.7"));
    EXPECT_EQ(remoteAddressText(chunk.records[1]), QStringLiteral("192.168.1.5")) << "mapped IPv4 reads as IPv4";
    EXPECT_EQ(remoteAddressText(chunk.records[2]), QStringLiteral("2606:4700::1"));
    EXPECT_EQ(chunk.records[2].bytes, (ByteCounts{77, 87}));
    EXPECT_FALSE(chunk.records[3].bytes || chunk.records[4].bytes);

    // Other dumps are skipped; errors and broken lengths fail the dump.
    std::vector<std::byte> stale;
    append(stale, 3, {.inode = 1});
    append(stale, NLMSG_DONE, 3, std::vector<std::byte>(4));
    append(stale, 4, {.inode = 2});
    const SockDiagChunk skipped = decodeSockDiagChunk(stale, 4);
    EXPECT_FALSE(skipped.done) << "the end of an earlier dump does not end this one";
    ASSERT_EQ(skipped.records.size(), 1u);
    EXPECT_EQ(skipped.records[0].inode, 2u);

    std::vector<std::byte> error, truncated;
    append(error, NLMSG_ERROR, 5, std::vector<std::byte>(20));
    EXPECT_TRUE(decodeSockDiagChunk(error, 5).failed);
    append(truncated, 6, {.inode = 1});
    truncated.resize(truncated.size() - 10);
    EXPECT_TRUE(decodeSockDiagChunk(truncated, 6).failed);
}

// Close notices as the kernel multicasts them: sequence 0, cookie set, inode 0, state closed
// (both FINs are in the counters, and our SYN); a broken attribute keeps what came before it.
TEST(SockDiagRecord, DecodesCloseNoticesAndBoundsWhatIsKept)
{
    std::vector<std::byte> buffer;
    for (const auto& [cookie, uid] : {std::pair{7u, 1000u}, {8u, 1001u}, {9u, 1000u}, {10u, 1000u}})
        append(buffer, 0, {.cookie = cookie, .uid = uid, .state = 7, .received = 10 * cookie, .acked = 20 * cookie,
                           .cgroup = 4242, .brokenTail = cookie == 7});

    std::vector<SockDiagRecord> kept;
    // Only uid 1000's, and at most two: the third of that user's is counted as lost.
    EXPECT_EQ(SockDiagDestroyListener::collect(buffer, 1000, 2, kept), 1u);
    ASSERT_EQ(kept.size(), 2u);
    EXPECT_EQ(kept[0].cookie, 7u | (1ull << 32));
    EXPECT_EQ(kept[0].inode, 0u);
    EXPECT_EQ(kept[0].bytes, (ByteCounts{69, 138}));
    EXPECT_EQ(kept[0].cgroupId, 4242u);
    EXPECT_EQ(kept[1].bytes, (ByteCounts{89, 178}));
}

} // namespace
} // namespace tallowmere
