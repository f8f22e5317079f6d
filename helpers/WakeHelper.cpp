// tallowmere-wake-helper: installs or removes one user's daily wake timer in the system
// manager. It runs as root through pkexec, so it trusts nothing it is given: every argument is
// checked, it writes only the two units of the named user, and under pkexec the user must be
// the one who asked and the unit directory and systemctl are fixed.
//
//   tallowmere-wake-helper [--unit-dir DIR] install USER HH:MM
//   tallowmere-wake-helper [--unit-dir DIR] remove USER
//
// Exit status: 0 done, 1 a unit or systemctl failed, 2 refused arguments. 126 and 127 are left
// to pkexec, which uses them for a cancelled or refused authorisation.

#include "core/UniqueFd.h"
#include "power/WakeUnits.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <optional>
#include <string>
#include <variant>
#include <vector>

#include <fcntl.h>
#include <pwd.h>
#include <spawn.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

extern char** environ;

namespace {

using namespace tallowmere;

constexpr int done = 0;
constexpr int failed = 1;
constexpr int refused = 2;

struct Request {
    std::string unitDirectory{wake::systemUnitDirectory};
    std::string systemctl;
    bool install = false;
    std::string user;
    wake::ClockTime time;
};

int refuse(const char* why)
{
    std::fprintf(stderr, "tallowmere-wake-helper: %s\n"
                         "usage: tallowmere-wake-helper [--unit-dir DIR] install USER HH:MM | remove USER\n",
                 why);
    return refused;
}

std::string defaultSystemctl()
{
    return access("/usr/bin/systemctl", X_OK) == 0 ? "/usr/bin/systemctl" : "/bin/systemctl";
}

// The name of the user pkexec says called it, or nothing when PKEXEC_UID is not a number.
std::optional<std::string> pkexecCaller(const char* uidText)
{
    char* end = nullptr;
    errno = 0;
    const unsigned long uid = std::strtoul(uidText, &end, 10);
    if (errno != 0 || end == uidText || *end != '\0')
        return std::nullopt;
    const passwd* entry = getpwuid(static_cast<uid_t>(uid));
    if (!entry)
        return std::nullopt;
    return std::string(entry->pw_name);
}

std::variant<Request, int> parse(int argc, char** argv)
{
    std::vector<std::string> args(argv + 1, argv + argc);
    Request request;
    // pkexec always sets PKEXEC_UID and clears the rest of the environment; only a caller who
    // already has the rights it would grant may point the helper elsewhere.
    const char* pkexecUid = std::getenv("PKEXEC_UID");
    if (!args.empty() && args.front() == "--unit-dir") {
        if (pkexecUid)
            return refuse("--unit-dir is not accepted through pkexec");
        if (args.size() < 2 || args[1].empty() || args[1].front() != '/')
            return refuse("--unit-dir needs an absolute directory");
        request.unitDirectory = args[1];
        args.erase(args.begin(), args.begin() + 2);
    }
    const char* systemctl = pkexecUid ? nullptr : std::getenv("SYSTEMCTL");
    request.systemctl = systemctl && *systemctl == '/' ? systemctl : defaultSystemctl();

    if (args.size() == 3 && args[0] == "install")
        request.install = true;
    else if (!(args.size() == 2 && args[0] == "remove"))
        return refuse("unknown command");
    request.user = args[1];
    if (!wake::isValidUserName(request.user))
        return refuse("not a valid user name");
    if (request.install) {
        const auto time = wake::parseClockTime(args[2]);
        if (!time)
            return refuse("the time must be HH:MM between 00:00 and 23:59");
        request.time = *time;
    }
    if (pkexecUid && pkexecCaller(pkexecUid) != request.user)
        return refuse("a user may set only their own wake");
    return request;
}

int runSystemctl(const std::string& systemctl, std::vector<std::string> args)
{
    args.insert(args.begin(), systemctl);
    std::vector<char*> argv;
    for (auto& a : args)
        argv.push_back(a.data());
    argv.push_back(nullptr);
    pid_t pid = 0;
    if (posix_spawn(&pid, systemctl.c_str(), nullptr, nullptr, argv.data(), environ) != 0) {
        std::fprintf(stderr, "tallowmere-wake-helper: cannot run %s\n", systemctl.c_str());
        return failed;
    }
    int status = 0;
    while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFEXITED(status) && WEXITSTATUS(status) == 0 ? done : failed;
}

// Written beside the final name and renamed over it, so systemd never reads half a unit.
bool writeUnit(int directory, const std::string& name, const std::string& text)
{
    const std::string partial = "." + name + ".partial";
    UniqueFd fd(openat(directory, partial.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_NOFOLLOW | O_CLOEXEC, 0644));
    if (!fd)
        return false;
    // fsync() reports what a later close() could, so the descriptor is simply let go after it.
    const bool ok = fchmod(fd.get(), 0644) == 0 && write(fd.get(), text.data(), text.size()) == ssize_t(text.size())
        && fsync(fd.get()) == 0;
    if (ok && renameat(directory, partial.c_str(), directory, name.c_str()) == 0)
        return true;
    unlinkat(directory, partial.c_str(), 0);
    return false;
}

bool removeUnit(int directory, const std::string& name)
{
    return unlinkat(directory, name.c_str(), 0) == 0 || errno == ENOENT;
}

int install(const Request& r, int directory)
{
    if (!writeUnit(directory, wake::serviceName(r.user), wake::serviceUnit(r.user))
        || !writeUnit(directory, wake::timerName(r.user), wake::timerUnit(r.user, r.time))) {
        std::fprintf(stderr, "tallowmere-wake-helper: cannot write to %s: %s\n", r.unitDirectory.c_str(),
                     std::strerror(errno));
        return failed;
    }
    // The reload also moves a timer that is already running to its new time.
    if (runSystemctl(r.systemctl, {"daemon-reload"}) != done)
        return failed;
    return runSystemctl(r.systemctl, {"enable", "--now", wake::timerName(r.user)});
}

int remove(const Request& r, int directory)
{
    const std::string timer = wake::timerName(r.user);
    int status = done;
    struct stat info {};
    if (fstatat(directory, timer.c_str(), &info, AT_SYMLINK_NOFOLLOW) == 0)
        status = runSystemctl(r.systemctl, {"disable", "--now", timer});
    if (!removeUnit(directory, timer) || !removeUnit(directory, wake::serviceName(r.user))) {
        std::fprintf(stderr, "tallowmere-wake-helper: cannot remove from %s: %s\n", r.unitDirectory.c_str(),
                     std::strerror(errno));
        return failed;
    }
    return runSystemctl(r.systemctl, {"daemon-reload"}) == done ? status : failed;
}

} // namespace

int main(int argc, char** argv)
{
    umask(022);
    const auto parsed = parse(argc, argv);
    if (const int* status = std::get_if<int>(&parsed))
        return *status;
    const Request& request = std::get<Request>(parsed);
    const UniqueFd directory(open(request.unitDirectory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!directory) {
        std::fprintf(stderr, "tallowmere-wake-helper: cannot open %s: %s\n", request.unitDirectory.c_str(),
                     std::strerror(errno));
        return failed;
    }
    return request.install ? install(request, directory.get()) : remove(request, directory.get());
}
