#pragma once

#include <dirent.h>
#include <fcntl.h>

#include <memory>
#include <string>

namespace tallowmere {

// An open directory read entry by entry, closed with the object. It opens relative to another
// directory's descriptor, so a walk over /proc resolves the root only once.
class Directory {
public:
    Directory() = default;
    explicit Directory(const std::string& path) : Directory(AT_FDCWD, path.c_str()) {}
    Directory(int parentFd, const char* path);

    explicit operator bool() const { return dir_ != nullptr; }
    // For openat/readlinkat relative to this directory; -1 when it is not open.
    int fd() const;

    // The next entry's name, without "." and ".."; nullptr at the end.
    const char* next();
    // The same for sub-folders only (links are not followed), with their inode numbers.
    const char* nextFolder(ino_t& inode);

private:
    const dirent* nextEntry();

    struct Closer {
        void operator()(DIR* dir) const { ::closedir(dir); }
    };
    std::unique_ptr<DIR, Closer> dir_;
};

} // namespace tallowmere
