#pragma once

#include <QByteArray>
#include <QString>

#include <nlohmann/json_fwd.hpp>

#include <cstdint>
#include <optional>

namespace tallowmere {

// One document of all live statistics, copied from the services at one moment. Plain values
// only: building it reads the services, encoding it reads nothing else.
struct StatsSnapshot {
    struct CPU {
        double usagePercent = 0;
        double userPercent = 0;
        double systemPercent = 0;
    };
    struct Memory {
        double usagePercent = 0;
        double usedGB = 0;
        double freeGB = 0;
        double totalGB = 0;
        double activeGB = 0;
        double wiredGB = 0;
        double compressedGB = 0;
    };
    struct Disk {
        double usagePercent = 0;
        double usedGB = 0;
        double freeGB = 0;
        double totalGB = 0;
        double readBytesPerSec = 0;
        double writeBytesPerSec = 0;
    };
    struct Network {
        double downloadBytesPerSec = 0;
        double uploadBytesPerSec = 0;
        std::uint64_t sessionDownloadBytes = 0;
        std::uint64_t sessionUploadBytes = 0;
        // Served in /metrics only: bytes no process could be named for, history rows not written.
        std::uint64_t unattributedBytes = 0;
        std::uint64_t unwrittenHistoryDeltas = 0;
    };
    struct Battery {
        bool isPresent = false;
        std::optional<int> percentage;
        std::optional<bool> isCharging;
        std::optional<QString> powerSource;
        std::optional<int> maximumCapacityPercent;
        std::optional<int> cycleCount;
        QString healthStatus = QStringLiteral("Unknown");
        std::optional<int> timeRemainingMinutes;
    };
    struct System {
        std::optional<QString> model;
        std::optional<QString> cpuBrand;
        int logicalCores = 0;
        double memoryGB = 0;
        QString osVersion;
        std::optional<QString> computerName;
    };

    QString timestamp; // UTC, whole seconds, e.g. "2026-03-01T09:15:42Z"
    CPU cpu;
    Memory memory;
    Disk disk;
    Network network;
    Battery battery;
    System system;
};

// The JSON object of the whole document or of one section; absent optionals have no key.
nlohmann::json toJSON(const StatsSnapshot& snapshot);
nlohmann::json toJSON(const StatsSnapshot::CPU& cpu);
nlohmann::json toJSON(const StatsSnapshot::Memory& memory);
nlohmann::json toJSON(const StatsSnapshot::Disk& disk);
nlohmann::json toJSON(const StatsSnapshot::Network& network);
nlohmann::json toJSON(const StatsSnapshot::Battery& battery);
nlohmann::json toJSON(const StatsSnapshot::System& system);

// Pretty-printed, keys sorted at every level; "{}" when a value cannot be encoded (a number
// that is not finite).
template <class Section>
QByteArray encodeJSON(const Section& value);

// The moment given in the snapshot's timestamp form.
QString snapshotTimestamp(std::int64_t secondsSinceEpoch);

} // namespace tallowmere
