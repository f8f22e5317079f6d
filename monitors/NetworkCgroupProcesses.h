#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace tallowmere {

// The processes of a cgroup v2 group named by the id a socket carries: the inode number of
// the group's folder below the cgroup2 mount. Folders are found by a walk of that tree,
// remembered by inode, and the tree is walked again for an unknown id at most once per
// kRewalkInterval (desktops start a group per application, so new ids come with new programs).
class NetworkCgroupProcesses {
public:
    using Clock = std::function<std::chrono::steady_clock::time_point()>;
    static constexpr std::chrono::seconds kRewalkInterval{5};
    // A group with more processes than this (the root group of a machine that does not give
    // each application its own) is no short cut.
    static constexpr std::size_t kMaxProcesses = 64;

    explicit NetworkCgroupProcesses(std::string cgroupRoot, Clock clock = std::chrono::steady_clock::now);

    // The process ids of the group; empty when it is unknown, gone or too large.
    std::vector<int> processesOf(std::uint64_t cgroupId);

    // Where the cgroup2 tree is mounted below `sysRoot`: fs/cgroup, or its "unified" folder
    // where the older hierarchies are kept beside it; none without cgroup v2.
    static std::optional<std::string> mountBelow(const std::string& sysRoot);

private:
    void walk();

    std::string root_;
    Clock clock_;
    std::unordered_map<std::uint64_t, std::string> folders_;  // relative to root_, "" for the root
    std::optional<std::chrono::steady_clock::time_point> lastWalk_;
};

// The process ids listed in a cgroup.procs text, one per line.
std::vector<int> parseCgroupProcs(std::string_view text);

} // namespace tallowmere
