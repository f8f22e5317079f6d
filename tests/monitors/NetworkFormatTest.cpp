#include "monitors/NetworkFormat.h"

#include <gtest/gtest.h>

namespace tallowmere {
namespace {

TEST(NetworkFormat, ScalesInPowersOf1024WithOneDecimalBelowTen)
{
    const std::pair<double, const char*> cases[] = {
        {0, "0 B"},
        {512, "512 B"},
        {1023, "1023 B"},
        {1024, "1.0 KB"},
        {1536, "1.5 KB"},
        {10 * 1024, "10 KB"},
        {20480, "20 KB"},
        // 9.96 KB rounds up to "10.0": the one-decimal form is chosen before rounding.
        {9.96 * 1024, "10.0 KB"},
        {1024.0 * 1024 * 1024, "1.0 GB"},
        {1024.0 * 1024 * 1024 * 1024 * 1024, "1024 TB"},
        {-5, "0 B"},
    };
    for (const auto& [value, expected] : cases)
        EXPECT_EQ(formatBytes(value), QString::fromLatin1(expected)) << value;
}

TEST(NetworkFormat, CompactFormHasShortUnitsAndNoBlank)
{
    EXPECT_EQ(formatBytesCompact(0), "0B");
    EXPECT_EQ(formatBytesCompact(1536), "1.5K");
    EXPECT_EQ(formatBytesCompact(300.0 * 1024 * 1024), "300M");
    EXPECT_EQ(formatBytesCompact(3.0 * 1024 * 1024 * 1024 * 1024 * 1024), "3072T");
}

} // namespace
} // namespace tallowmere
