#include "monitors/SockDiagRecord.h"

#include <arpa/inet.h>
#include <linux/inet_diag.h>
#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <linux/sock_diag.h>
#include <linux/tcp.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include <algorithm>
#include <cstring>

namespace tallowmere {

namespace {

// Decodes the attributes after an inet_diag_msg: the byte counters of INET_DIAG_INFO and the
// cgroup id. A malformed attribute ends the walk; what was decoded before it stands.
void decodeAttributes(const std::byte* attributes, std::size_t length, SockDiagRecord& record)
{
    while (length >= sizeof(rtattr)) {
        rtattr header;
        std::memcpy(&header, attributes, sizeof header);
        if (header.rta_len < sizeof(rtattr) || header.rta_len > length)
            return;
        const std::size_t payload = header.rta_len - RTA_LENGTH(0);
        const std::byte* data = attributes + RTA_LENGTH(0);
        if (header.rta_type == INET_DIAG_INFO) {
            // Older kernels send a shorter tcp_info; the byte counters must be inside it.
            constexpr std::size_t needed = offsetof(tcp_info, tcpi_bytes_received) + sizeof(__u64);
            if (payload >= needed) {
                tcp_info info{};
                std::memcpy(&info, data, std::min(payload, sizeof info));
                record.bytes = ByteCounts{info.tcpi_bytes_received, info.tcpi_bytes_acked};
            }
        } else if (header.rta_type == INET_DIAG_CGROUP_ID && payload >= sizeof(std::uint64_t)) {
            std::uint64_t id = 0;
            std::memcpy(&id, data, sizeof id);
            record.cgroupId = id;
        }
        const std::size_t step = RTA_ALIGN(header.rta_len);
        if (step >= length)
            return;
        attributes += step;
        length -= step;
    }
}

SockDiagRecord decodeMessage(const std::byte* payload, std::size_t length)
{
    inet_diag_msg message;
    std::memcpy(&message, payload, sizeof message);
    SockDiagRecord record;
    record.family = message.idiag_family;
    std::memcpy(record.remote.data(), message.id.idiag_dst, sizeof message.id.idiag_dst);
    record.remotePort = ntohs(message.id.idiag_dport);
    record.uid = message.idiag_uid;
    record.inode = message.idiag_inode;
    record.cookie = message.id.idiag_cookie[0] | (std::uint64_t{message.id.idiag_cookie[1]} << 32);
    const std::size_t head = NLMSG_ALIGN(sizeof message);
    if (length > head)
        decodeAttributes(payload + head, length - head, record);
    // SYN and FIN take one sequence number each, which the kernel's counters include once
    // acknowledged (ours) or received (the peer's FIN): not bytes of data. (Kernel TCP state
    // numbers: SYN_SENT 2, SYN_RECV 3, FIN_WAIT2 5, CLOSE 7, CLOSE_WAIT 8, LAST_ACK 9, CLOSING 11.)
    if (record.bytes) {
        const unsigned state = message.idiag_state;
        if (state != 2 && state != 3 && record.bytes->outBytes > 0)
            --record.bytes->outBytes;
        if ((state == 5 || state == 7) && record.bytes->outBytes > 0)
            --record.bytes->outBytes;
        if ((state == 7 || state == 8 || state == 9 || state == 11) && record.bytes->inBytes > 0)
            --record.bytes->inBytes;
    }
    return record;
}

} // namespace

SockDiagChunk decodeSockDiagChunk(std::span<const std::byte> buffer, std::optional<std::uint32_t> sequence)
{
    SockDiagChunk chunk;
    const std::byte* data = buffer.data();
    std::size_t remaining = buffer.size();
    while (remaining >= sizeof(nlmsghdr)) {
        nlmsghdr header;
        std::memcpy(&header, data, sizeof header);
        if (header.nlmsg_len < sizeof header || header.nlmsg_len > remaining) {
            chunk.failed = true;
            return chunk;
        }
        const std::byte* payload = data + NLMSG_HDRLEN;
        const std::size_t payloadLength = header.nlmsg_len - NLMSG_HDRLEN;
        const std::size_t step = NLMSG_ALIGN(header.nlmsg_len);
        if (sequence && header.nlmsg_seq != *sequence) {
            // Left over from an earlier dump that timed out half-way; not ours to decode.
        } else if (header.nlmsg_type == NLMSG_DONE) {
            chunk.done = true;
            return chunk;
        } else if (header.nlmsg_type == NLMSG_ERROR) {
            chunk.failed = true;
            return chunk;
        } else if ((header.nlmsg_type == SOCK_DIAG_BY_FAMILY || header.nlmsg_type == TCPDIAG_GETSOCK)
                   && payloadLength >= sizeof(inet_diag_msg)) {
            chunk.records.push_back(decodeMessage(payload, payloadLength));
        }
        if (step >= remaining)
            break;
        data += step;
        remaining -= step;
    }
    return chunk;
}

namespace {

// Listening, TIME_WAIT and half-open request sockets belong to no process's traffic.
// (Kernel TCP state numbers; NEW_SYN_RECV has no name in the user-space headers.)
constexpr unsigned kTimeWait = 6, kListen = 10, kNewSynRecv = 12;
constexpr unsigned kWantedStates = ~((1u << kTimeWait) | (1u << kListen) | (1u << kNewSynRecv));

template <class Request>
std::vector<std::byte> requestBytes(std::uint16_t type, std::uint32_t sequence, const Request& request)
{
    struct {
        nlmsghdr header;
        Request request;
    } message{};
    message.header.nlmsg_len = sizeof message;
    message.header.nlmsg_type = type;
    message.header.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
    message.header.nlmsg_seq = sequence;
    message.request = request;
    std::vector<std::byte> bytes(sizeof message);
    std::memcpy(bytes.data(), &message, sizeof message);
    return bytes;
}

} // namespace

std::vector<std::byte> sockDiagDumpRequest(int family, std::uint32_t sequence)
{
    inet_diag_req_v2 request{};
    request.sdiag_family = static_cast<__u8>(family);
    request.sdiag_protocol = IPPROTO_TCP;
    request.idiag_states = kWantedStates;
    request.idiag_ext = 1 << (INET_DIAG_INFO - 1);
    return requestBytes(SOCK_DIAG_BY_FAMILY, sequence, request);
}

std::vector<std::byte> sockDiagBothFamiliesRequest(std::uint32_t sequence)
{
    // The older request form walks the kernel's connection table once for IPv4 and IPv6
    // together; the per-family form walks the whole table once per family.
    inet_diag_req request{};
    request.idiag_family = AF_INET;
    request.idiag_states = kWantedStates;
    request.idiag_ext = 1 << (INET_DIAG_INFO - 1);
    return requestBytes(TCPDIAG_GETSOCK, sequence, request);
}

std::optional<QString> remoteAddressText(const SockDiagRecord& record)
{
    static constexpr std::uint8_t mappedPrefix[12] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0xff, 0xff};
    char text[INET6_ADDRSTRLEN] = {};
    if (record.family == AF_INET
        || (record.family == AF_INET6 && std::memcmp(record.remote.data(), mappedPrefix, 12) == 0)) {
        const std::uint8_t* v4 = record.remote.data() + (record.family == AF_INET ? 0 : 12);
        if (!inet_ntop(AF_INET, v4, text, sizeof text))
            return std::nullopt;
    } else if (record.family == AF_INET6) {
        if (!inet_ntop(AF_INET6, record.remote.data(), text, sizeof text))
            return std::nullopt;
    } else {
        return std::nullopt;
    }
    return QString::fromLatin1(text);
}

} // namespace tallowmere
