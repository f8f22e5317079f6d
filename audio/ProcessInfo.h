#pragma once

#include <QString>

#include <optional>

namespace tallowmere {

// What attribution needs to know about one process.
struct ProcessInfo {
    int parent = 0;
    QString executable; // file name of the running program

    bool operator==(const ProcessInfo&) const = default;
};

// From <procRoot>/<pid>/stat and exe; absent when the process cannot be read.
std::optional<ProcessInfo> readProcessInfo(const QString& procRoot, int pid);

} // namespace tallowmere
