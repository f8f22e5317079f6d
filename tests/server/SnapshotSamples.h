#pragma once

#include "server/StatsSnapshot.h"

namespace tallowmere::test {

// A snapshot with every field filled and values that do not print as round numbers.
inline StatsSnapshot fullSnapshot()
{
    StatsSnapshot s;
    s.timestamp = QStringLiteral("2026-03-01T09:15:42Z");
    s.cpu = {12.5, 8.25, 4.25};
    s.memory = {62.5, 9.75, 5.85, 15.6, 7.5, 1.5, 0.75};
    s.disk = {41.2, 190.5, 270.25, 460.75, 1048576.5, 0.1};
    s.network = {1536.25, 512, 18446744073709551615ull, 42};
    s.battery.isPresent = true;
    s.battery.percentage = 87;
    s.battery.isCharging = false;
    s.battery.powerSource = QStringLiteral("Battery Power");
    s.battery.maximumCapacityPercent = 93;
    s.battery.cycleCount = 311;
    s.battery.healthStatus = QStringLiteral("Normal");
    s.battery.timeRemainingMinutes = 245;
    s.system.model = QStringLiteral("ThinkPad X1 Carbon Gen 9");
    s.system.cpuBrand = QStringLiteral("11th Gen Intel(R) Core(TM) i7-1165G7 @ 2.80GHz");
    s.system.logicalCores = 8;
    s.system.memoryGB = 15.6;
    s.system.osVersion = QStringLiteral("Debian GNU/Linux 12 (bookworm)");
    s.system.computerName = QStringLiteral("desk \"7\"\\north");
    return s;
}

} // namespace tallowmere::test
