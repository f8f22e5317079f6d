#pragma once

#include <string>

namespace tallowmere {

// Reads a whole (small, kernel-generated) file into `into`, reusing its capacity. `dirFd` is
// AT_FDCWD or an open directory that `path` is relative to. False when the file cannot be
// opened or read; `into` is then empty.
bool readSmallFile(int dirFd, const char* path, std::string& into);
bool readSmallFile(const std::string& path, std::string& into);

// Whether `path` names an entry (a dangling link counts: only the name is asked about).
bool entryExists(const std::string& path);

} // namespace tallowmere
