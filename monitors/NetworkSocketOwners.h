#pragma once

#include <QString>

#include <cstdint>
#include <span>
#include <string>
#include <unordered_map>
#include <unordered_set>

namespace tallowmere {

// Which process holds each socket inode, found through the <procRoot>/[pid]/fd links and
// cached: the process directories are walked again only when a socket turns up that is
// neither known nor known to be out of reach (another user's process, or held by nobody).
class NetworkSocketOwners {
public:
    explicit NetworkSocketOwners(std::string procRoot = "/proc");

    // Brings the cache in line with the sockets alive now; forgets sockets that are gone.
    void update(std::span<const std::uint64_t> liveInodes);

    // "comm.pid" of the process holding the socket, or null when it cannot be attributed.
    const QString* labelOf(std::uint64_t inode) const;

    // How many times the process directories were walked (the expensive part).
    int scanCount() const { return scanCount_; }

private:
    struct Owner {
        int pid = 0;
        QString label;
    };

    // One walk over every process; fills owners_ for the inodes in `wanted`.
    void scan(const std::unordered_set<std::uint64_t>& wanted);
    bool processAlive(int pid) const;

    std::string procRoot_;
    std::unordered_map<std::uint64_t, Owner> owners_;
    std::unordered_set<std::uint64_t> unowned_;
    int scanCount_ = 0;
};

// The inode in a descriptor link text "socket:[12345]"; 0 for anything else.
std::uint64_t socketInodeOfLink(std::string_view link);

// "comm.pid" from the text of /proc/[pid]/comm (trailing line feed dropped).
QString processLabel(std::string_view comm, int pid);

} // namespace tallowmere
