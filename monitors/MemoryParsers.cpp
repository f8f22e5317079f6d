#include "monitors/MemoryParsers.h"

#include "monitors/TextScan.h"

#include <QList>
#include <QStringDecoder>
#include <QStringView>

#include <algorithm>

namespace tallowmere {

namespace {

// Value of a "Name:   123 kB" line in bytes.
std::optional<std::uint64_t> meminfoBytes(std::string_view line)
{
    FieldScanner fields(line.substr(line.find(':') + 1));
    const auto number = fields.next();
    if (!number)
        return std::nullopt;
    const auto value = parseDecimal(*number);
    if (!value)
        return std::nullopt;
    const auto unit = fields.next();
    return unit == std::string_view("kB") ? *value * 1024 : *value;
}

} // namespace

std::optional<MemoryCounters> parseMemInfo(std::string_view meminfo, std::uint64_t zramBytes)
{
    std::optional<std::uint64_t> total, available;
    std::uint64_t wired = 0, zswap = 0;
    LineScanner lines(meminfo);
    while (auto line = lines.next()) {
        const std::size_t colon = line->find(':');
        if (colon == std::string_view::npos)
            continue;
        const std::string_view key = line->substr(0, colon);
        const bool wanted = key == "MemTotal" || key == "MemAvailable" || key == "SUnreclaim"
            || key == "KernelStack" || key == "PageTables" || key == "Unevictable" || key == "Zswap";
        if (!wanted)
            continue;
        const auto bytes = meminfoBytes(*line);
        if (!bytes)
            continue;
        if (key == "MemTotal")
            total = bytes;
        else if (key == "MemAvailable")
            available = bytes;
        else if (key == "Zswap")
            zswap = *bytes;
        else
            wired += *bytes;
    }
    if (!total || !available)
        return std::nullopt;
    MemoryCounters counters;
    counters.installed = *total;
    counters.wired = wired;
    counters.compressed = zswap + zramBytes;
    const std::uint64_t notAvailable = *total > *available ? *total - *available : 0;
    const std::uint64_t held = counters.wired + counters.compressed;
    counters.active = notAvailable > held ? notAvailable - held : 0;
    return counters;
}

std::uint64_t parseZramMemUsed(std::string_view mmStat)
{
    FieldScanner fields(mmStat);
    if (!fields.skip(2))
        return 0;
    const auto field = fields.next();
    return field ? parseDecimal(*field).value_or(0) : 0;
}

ProgramMemoryMap parsePsOutput(const QByteArray& output)
{
    ProgramMemoryMap programs;
    QStringDecoder decoder(QStringDecoder::Utf8);
    const QString text = decoder.decode(output);
    if (decoder.hasError())
        return programs;
    for (QStringView line : QStringView(text).split(u'\n', Qt::SkipEmptyParts)) {
        qsizetype start = 0;
        while (start < line.size() && line[start] == u' ')
            ++start;
        const qsizetype blank = line.indexOf(u' ', start);
        if (blank < 0)
            continue;
        bool ok = false;
        const qulonglong kilobytes = line.mid(start, blank - start).toULongLong(&ok);
        // Kernel threads hold no memory of their own.
        if (!ok || kilobytes == 0)
            continue;
        // Linux prints the task name here, never a path: "kworker/u8:2" is one name.
        const QString name = line.mid(blank + 1).trimmed().toString();
        if (name.isEmpty())
            continue;
        ProgramMemory& program = programs[name];
        program.bytes += kilobytes * 1024;
        program.processCount += 1;
    }
    return programs;
}

} // namespace tallowmere
