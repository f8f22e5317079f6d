#include "server/MetricsText.h"

#include "core/NumberFormat.h"

#include <optional>
#include <utility>
#include <vector>

namespace tallowmere {

namespace {

constexpr double kBytesPerGB = 1073741824.0;

using Labels = std::vector<std::pair<const char*, std::optional<QString>>>;

QByteArray numberText(double value)
{
    if (const auto text = shortestNumber(value))
        return QByteArray::fromStdString(*text);
    if (value != value)
        return QByteArrayLiteral("NaN");
    return value > 0 ? QByteArrayLiteral("+Inf") : QByteArrayLiteral("-Inf");
}

class MetricsWriter {
public:
    void gauge(const char* name, const char* help, double value)
    {
        family(name, help, "gauge");
        sample(name, {}, numberText(value));
    }

    void gauge(const char* name, const char* help, const std::optional<double>& value)
    {
        if (value)
            gauge(name, help, *value);
    }

    void counter(const char* name, const char* help, std::uint64_t value)
    {
        family(name, help, "counter");
        sample(name, {}, QByteArray::number(value));
    }

    // A series that carries texts in its labels; absent texts are left out.
    void info(const char* name, const char* help, const Labels& labels)
    {
        family(name, help, "gauge");
        sample(name, labels, QByteArrayLiteral("1"));
    }

    QByteArray out;

private:
    void family(const char* name, const char* help, const char* type)
    {
        out += "# HELP ";
        out += name;
        out += ' ';
        out += help;
        out += "\n# TYPE ";
        out += name;
        out += ' ';
        out += type;
        out += '\n';
    }

    void sample(const char* name, const Labels& labels, const QByteArray& value)
    {
        out += name;
        bool first = true;
        for (const auto& [label, text] : labels) {
            if (!text)
                continue;
            out += first ? '{' : ',';
            first = false;
            out += label;
            out += "=\"";
            out += escapeLabelValue(*text);
            out += '"';
        }
        if (!first)
            out += '}';
        out += ' ';
        out += value;
        out += '\n';
    }
};

std::optional<double> optionalNumber(const std::optional<int>& value, double scale = 1)
{
    if (!value)
        return std::nullopt;
    return *value * scale;
}

void writeHost(MetricsWriter& w, const StatsSnapshot& s)
{
    w.gauge("tallowmere_cpu_usage_percent", "Total processor load in percent.", s.cpu.usagePercent);
    w.gauge("tallowmere_cpu_user_percent", "Processor load of user code in percent.", s.cpu.userPercent);
    w.gauge("tallowmere_cpu_system_percent", "Processor load of the kernel in percent.", s.cpu.systemPercent);

    const auto& m = s.memory;
    w.gauge("tallowmere_memory_usage_percent", "Used share of physical memory in percent.", m.usagePercent);
    w.gauge("tallowmere_memory_used_bytes", "Physical memory in use.", m.usedGB * kBytesPerGB);
    w.gauge("tallowmere_memory_free_bytes", "Physical memory not in use.", m.freeGB * kBytesPerGB);
    w.gauge("tallowmere_memory_total_bytes", "Installed physical memory.", m.totalGB * kBytesPerGB);
    w.gauge("tallowmere_memory_active_bytes", "Memory in active use by programs.", m.activeGB * kBytesPerGB);
    w.gauge("tallowmere_memory_wired_bytes", "Memory the kernel keeps resident.", m.wiredGB * kBytesPerGB);
    w.gauge("tallowmere_memory_compressed_bytes", "Memory held compressed.", m.compressedGB * kBytesPerGB);

    const auto& d = s.disk;
    w.gauge("tallowmere_disk_usage_percent", "Used share of the root volume in percent.", d.usagePercent);
    w.gauge("tallowmere_disk_used_bytes", "Used space of the root volume.", d.usedGB * kBytesPerGB);
    w.gauge("tallowmere_disk_free_bytes", "Free space of the root volume.", d.freeGB * kBytesPerGB);
    w.gauge("tallowmere_disk_total_bytes", "Capacity of the root volume.", d.totalGB * kBytesPerGB);
    w.gauge("tallowmere_disk_read_bytes_per_second", "Bytes read from disks per second.", d.readBytesPerSec);
    w.gauge("tallowmere_disk_write_bytes_per_second", "Bytes written to disks per second.", d.writeBytesPerSec);

    const auto& n = s.network;
    w.gauge("tallowmere_network_download_bytes_per_second", "Bytes received per second.", n.downloadBytesPerSec);
    w.gauge("tallowmere_network_upload_bytes_per_second", "Bytes sent per second.", n.uploadBytesPerSec);
    w.counter("tallowmere_network_session_download_bytes_total", "Bytes received since the monitor started.",
              n.sessionDownloadBytes);
    w.counter("tallowmere_network_session_upload_bytes_total", "Bytes sent since the monitor started.",
              n.sessionUploadBytes);
    w.counter("tallowmere_network_unattributed_bytes_total",
              "TCP bytes of connections that closed before their process could be found.", n.unattributedBytes);
    w.counter("tallowmere_network_history_unwritten_deltas_total",
              "Traffic records the history database could not store.", n.unwrittenHistoryDeltas);
}

void writeBatteryAndSystem(MetricsWriter& w, const StatsSnapshot& s)
{
    const auto& b = s.battery;
    w.gauge("tallowmere_battery_present", "1 when an internal battery is present.", b.isPresent ? 1.0 : 0.0);
    w.gauge("tallowmere_battery_charge_percent", "State of charge in percent.", optionalNumber(b.percentage));
    if (b.isCharging)
        w.gauge("tallowmere_battery_charging", "1 while the battery charges.", *b.isCharging ? 1.0 : 0.0);
    w.gauge("tallowmere_battery_maximum_capacity_percent", "Full-charge capacity as a share of the design capacity.",
            optionalNumber(b.maximumCapacityPercent));
    w.gauge("tallowmere_battery_charge_cycles", "Charge cycles so far.", optionalNumber(b.cycleCount));
    w.gauge("tallowmere_battery_time_remaining_seconds", "Estimated time until the battery is empty.",
            optionalNumber(b.timeRemainingMinutes, 60));
    w.info("tallowmere_battery_info", "Battery health and power source.",
           {{"health_status", b.healthStatus}, {"power_source", b.powerSource}});

    const auto& y = s.system;
    w.info("tallowmere_system_info", "Machine and operating system.",
           {{"model", y.model}, {"cpu_brand", y.cpuBrand}, {"os_version", y.osVersion},
            {"computer_name", y.computerName}});
    w.gauge("tallowmere_system_logical_cores", "Logical processors.", static_cast<double>(y.logicalCores));
    w.gauge("tallowmere_system_memory_bytes", "Installed physical memory.", y.memoryGB * kBytesPerGB);
}

} // namespace

QByteArray escapeLabelValue(const QString& value)
{
    QByteArray out;
    for (const char c : value.toUtf8()) {
        if (c == '\\')
            out += "\\\\";
        else if (c == '"')
            out += "\\\"";
        else if (c == '\n')
            out += "\\n";
        else
            out += c;
    }
    return out;
}

QByteArray metricsText(const StatsSnapshot& snapshot)
{
    MetricsWriter writer;
    writeHost(writer, snapshot);
    writeBatteryAndSystem(writer, snapshot);
    return writer.out;
}

QByteArray metricsContentType()
{
    return QByteArrayLiteral("text/plain; version=0.0.4; charset=utf-8");
}

} // namespace tallowmere
