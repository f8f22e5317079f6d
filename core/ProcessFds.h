#pragma once

#include "core/Directory.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tallowmere {

// The process id a /proc entry name stands for; nothing for "self", "net" and the like.
std::optional<int> pidOfEntry(const char* name);

enum class FdWalk { next, skipProcess, stop };

// Calls `visit` for every open descriptor of every process below `procRoot` whose fd directory
// may be read (other users' processes refuse this without privileges), with the link target
// ("socket:[1234]", "/dev/video0"). `proc` is the open root, for reading more of the process's
// files; returning FdWalk::skipProcess moves on to the next process, FdWalk::stop ends the walk.
// With `pids` given, only those processes are visited, in that order.
using FdVisitor = std::function<FdWalk(const Directory& proc, int pid, std::string_view target)>;
void walkProcessFds(const std::string& procRoot, const FdVisitor& visit, const std::vector<int>& pids = {});

} // namespace tallowmere
