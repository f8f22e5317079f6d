#pragma once

#include "server/StatsSnapshot.h"

namespace tallowmere::test {

// Every field filled, with values that do not print as round numbers.
inline StatsSnapshot fullSnapshot()
{
    StatsSnapshot s;
    s.timestamp = QStringLiteral("2026-03-01T09:15:42Z");
    s.cpu = {12.5, 8.25, 4.25};
    s.memory = {62.5, 9.75, 5.85, 15.6, 7.5, 1.5, 0.75};
    s.disk = {41.2, 190.5, 270.25, 460.75, 1048576.5, 0.1};
    s.network = {1536.25, 512, 18446744073709551615ull, 42};
    s.battery = {true, 87, false, QStringLiteral("Battery Power"), 93, 311, QStringLiteral("Normal"), 245};
    s.system = {QStringLiteral("20XW00FJUS"), QStringLiteral("Intel(R) Core(TM) i7-1165G7 @ 2.80GHz"), 8, 15.6,
                QStringLiteral("Debian GNU/Linux 12 (bookworm)"), QStringLiteral("desk \"7\"\\north")};
    return s;
}

} // namespace tallowmere::test
