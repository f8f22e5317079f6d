// Recorded against sent, through the whole program: build/tallowmere --headless --server on
// --record on runs with its data in a temporary folder while a child process of this benchmark
// (named "tm-sender") sends to a listener on 127.0.0.2. Scenarios: one connection sending
// 64 KiB every half second for 28 s, and 40 short connections of 1-3 s each over a minute.
// Also the program's CPU time (utime + stime of /proc/PID/stat) over each phase and over a
// quiet minute, and apart from it that of the child processes it ran meanwhile. Figures go to stderr and to the benchmark's counters.
#include "core/UniqueFd.h"
#include "history/SqliteDatabase.h"

#include <QProcess>
#include <QTemporaryDir>

#include <benchmark/benchmark.h>

#include <arpa/inet.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <fstream>
#include <random>
#include <sstream>
#include <thread>
#include <vector>

using namespace tallowmere;
using namespace std::chrono_literals;

namespace {

sockaddr_in address(const char* ip, std::uint16_t port)
{
    sockaddr_in a{};
    a.sin_family = AF_INET;
    a.sin_port = htons(port);
    inet_pton(AF_INET, ip, &a.sin_addr);
    return a;
}

// Accepts and drains every connection until stopped.
class Sink {
public:
    Sink()
    {
        sockaddr_in a = address("127.0.0.2", 0);
        socklen_t length = sizeof a;
        ::bind(listener_.get(), reinterpret_cast<sockaddr*>(&a), length);
        ::listen(listener_.get(), 64);
        ::getsockname(listener_.get(), reinterpret_cast<sockaddr*>(&a), &length);
        port_ = ntohs(a.sin_port);
        thread_ = std::thread([this] { run(); });
    }
    ~Sink()
    {
        stop_ = true;
        ::shutdown(listener_.get(), SHUT_RDWR);
        thread_.join();
        for (std::thread& t : readers_)
            t.join();
    }
    std::uint16_t port() const { return port_; }

private:
    void run()
    {
        while (!stop_) {
            const int fd = ::accept(listener_.get(), nullptr, nullptr);
            if (fd < 0)
                return;
            readers_.emplace_back([fd] {
                std::vector<char> buffer(64 * 1024);
                while (::recv(fd, buffer.data(), buffer.size(), 0) > 0) {
                }
                ::close(fd);
            });
        }
    }
    UniqueFd listener_{::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)};
    std::uint16_t port_ = 0;
    std::atomic<bool> stop_{false};
    std::thread thread_;
    std::vector<std::thread> readers_;
};

