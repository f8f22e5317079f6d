#pragma once

#include "monitors/NetworkCgroupProcesses.h"

#include <QString>

#include <chrono>
#include <cstdint>
#include <deque>
#include <functional>
#include <span>
#include <string>
#include <unordered_map>
#include <optional>
#include <unordered_set>
#include <vector>

namespace tallowmere {

// A socket alive in a dump: its inode and, where the kernel sends it, the cgroup of the
// process that created it.
struct LiveSocket {
    std::uint64_t inode = 0;
    std::optional<std::uint64_t> cgroupId;
};

// Which process holds each socket inode, found through the <procRoot>/[pid]/fd links and
// cached. A new socket is looked for first in the few processes of its cgroup (with a
// cgroupRoot), then in the processes that held sockets recently (most connections come from
// a few programs); every process is walked only when that fails, at most once per
// kFullWalkInterval, and not for sockets known to be out of reach (another user's process,
// or held by nobody).
class NetworkSocketOwners {
public:
    using Clock = std::function<std::chrono::steady_clock::time_point()>;
    static constexpr std::chrono::seconds kFullWalkInterval{5};
    static constexpr std::size_t kRecentOwners = 32;

    explicit NetworkSocketOwners(std::string procRoot = "/proc", std::optional<std::string> cgroupRoot = std::nullopt,
                                 Clock clock = std::chrono::steady_clock::now);

    // Brings the cache in line with the sockets alive now; forgets sockets that are gone.
    void update(std::span<const LiveSocket> live);

    // "comm.pid" of the process holding the socket, or null when it cannot be attributed.
    const QString* labelOf(std::uint64_t inode) const;

    // How many times every process directory was walked (the expensive part).
    int scanCount() const { return scanCount_; }

private:
    struct Owner {
        int pid = 0;
        QString label;
    };

    // Looks through the descriptors of the processes `pids` (every process when empty) and
    // moves the inodes found from `wanted` into owners_.
    void scan(std::unordered_set<std::uint64_t>& wanted, const std::vector<int>& pids);
    bool processAlive(int pid) const;
    void rememberOwner(int pid);

    std::vector<int> cgroupProcesses(const std::unordered_set<std::uint64_t>& unknown,
                                     std::span<const LiveSocket> live);

    std::string procRoot_;
    Clock clock_;
    std::optional<NetworkCgroupProcesses> cgroups_;
    std::unordered_set<std::uint64_t> cgroupSearched_;  // unknown sockets whose group did not have them
    std::unordered_map<std::uint64_t, Owner> owners_;
    std::unordered_set<std::uint64_t> unowned_;
    std::deque<int> recentOwners_;  // newest first
    std::optional<std::chrono::steady_clock::time_point> lastFullWalk_;
    int scanCount_ = 0;
};

// The inode in a descriptor link text "socket:[12345]"; 0 for anything else.
std::uint64_t socketInodeOfLink(std::string_view link);

// "comm.pid" from the text of /proc/[pid]/comm (trailing line feed dropped).
QString processLabel(std::string_view comm, int pid);

} // namespace tallowmere
