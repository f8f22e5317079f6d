#include "monitors/NetworkSocketOwners.h"

#include "core/ProcessFds.h"
#include "core/SmallFile.h"
#include "monitors/TextScan.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <memory>

namespace tallowmere {

std::uint64_t socketInodeOfLink(std::string_view link)
{
    constexpr std::string_view prefix = "socket:[";
    if (!link.starts_with(prefix) || !link.ends_with(']'))
        return 0;
    return parseDecimal(link.substr(prefix.size(), link.size() - prefix.size() - 1)).value_or(0);
}

QString processLabel(std::string_view comm, int pid)
{
    while (!comm.empty() && (comm.back() == '\n' || comm.back() == '\0'))
        comm.remove_suffix(1);
    return QString::fromUtf8(comm.data(), static_cast<qsizetype>(comm.size())) + u'.' + QString::number(pid);
}

NetworkSocketOwners::NetworkSocketOwners(std::string procRoot, std::optional<std::string> cgroupRoot, Clock clock)
    : procRoot_(std::move(procRoot))
    , clock_(std::move(clock))
{
    if (cgroupRoot)
        cgroups_.emplace(std::move(*cgroupRoot), clock_);
}

const QString* NetworkSocketOwners::labelOf(std::uint64_t inode) const
{
    const auto it = owners_.find(inode);
    return it == owners_.end() ? nullptr : &it->second.label;
}

bool NetworkSocketOwners::processAlive(int pid) const
{
    // A process that exited but was not reaped yet (state Z) holds no descriptors any more.
    std::string stat;
    if (!readSmallFile(procRoot_ + '/' + std::to_string(pid) + "/stat", stat))
        return entryExists(procRoot_ + '/' + std::to_string(pid));
    const std::size_t end = stat.rfind(')');
    return end == std::string::npos || end + 2 >= stat.size() || (stat[end + 2] != 'Z' && stat[end + 2] != 'X');
}

void NetworkSocketOwners::rememberOwner(int pid)
{
    std::erase(recentOwners_, pid);
    recentOwners_.push_front(pid);
    if (recentOwners_.size() > kRecentOwners)
        recentOwners_.pop_back();
}

std::vector<int> NetworkSocketOwners::cgroupProcesses(const std::unordered_set<std::uint64_t>& unknown,
                                                      std::span<const LiveSocket> live)
{
    std::unordered_set<std::uint64_t> groups;
    std::unordered_set<int> seen;
    std::vector<int> pids;
    for (const LiveSocket& socket : live) {
        // A group is searched once per socket: what it did not show stays for the full walk,
        // which is rate-limited.
        if (!socket.cgroupId || !unknown.contains(socket.inode) || !cgroupSearched_.insert(socket.inode).second
            || !groups.insert(*socket.cgroupId).second)
            continue;
        for (const int pid : cgroups_->processesOf(*socket.cgroupId))
            if (seen.insert(pid).second)
                pids.push_back(pid);
    }
    return pids;
}

void NetworkSocketOwners::update(std::span<const LiveSocket> live)
{
    std::unordered_map<std::uint64_t, Owner> kept;
    std::unordered_set<std::uint64_t> keptUnowned;
    std::unordered_set<std::uint64_t> unknown;
    std::unordered_map<int, bool> alive;
    for (const LiveSocket& socket : live) {
        const std::uint64_t inode = socket.inode;
        if (inode == 0)
            continue;
        if (const auto it = owners_.find(inode); it != owners_.end()) {
            // A process that ended may have passed the socket on; ask again who holds it.
            auto [entry, fresh] = alive.try_emplace(it->second.pid, false);
            if (fresh)
                entry->second = processAlive(it->second.pid);
            if (entry->second) {
                kept.insert(*it);
                continue;
            }
        } else if (unowned_.contains(inode)) {
            keptUnowned.insert(inode);
            continue;
        }
        unknown.insert(inode);
    }
    owners_ = std::move(kept);
    unowned_ = std::move(keptUnowned);
    if (unknown.empty())
        return;

    if (cgroups_) {
        std::erase_if(cgroupSearched_, [&](std::uint64_t inode) { return !unknown.contains(inode); });
        if (const std::vector<int> pids = cgroupProcesses(unknown, live); !pids.empty())
            scan(unknown, pids);
    }
    std::vector<int> recent;
    for (const int pid : recentOwners_) {
        const auto known = alive.find(pid);
        if (known == alive.end() ? processAlive(pid) : known->second)
            recent.push_back(pid);
    }
    if (!recent.empty())
        scan(unknown, recent);
    const auto now = clock_();
    if (unknown.empty() || (lastFullWalk_ && now - *lastFullWalk_ < kFullWalkInterval))
        return;
    // Sockets missed before may have been taken over by a process we can read since.
    lastFullWalk_ = now;
    unknown.insert(unowned_.begin(), unowned_.end());
    unowned_.clear();
    ++scanCount_;
    scan(unknown, {});
    unowned_.insert(unknown.begin(), unknown.end());
}

void NetworkSocketOwners::scan(std::unordered_set<std::uint64_t>& wanted, const std::vector<int>& pids)
{
    if (wanted.empty())
        return;
    std::string comm;
    std::string path;
    int labelled = 0;
    QString label;
    // Other users' processes refuse their fd folder without privileges; their sockets stay
    // unattributed.
    walkProcessFds(procRoot_, [&](const Directory& proc, int pid, std::string_view link) {
        const std::uint64_t inode = socketInodeOfLink(link);
        if (inode == 0 || !wanted.contains(inode))
            return FdWalk::next;
        if (labelled != pid) {
            path.assign(std::to_string(pid)).append("/comm");
            if (!readSmallFile(proc.fd(), path.c_str(), comm))
                return FdWalk::skipProcess;
            labelled = pid;
            label = processLabel(comm, pid);
            rememberOwner(pid);
        }
        owners_.emplace(inode, Owner{pid, label});
        wanted.erase(inode);
        return wanted.empty() ? FdWalk::stop : FdWalk::next;
    }, pids);
}

} // namespace tallowmere