// Sends on a fresh connection for `duration`, `chunk` bytes every `every`; returns bytes sent.
std::uint64_t stream(std::uint16_t port, std::chrono::milliseconds duration, std::size_t chunk, std::chrono::milliseconds every)
{
    UniqueFd fd(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_in a = address("127.0.0.2", port);
    if (::connect(fd.get(), reinterpret_cast<sockaddr*>(&a), sizeof a) != 0)
        return 0;
    std::vector<char> buffer(chunk, 'x');
    std::uint64_t sent = 0;
    const auto end = std::chrono::steady_clock::now() + duration;
    while (std::chrono::steady_clock::now() < end) {
        std::size_t left = chunk;
        while (left > 0) {
            const ssize_t n = ::send(fd.get(), buffer.data(), left, MSG_NOSIGNAL);
            if (n <= 0)
                return sent;
            left -= static_cast<std::size_t>(n);
            sent += static_cast<std::uint64_t>(n);
        }
        std::this_thread::sleep_for(every);
    }
    ::shutdown(fd.get(), SHUT_WR);
    return sent;
}

// Runs `work` in a child process named tm-sender and returns what it reports as sent.
template <class Work>
std::uint64_t inSender(Work work)
{
    int report[2];
    if (::pipe(report) != 0)
        return 0;
    const pid_t child = ::fork();
    if (child == 0) {
        ::prctl(PR_SET_NAME, "tm-sender");
        const std::uint64_t sent = work();
        [[maybe_unused]] const ssize_t n = ::write(report[1], &sent, sizeof sent);
        ::_exit(0);
    }
    std::uint64_t sent = 0;
    [[maybe_unused]] const ssize_t n = ::read(report[0], &sent, sizeof sent);
    ::waitpid(child, nullptr, 0);
    ::close(report[0]);
    ::close(report[1]);
    return sent;
}

// CPU seconds of the process itself (utime + stime), or with `children` of its reaped child
// processes (cutime + cstime).
double cpuSeconds(qint64 pid, bool children = false)
{
    std::ifstream file("/proc/" + std::to_string(pid) + "/stat");
    std::string text((std::istreambuf_iterator<char>(file)), {});
    std::istringstream fields(text.substr(text.rfind(')') + 2));
    std::string field;
    unsigned long long ticks = 0;
    for (int i = 3; i <= 17 && fields >> field; ++i) {
        if (i == (children ? 16 : 14) || i == (children ? 17 : 15))
            ticks += std::stoull(field);
    }
    return static_cast<double>(ticks) / static_cast<double>(::sysconf(_SC_CLK_TCK));
}

std::int64_t recordedOut(const QString& database)
{
    auto db = SqliteDatabase::open(database);
    SqliteStatement query = db->prepare(
        "SELECT coalesce(sum(bytes_out), 0) FROM endpoint_usage WHERE app = 'tm-sender' AND ip = '127.0.0.2'");
    return query && query.step() == SqliteStep::row ? query.columnInt64(0) : -1;
}

struct Phase {
    const char* name;
    double seconds;
    double cpu;
    double childrenCpu;
};

void BM_RecordedAgainstSent(benchmark::State& state)
{
    for (auto _ : state) {
        QTemporaryDir home;
        QProcess program;
        QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
        env.insert("XDG_DATA_HOME", home.filePath("data"));
        env.insert("XDG_CONFIG_HOME", home.filePath("config"));
        env.insert("XDG_RUNTIME_DIR", home.path());
        program.setProcessEnvironment(env);
        program.start(QStringLiteral(TALLOWMERE_BENCH_BINARY), {"--headless", "--server", "on", "--record", "on", "--port", "18799"});
        program.waitForStarted();
        std::this_thread::sleep_for(3s);
        const QString database = home.filePath("data/Tallowmere/network-usage.sqlite");
        Sink sink;
        std::vector<Phase> phases;
        auto measured = [&](const char* name, auto work) {
            const double before = cpuSeconds(program.processId());
            const double childrenBefore = cpuSeconds(program.processId(), true);
            const auto start = std::chrono::steady_clock::now();
            work();
            phases.push_back({name, std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count(),
                              cpuSeconds(program.processId()) - before,
                              cpuSeconds(program.processId(), true) - childrenBefore});
        };

        std::uint64_t longSent = 0, shortSent = 0;
        measured("long stream", [&] { longSent = inSender([&] { return stream(sink.port(), 28s, 64 * 1024, 500ms); }); });
        std::this_thread::sleep_for(3s);
        const std::int64_t longRecorded = recordedOut(database);

        measured("40 short connections", [&] {
            shortSent = inSender([&] {
                std::mt19937 random(40);
                std::vector<std::thread> senders;
                std::atomic<std::uint64_t> sent{0};
                for (int i = 0; i < 40; ++i) {
                    const auto life = std::chrono::milliseconds(std::uniform_int_distribution(1000, 3000)(random));
                    senders.emplace_back([&, life] { sent += stream(sink.port(), life, 16 * 1024, 100ms); });
                    std::this_thread::sleep_for(1500ms);
                }
                for (std::thread& t : senders)
                    t.join();
                return sent.load();
            });
        });
        std::this_thread::sleep_for(3s);
        const std::int64_t shortRecorded = recordedOut(database) - longRecorded;
        measured("quiet minute", [] { std::this_thread::sleep_for(60s); });

        program.terminate();
        program.waitForFinished(10'000);
        const double longRatio = 100.0 * static_cast<double>(longRecorded) / static_cast<double>(longSent);
        const double shortRatio = 100.0 * static_cast<double>(shortRecorded) / static_cast<double>(shortSent);
        std::fprintf(stderr, "long stream: sent %llu, recorded %lld (%.2f %%)\n",
                     static_cast<unsigned long long>(longSent), static_cast<long long>(longRecorded), longRatio);
        std::fprintf(stderr, "40 short connections: sent %llu, recorded %lld (%.2f %%)\n",
                     static_cast<unsigned long long>(shortSent), static_cast<long long>(shortRecorded), shortRatio);
        for (const Phase& phase : phases)
            std::fprintf(stderr,
                         "program CPU during %s: %.3f s over %.1f s = %.3f %% of one core "
                         "(its child processes: %.3f %% more)\n",
                         phase.name, phase.cpu, phase.seconds, 100.0 * phase.cpu / phase.seconds,
                         100.0 * phase.childrenCpu / phase.seconds);
        state.counters["long_pct"] = longRatio;
        state.counters["short_pct"] = shortRatio;
        state.counters["quiet_cpu_pct"] = 100.0 * phases.back().cpu / phases.back().seconds;
    }
}
BENCHMARK(BM_RecordedAgainstSent)->Iterations(1)->Unit(benchmark::kSecond)->UseRealTime();

} // namespace
