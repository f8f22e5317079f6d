#include "monitors/NetworkCgroupProcesses.h"

#include "core/Directory.h"
#include "core/SmallFile.h"
#include "monitors/TextScan.h"

#include <linux/magic.h>
#include <sys/stat.h>
#include <sys/vfs.h>

namespace tallowmere {

std::vector<int> parseCgroupProcs(std::string_view text)
{
    std::vector<int> pids;
    LineScanner lines(text);
    while (const auto line = lines.next()) {
        const auto pid = parseDecimal(*line);
        if (pid && *pid > 0 && *pid <= 0x3fffffff)
            pids.push_back(static_cast<int>(*pid));
    }
    return pids;
}

NetworkCgroupProcesses::NetworkCgroupProcesses(std::string cgroupRoot, Clock clock)
    : root_(std::move(cgroupRoot))
    , clock_(std::move(clock))
{
}

std::optional<std::string> NetworkCgroupProcesses::mountBelow(const std::string& sysRoot)
{
    for (const char* folder : {"/fs/cgroup", "/fs/cgroup/unified"}) {
        const std::string path = sysRoot + folder;
        struct statfs info;
        if (::statfs(path.c_str(), &info) == 0 && info.f_type == CGROUP2_SUPER_MAGIC)
            return path;
    }
    return std::nullopt;
}

std::vector<int> NetworkCgroupProcesses::processesOf(std::uint64_t cgroupId)
{
    auto it = folders_.find(cgroupId);
    if (it == folders_.end()) {
        const auto now = clock_();
        if (lastWalk_ && now - *lastWalk_ < kRewalkInterval)
            return {};
        lastWalk_ = now;
        walk();
        it = folders_.find(cgroupId);
        if (it == folders_.end())
            return {};
    }
    std::string text;
    if (!readSmallFile(root_ + it->second + "/cgroup.procs", text)) {
        folders_.erase(it);  // the group is gone; ids are never given out again
        return {};
    }
    std::vector<int> pids = parseCgroupProcs(text);
    if (pids.size() > kMaxProcesses)
        return {};
    return pids;
}

void NetworkCgroupProcesses::walk()
{
    folders_.clear();
    struct stat info;
    if (::stat(root_.c_str(), &info) != 0)
        return;
    folders_.emplace(info.st_ino, std::string());
    // Over relative paths; the tree is a few hundred folders at most.
    std::vector<std::string> pending{std::string()};
    while (!pending.empty()) {
        const std::string folder = std::move(pending.back());
        pending.pop_back();
        Directory directory(root_ + folder);
        ino_t inode = 0;
        while (const char* name = directory.nextFolder(inode)) {
            std::string path = folder + '/' + name;
            folders_.emplace(inode, path);
            pending.push_back(std::move(path));
        }
    }
}

} // namespace tallowmere
