#include "monitors/NetworkSocketOwners.h"

#include "monitors/ProcFiles.h"
#include "monitors/TextScan.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <memory>

namespace tallowmere {

namespace {

struct DirCloser {
    void operator()(DIR* dir) const { ::closedir(dir); }
};
using DirHandle = std::unique_ptr<DIR, DirCloser>;

// The directory stream owns the descriptor from fdopendir on and closes it with itself.
DirHandle openDirectoryAt(int dirFd, const char* path)
{
    const int fd = ::openat(dirFd, path, O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0)
        return {};
    DIR* dir = ::fdopendir(fd);
    if (!dir) {
        ::close(fd);
        return {};
    }
    return DirHandle(dir);
}

std::optional<int> pidOfName(const char* name)
{
    const auto value = parseDecimal(name);
    if (!value || *value == 0 || *value > 0x3fffffff)
        return std::nullopt;
    return static_cast<int>(*value);
}

} // namespace

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

NetworkSocketOwners::NetworkSocketOwners(std::string procRoot, Clock clock)
    : procRoot_(std::move(procRoot))
    , clock_(std::move(clock))
{
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

void NetworkSocketOwners::update(std::span<const std::uint64_t> liveInodes)
{
    std::unordered_map<std::uint64_t, Owner> kept;
    std::unordered_set<std::uint64_t> keptUnowned;
    std::unordered_set<std::uint64_t> unknown;
    std::unordered_map<int, bool> alive;
    for (const std::uint64_t inode : liveInodes) {
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
    const DirHandle proc = openDirectoryAt(AT_FDCWD, procRoot_.c_str());
    if (!proc)
        return;
    const int procFd = ::dirfd(proc.get());
    std::string comm;
    std::string path;
    std::string name;
    char link[64];
    std::size_t next = 0;
    // Either the given processes, or every numeric entry of the process directory.
    auto nextPid = [&]() -> std::optional<int> {
        if (!pids.empty()) {
            if (next >= pids.size())
                return std::nullopt;
            name = std::to_string(pids[next]);
            return pids[next++];
        }
        while (const dirent* entry = ::readdir(proc.get())) {
            if (const auto pid = pidOfName(entry->d_name)) {
                name = entry->d_name;
                return pid;
            }
        }
        return std::nullopt;
    };
    while (!wanted.empty()) {
        const auto pid = nextPid();
        if (!pid)
            return;
        path.assign(name).append("/fd");
        // Other users' processes refuse this without privileges; their sockets stay unattributed.
        const DirHandle fds = openDirectoryAt(procFd, path.c_str());
        if (!fds)
            continue;
        const int fdsFd = ::dirfd(fds.get());
        QString label;
        while (const dirent* fdEntry = ::readdir(fds.get())) {
            if (fdEntry->d_name[0] == '.')
                continue;
            const ssize_t length = ::readlinkat(fdsFd, fdEntry->d_name, link, sizeof link);
            if (length <= 0 || static_cast<std::size_t>(length) >= sizeof link)
                continue;
            const std::uint64_t inode = socketInodeOfLink({link, static_cast<std::size_t>(length)});
            if (inode == 0 || !wanted.contains(inode))
                continue;
            if (label.isNull()) {
                path.assign(name).append("/comm");
                if (!readSmallFile(procFd, path.c_str(), comm))
                    break;
                label = processLabel(comm, *pid);
                rememberOwner(*pid);
            }
            owners_.emplace(inode, Owner{*pid, label});
            wanted.erase(inode);
        }
    }
}

} // namespace tallowmere
