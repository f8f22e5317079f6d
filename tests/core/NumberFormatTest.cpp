#include "core/NumberFormat.h"

#include "tests/support/CommaLocale.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <limits>

using namespace tallowmere;

namespace {

std::string printed(double value, int decimals)
{
    char text[512];
    std::snprintf(text, sizeof text, "%.*f", decimals, value);
    return text;
}

} // namespace

// printf in the C locale is the reference: the same rounding of halves and of values that
// are not exact in binary (0.15, 9.95), with the same signs.
TEST(NumberFormat, FixedReadsAsPrintfInTheCLocaleAnywhere)
{
    const double values[] = {0, -0.0, 0.05, 0.15, 0.25, 1.5, 2.5, 9.95, 9.96, 1023.5, -3.14159, 1e15 + 0.5, 1e300};
    for (const double value : values) {
        for (const int decimals : {0, 1, 2, 6})
            EXPECT_EQ(fixedNumber(value, decimals), printed(value, decimals)) << value << " " << decimals;
    }
    EXPECT_EQ(fixedNumber(std::numeric_limits<double>::quiet_NaN(), 1), "nan");
    EXPECT_EQ(fixedNumber(-std::numeric_limits<double>::infinity(), 1), "-inf");
    EXPECT_EQ(fixedNumber(1.25, 99), printed(1.25, 20));

    EXPECT_EQ(shortestNumber(0.1 + 0.2), "0.30000000000000004");
    EXPECT_FALSE(shortestNumber(std::numeric_limits<double>::infinity()));

    const test::ScopedCommaLocale comma;
    if (!comma.unavailable().isEmpty())
        GTEST_SKIP() << comma.unavailable().toStdString();
    ASSERT_EQ(printed(1.5, 1), "1,5") << "the locale is not in force";
    EXPECT_EQ(fixedNumber(1.5, 1), "1.5");
    EXPECT_EQ(shortestNumber(1.5), "1.5");
}
