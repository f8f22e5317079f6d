// Cost of one per-application sample at about 300 processes and 1,000 TCP sockets, with the
// socket-owner cache cold (first scan) and warm, plus the other per-round steps.
#include "monitors/NetworkFlowSource.h"
#include "monitors/NetworkFlows.h"
#include "monitors/NetworkInterfaceCounters.h"

#include "core/UniqueFd.h"

#include <QCoreApplication>
#include <QDir>

#include <benchmark/benchmark.h>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <vector>

using namespace tallowmere;

namespace {

constexpr int kTargetProcesses = 300;
constexpr int kTargetSockets = 1000;

sockaddr_in loopback(const char* ip, std::uint16_t port = 0)
{
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    inet_pton(AF_INET, ip, &address.sin_addr);
    return address;
}

int connectTo(const sockaddr_in& server)
{
    const int fd = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    const sockaddr_in local = loopback("127.0.0.3");
    ::bind(fd, reinterpret_cast<const sockaddr*>(&local), sizeof local);
    ::connect(fd, reinterpret_cast<const sockaddr*>(&server), sizeof server);
    return fd;
}

// Idle child processes, each holding two connections to a listener here, and connections
// within this process, until the machine shows about kTargetProcesses processes and
// kTargetSockets TCP sockets. Everything ends with the object.
class SyntheticLoad {
public:
    SyntheticLoad()
    {
        rlimit files{};
        ::getrlimit(RLIMIT_NOFILE, &files);
        files.rlim_cur = files.rlim_max;
        ::setrlimit(RLIMIT_NOFILE, &files);

        listener_.reset(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
        sockaddr_in server = loopback("127.0.0.2");
        socklen_t length = sizeof server;
        ::bind(listener_.get(), reinterpret_cast<sockaddr*>(&server), length);
        ::listen(listener_.get(), 4096);
        ::getsockname(listener_.get(), reinterpret_cast<sockaddr*>(&server), &length);

        const int existing = static_cast<int>(QDir("/proc").entryList({"[0-9]*"}, QDir::Dirs).size());
        const int children = std::max(0, kTargetProcesses - existing);
        for (int i = 0; i < children; ++i) {
            const pid_t pid = ::fork();
            if (pid == 0) {
                ::prctl(PR_SET_PDEATHSIG, SIGKILL);
                connectTo(server);
                connectTo(server);
                for (;;)
                    ::pause();
            }
            if (pid > 0)
                children_.push_back(pid);
        }
        int sockets = 0;
        for (std::size_t i = 0; i < 2 * children_.size(); ++i) {
            accepted_.emplace_back(::accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC));
            sockets += 2;
        }
        while (sockets < kTargetSockets) {
            accepted_.emplace_back(connectTo(server));
            accepted_.emplace_back(::accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC));
            sockets += 2;
        }
        std::fprintf(stderr, "load: %d processes before, %zu children added, %d TCP sockets\n", existing,
                     children_.size(), sockets);
    }
    ~SyntheticLoad()
    {
        for (const pid_t pid : children_)
            ::kill(pid, SIGKILL);
        for (const pid_t pid : children_)
            ::waitpid(pid, nullptr, 0);
    }

private:
    UniqueFd listener_;
    std::vector<pid_t> children_;
    std::vector<UniqueFd> accepted_;
};

SyntheticLoad& load()
{
    static SyntheticLoad instance;
    return instance;
}

// A fresh source each time: the dump plus the walk over every process's descriptors, then one
// more sample.
void BM_FlowSampleFirstScan(benchmark::State& state)
{
    load();
    std::size_t flows = 0;
    for (auto _ : state) {
        NetworkFlowSource source;
        source.sample();
        flows = source.sample()->deltas.size();
    }
    state.counters["flows"] = static_cast<double>(flows);
}
BENCHMARK(BM_FlowSampleFirstScan)->Unit(benchmark::kMillisecond);

// The steady state: every socket's owner is cached, so a sample is the dump alone.
void BM_FlowSampleWarm(benchmark::State& state)
{
    load();
    NetworkFlowSource source;
    source.sample();
    const int scans = source.ownerScanCount();
    for (auto _ : state)
        benchmark::DoNotOptimize(source.sample());
    state.counters["extra_scans"] = source.ownerScanCount() - scans;
}
BENCHMARK(BM_FlowSampleWarm)->Unit(benchmark::kMillisecond);

// Turning two samples into per-application deltas on the main thread.
void BM_FlowRound(benchmark::State& state)
{
    FlowTable deltas;
    for (int i = 0; i < kTargetSockets; ++i) {
        const FlowKey key{QStringLiteral("app%1.%2").arg(i % 60).arg(1000 + i % 300), QStringLiteral("10.0.%1.%2").arg(i / 250).arg(i % 250)};
        deltas[key] = {1500, 4};
    }
    const QHash<QString, QString> hosts;
    for (auto _ : state)
        benchmark::DoNotOptimize(perAppRound(deltas, hosts));
}
BENCHMARK(BM_FlowRound)->Unit(benchmark::kMicrosecond);

void BM_InterfaceCounters(benchmark::State& state)
{
    NetworkInterfaceCounters counters;
    for (auto _ : state)
        benchmark::DoNotOptimize(counters.read());
}
BENCHMARK(BM_InterfaceCounters)->Unit(benchmark::kMicrosecond);

} // namespace
