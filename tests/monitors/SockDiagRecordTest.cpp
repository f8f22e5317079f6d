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

// One socket answer with `infoBytes` of tcp_info attached (0: none).
void appendSocket(std::vector<std::byte>& out, std::uint32_t sequence, int family, const char* remote,
                  std::uint32_t inode, std::size_t infoBytes, std::uint64_t received = 0, std::uint64_t acked = 0)
{
    inet_diag_msg message{};
    message.idiag_family = static_cast<__u8>(family);
    message.idiag_inode = inode;
    inet_pton(family, remote, message.id.idiag_dst);
    std::vector<std::byte> payload(NLMSG_ALIGN(sizeof message) + (infoBytes > 0 ? RTA_SPACE(infoBytes) : 0));
    std::memcpy(payload.data(), &message, sizeof message);
    if (infoBytes > 0) {
        tcp_info info{};
        info.tcpi_bytes_received = received;
        info.tcpi_bytes_acked = acked;
        const rtattr attribute{static_cast<unsigned short>(RTA_LENGTH(infoBytes)), INET_DIAG_INFO};
        std::byte* at = payload.data() + NLMSG_ALIGN(sizeof message);
        std::memcpy(at, &attribute, sizeof attribute);
        std::memcpy(at + RTA_LENGTH(0), &info, std::min(infoBytes, sizeof info));
    }
    append(out, SOCK_DIAG_BY_FAMILY, sequence, payload);
}

TEST(SockDiagRecord, DecodesSocketsOfThisDumpUntilDoneAndFailsOnErrors)
{
    std::vector<std::byte> buffer;
    appendSocket(buffer, 7, AF_INET, "203.0.113.7", 4242, sizeof(tcp_info), 1000, 2000);
    appendSocket(buffer, 7, AF_INET6, "::ffff:192.168.1.5", 4343, sizeof(tcp_info), 5, 6);
    // An older kernel's shorter tcp_info still holds both counters; a still shorter one does not.
    appendSocket(buffer, 7, AF_INET6, "2606:4700::1", 1, offsetof(tcp_info, tcpi_bytes_received) + 8, 77, 88);
    appendSocket(buffer, 7, AF_INET, "10.0.0.2", 2, offsetof(tcp_info, tcpi_bytes_received), 9, 9);
    appendSocket(buffer, 7, AF_INET, "10.0.0.3", 3, 0);
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
    appendSocket(stale, 3, AF_INET, "10.0.0.1", 1, sizeof(tcp_info));
    append(stale, NLMSG_DONE, 3, std::vector<std::byte>(4));
    appendSocket(stale, 4, AF_INET, "10.0.0.2", 2, sizeof(tcp_info));
    const SockDiagChunk skipped = decodeSockDiagChunk(stale, 4);
    EXPECT_FALSE(skipped.done) << "the end of an earlier dump does not end this one";
    ASSERT_EQ(skipped.records.size(), 1u);
    EXPECT_EQ(skipped.records[0].inode, 2u);

    std::vector<std::byte> error, truncated;
    append(error, NLMSG_ERROR, 5, std::vector<std::byte>(20));
    EXPECT_TRUE(decodeSockDiagChunk(error, 5).failed);
    appendSocket(truncated, 6, AF_INET, "10.0.0.1", 1, sizeof(tcp_info));
    truncated.resize(truncated.size() - 10);
    EXPECT_TRUE(decodeSockDiagChunk(truncated, 6).failed);
}

// Close notices as the kernel multicasts them: sequence 0, cookie set, inode 0, tcp_info and
// a cgroup id after a padding attribute; a broken attribute keeps what came before it.
TEST(SockDiagRecord, DecodesCloseNoticesAndBoundsWhatIsKept)
{
    auto notice = [](std::uint32_t cookie, std::uint32_t uid, bool brokenTail) {
        inet_diag_msg message{};
        message.idiag_family = AF_INET;
        message.idiag_uid = uid;
        message.idiag_state = 7;  // closed: both FINs are in the counters, and our SYN
        message.id.idiag_cookie[0] = cookie;
        message.id.idiag_cookie[1] = 1;
        inet_pton(AF_INET, "203.0.113.7", message.id.idiag_dst);
        tcp_info info{};
        info.tcpi_bytes_received = 10 * cookie;
        info.tcpi_bytes_acked = 20 * cookie;
        const std::uint64_t cgroup = 4242;
        std::vector<std::byte> payload(NLMSG_ALIGN(sizeof message) + RTA_SPACE(0) + RTA_SPACE(sizeof info)
                                       + RTA_SPACE(sizeof cgroup) + (brokenTail ? RTA_SPACE(0) : 0));
        std::byte* at = payload.data();
        auto put = [&](const void* data, std::size_t size, std::size_t advance) {
            std::memcpy(at, data, size);
            at += advance;
        };
        put(&message, sizeof message, NLMSG_ALIGN(sizeof message));
        const rtattr pad{static_cast<unsigned short>(RTA_LENGTH(0)), INET_DIAG_PAD};
        put(&pad, sizeof pad, RTA_SPACE(0));
        const rtattr infoHeader{static_cast<unsigned short>(RTA_LENGTH(sizeof info)), INET_DIAG_INFO};
        put(&infoHeader, sizeof infoHeader, RTA_LENGTH(0));
        put(&info, sizeof info, RTA_ALIGN(sizeof info));
        const rtattr cgroupHeader{static_cast<unsigned short>(RTA_LENGTH(sizeof cgroup)), INET_DIAG_CGROUP_ID};
        put(&cgroupHeader, sizeof cgroupHeader, RTA_LENGTH(0));
        put(&cgroup, sizeof cgroup, RTA_ALIGN(sizeof cgroup));
        if (brokenTail) {
            const rtattr broken{200, INET_DIAG_MARK};  // longer than what is left
            put(&broken, sizeof broken, 0);
        }
        std::vector<std::byte> out;
        append(out, SOCK_DIAG_BY_FAMILY, 0, payload);
        return out;
    };
    std::vector<std::byte> buffer = notice(7, 1000, true);
    for (const auto& more : {notice(8, 1001, false), notice(9, 1000, false), notice(10, 1000, false)})
        buffer.insert(buffer.end(), more.begin(), more.end());

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
