#include "monitors/SockDiagRecord.h"

#include <arpa/inet.h>
#include <linux/inet_diag.h>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <linux/sock_diag.h>
#include <linux/tcp.h>
#include <sys/socket.h>

#include <cstring>

#include <gtest/gtest.h>

namespace tallowmere {
namespace {

// Builds netlink datagrams the way the kernel lays them out.
class Datagram {
public:
    // One socket answer; `info` set to the number of tcp_info bytes to attach (0 for none).
    Datagram& socket(std::uint32_t sequence, int family, const char* remote, std::uint64_t inode,
                     std::size_t infoBytes, std::uint64_t received = 0, std::uint64_t acked = 0)
    {
        inet_diag_msg message{};
        message.idiag_family = static_cast<__u8>(family);
        message.idiag_inode = static_cast<__u32>(inode);
        message.idiag_uid = 1000;
        message.id.idiag_dport = htons(443);
        inet_pton(family, remote, message.id.idiag_dst);
        std::vector<std::byte> payload(NLMSG_ALIGN(sizeof message));
        std::memcpy(payload.data(), &message, sizeof message);
        // An unrelated attribute first, as the kernel sends several.
        appendAttribute(payload, INET_DIAG_SHUTDOWN, std::vector<std::byte>(1));
        if (infoBytes > 0) {
            tcp_info info{};
            info.tcpi_bytes_received = received;
            info.tcpi_bytes_acked = acked;
            std::vector<std::byte> raw(infoBytes);
            std::memcpy(raw.data(), &info, std::min(infoBytes, sizeof info));
            appendAttribute(payload, INET_DIAG_INFO, raw);
        }
        return message_(SOCK_DIAG_BY_FAMILY, sequence, payload);
    }
    Datagram& done(std::uint32_t sequence) { return message_(NLMSG_DONE, sequence, std::vector<std::byte>(4)); }
    Datagram& error(std::uint32_t sequence) { return message_(NLMSG_ERROR, sequence, std::vector<std::byte>(20)); }

