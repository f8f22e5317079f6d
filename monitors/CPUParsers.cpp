#include "monitors/CPUParsers.h"

#include "monitors/TextScan.h"

#include <cstdint>

namespace tallowmere {

namespace {

// Fields of the cpu line in kernel order; older kernels stop after idle.
enum CPUField { User, Nice, System, Idle, IOWait, IRQ, SoftIRQ, Steal, FieldCount };
constexpr int kRequiredCPUFields = Idle + 1;

} // namespace

std::optional<CPUTicks> parseCPUTicks(std::string_view procStat)
{
    LineScanner lines(procStat);
    while (auto line = lines.next()) {
        FieldScanner fields(*line);
        if (fields.next() != std::string_view("cpu"))
            continue;
        std::uint64_t values[FieldCount] = {};
        int count = 0;
        while (count < FieldCount) {
            const auto field = fields.next();
            if (!field)
                break;
            const auto value = parseDecimal(*field);
            if (!value)
                return std::nullopt;
            values[count++] = *value;
        }
        if (count < kRequiredCPUFields)
            return std::nullopt;
        // Sums wrap modulo 2^32 like the 32-bit counters they stand in for.
        CPUTicks ticks;
        ticks.user = static_cast<std::uint32_t>(values[User]);
        ticks.nice = static_cast<std::uint32_t>(values[Nice]);
        ticks.system = static_cast<std::uint32_t>(values[System] + values[IRQ] + values[SoftIRQ] + values[Steal]);
        ticks.idle = static_cast<std::uint32_t>(values[Idle] + values[IOWait]);
        return ticks;
    }
    return std::nullopt;
}

std::optional<ProcessStat> parseProcessStat(std::string_view line)
{
    const std::size_t open = line.find('(');
    const std::size_t close = line.rfind(')');
    if (open == std::string_view::npos || close == std::string_view::npos || close < open)
        return std::nullopt;
    std::string_view head = line.substr(0, open);
    while (!head.empty() && head.back() == ' ')
        head.remove_suffix(1);
    const auto pid = parseDecimal(head);
    if (!pid || *pid > INT32_MAX)
        return std::nullopt;

    // After the name: state (field 3) ... utime (14), stime (15) ... rss (24).
    FieldScanner fields(line.substr(close + 1));
    if (!fields.skip(11))
        return std::nullopt;
    const auto utime = fields.next();
    const auto stime = fields.next();
    if (!utime || !stime || !fields.skip(8))
        return std::nullopt;
    const auto rss = fields.next();
    if (!rss)
        return std::nullopt;
    const auto user = parseDecimal(*utime);
    const auto system = parseDecimal(*stime);
    const auto pages = parseDecimal(*rss);
    if (!user || !system || !pages)
        return std::nullopt;

    ProcessStat stat;
    stat.pid = static_cast<std::int32_t>(*pid);
    stat.name = line.substr(open + 1, close - open - 1);
    stat.cpuTicks = *user + *system;
    stat.residentPages = *pages;
    return stat;
}

std::uint64_t ticksToNanoseconds(std::uint64_t ticks, std::uint64_t ticksPerSecond)
{
    constexpr std::uint64_t kNanosPerSecond = 1'000'000'000;
    if (ticksPerSecond == 0)
        return 0;
    return ticks / ticksPerSecond * kNanosPerSecond + ticks % ticksPerSecond * kNanosPerSecond / ticksPerSecond;
}

} // namespace tallowmere
