#include "monitors/NetworkFormat.h"

#include "tests/support/CommaLocale.h"

#include <gtest/gtest.h>

namespace tallowmere {
namespace {

TEST(NetworkFormat, ScalesInPowersOf1024WithOneDecimalBelowTen)
{
    const std::tuple<double, const char*, const char*> cases[] = {
        {0, "0 B", "0B"},
        {1023, "1023 B", "1023B"},
        {1024, "1.0 KB", "1.0K"},
        {1536, "1.5 KB", "1.5K"},
        {10 * 1024, "10 KB", "10K"},
        // Below ten before rounding, so one decimal even though it prints as 10.0.
        {9.96 * 1024, "10.0 KB", "10.0K"},
        {300.0 * 1024 * 1024, "300 MB", "300M"},
        {1024.0 * 1024 * 1024 * 1024 * 1024, "1024 TB", "1024T"},
        {-5, "0 B", "0B"},
    };
    const auto check = [&] {
        for (const auto& [value, full, compact] : cases) {
            EXPECT_EQ(formatBytes(value), QString::fromLatin1(full)) << value;
            EXPECT_EQ(formatBytesCompact(value), QString::fromLatin1(compact)) << value;
        }
    };
    check();
    // A German desktop still reads "1.5 KB".
    const test::ScopedCommaLocale comma;
    if (!comma.unavailable().isEmpty())
        GTEST_SKIP() << comma.unavailable().toStdString();
    check();
}

} // namespace
} // namespace tallowmere