    std::vector<std::byte> bytes;

private:
    static void appendAttribute(std::vector<std::byte>& to, unsigned short type, const std::vector<std::byte>& data)
    {
        rtattr header{static_cast<unsigned short>(RTA_LENGTH(data.size())), type};
        const std::size_t at = to.size();
        to.resize(at + RTA_SPACE(data.size()));
        std::memcpy(to.data() + at, &header, sizeof header);
        std::memcpy(to.data() + at + RTA_LENGTH(0), data.data(), data.size());
    }
    Datagram& message_(std::uint16_t type, std::uint32_t sequence, const std::vector<std::byte>& payload)
    {
        nlmsghdr header{};
        header.nlmsg_len = static_cast<__u32>(NLMSG_LENGTH(payload.size()));
        header.nlmsg_type = type;
        header.nlmsg_seq = sequence;
        const std::size_t at = bytes.size();
        bytes.resize(at + NLMSG_SPACE(payload.size()));
        std::memcpy(bytes.data() + at, &header, sizeof header);
        std::memcpy(bytes.data() + at + NLMSG_HDRLEN, payload.data(), payload.size());
        return *this;
    }
};

TEST(SockDiagRecord, DecodesSocketsWithTheirByteCountersUntilDone)
{
    Datagram datagram;
    datagram.socket(7, AF_INET, "17.253.1.2", 4242, sizeof(tcp_info), 1000, 2000)
        .socket(7, AF_INET6, "2606:4700::6810:84e5", 4343, sizeof(tcp_info), 5, 6)
        .done(7);
    const SockDiagChunk chunk = decodeSockDiagChunk(datagram.bytes, 7);
    EXPECT_TRUE(chunk.done);
    EXPECT_FALSE(chunk.failed);
    ASSERT_EQ(chunk.records.size(), 2u);
    EXPECT_EQ(chunk.records[0].inode, 4242u);
    EXPECT_EQ(chunk.records[0].remotePort, 443);
    EXPECT_EQ(chunk.records[0].uid, 1000u);
    EXPECT_EQ(chunk.records[0].bytes, (ByteCounts{1000, 2000}));
    EXPECT_EQ(remoteAddressText(chunk.records[0]), QStringLiteral("17.253.1.2"));
    EXPECT_EQ(chunk.records[1].bytes, (ByteCounts{5, 6}));
    EXPECT_EQ(remoteAddressText(chunk.records[1]), QStringLiteral("2606:4700::6810:84e5"));
}

TEST(SockDiagRecord, MissingOrShortTcpInfoLeavesTheCountersAbsent)
{
    Datagram datagram;
    const std::size_t tooShort = offsetof(tcp_info, tcpi_bytes_received);
    // An older kernel's tcp_info that still holds both counters is enough.
    const std::size_t olderKernel = offsetof(tcp_info, tcpi_bytes_received) + sizeof(__u64);
    datagram.socket(1, AF_INET, "10.0.0.1", 1, 0)
        .socket(1, AF_INET, "10.0.0.2", 2, tooShort, 9, 9)
        .socket(1, AF_INET, "10.0.0.3", 3, olderKernel, 77, 88);
    const SockDiagChunk chunk = decodeSockDiagChunk(datagram.bytes, 1);
    EXPECT_FALSE(chunk.done);
    ASSERT_EQ(chunk.records.size(), 3u);
    EXPECT_FALSE(chunk.records[0].bytes);
    EXPECT_FALSE(chunk.records[1].bytes);
    ASSERT_TRUE(chunk.records[2].bytes);
    EXPECT_EQ(chunk.records[2].bytes->inBytes, 77u);
}

TEST(SockDiagRecord, SkipsOtherDumpsAndFailsOnErrorsOrBrokenLengths)
{
    Datagram stale;
    stale.socket(3, AF_INET, "10.0.0.1", 1, sizeof(tcp_info)).done(3).socket(4, AF_INET, "10.0.0.2", 2, sizeof(tcp_info));
    const SockDiagChunk skipped = decodeSockDiagChunk(stale.bytes, 4);
    EXPECT_FALSE(skipped.done) << "the DONE of an earlier dump does not end this one";
    ASSERT_EQ(skipped.records.size(), 1u);
    EXPECT_EQ(skipped.records[0].inode, 2u);

    Datagram error;
    error.error(5);
    EXPECT_TRUE(decodeSockDiagChunk(error.bytes, 5).failed);

    Datagram truncated;
    truncated.socket(6, AF_INET, "10.0.0.1", 1, sizeof(tcp_info));
    truncated.bytes.resize(truncated.bytes.size() - 10);
    EXPECT_TRUE(decodeSockDiagChunk(truncated.bytes, 6).failed);

    EXPECT_TRUE(decodeSockDiagChunk({}, 1).records.empty());
}

TEST(SockDiagRecord, WritesMappedIPv4AsIPv4)
{
    SockDiagRecord record;
    record.family = AF_INET6;
    inet_pton(AF_INET6, "::ffff:192.168.1.5", record.remote.data());
    EXPECT_EQ(remoteAddressText(record), QStringLiteral("192.168.1.5"));
    record.family = AF_UNIX;
    EXPECT_FALSE(remoteAddressText(record));
}

TEST(SockDiagRecord, DumpRequestAsksForTcpWithInfoLeavingListenersOut)
{
    const std::vector<std::byte> bytes = sockDiagDumpRequest(AF_INET6, 9);
    ASSERT_EQ(bytes.size(), NLMSG_LENGTH(sizeof(inet_diag_req_v2)));
    nlmsghdr header;
    std::memcpy(&header, bytes.data(), sizeof header);
    EXPECT_EQ(header.nlmsg_type, SOCK_DIAG_BY_FAMILY);
    EXPECT_EQ(header.nlmsg_seq, 9u);
    EXPECT_EQ(header.nlmsg_flags, NLM_F_REQUEST | NLM_F_DUMP);
    inet_diag_req_v2 request;
    std::memcpy(&request, bytes.data() + NLMSG_HDRLEN, sizeof request);
    EXPECT_EQ(request.sdiag_family, AF_INET6);
    EXPECT_EQ(request.sdiag_protocol, IPPROTO_TCP);
    EXPECT_TRUE(request.idiag_ext & (1 << (INET_DIAG_INFO - 1)));
    EXPECT_TRUE(request.idiag_states & (1 << 1)) << "established";
    EXPECT_FALSE(request.idiag_states & (1 << 10)) << "listening";

    const std::vector<std::byte> both = sockDiagBothFamiliesRequest(10);
    ASSERT_EQ(both.size(), NLMSG_LENGTH(sizeof(inet_diag_req)));
    std::memcpy(&header, both.data(), sizeof header);
    EXPECT_EQ(header.nlmsg_type, TCPDIAG_GETSOCK);
    EXPECT_EQ(header.nlmsg_seq, 10u);
    inet_diag_req older;
    std::memcpy(&older, both.data() + NLMSG_HDRLEN, sizeof older);
    EXPECT_TRUE(older.idiag_ext & (1 << (INET_DIAG_INFO - 1)));
    EXPECT_EQ(older.idiag_states, request.idiag_states);
}

} // namespace
} // namespace tallowmere
