#include "monitors/NetworkInterfaceCounters.h"

#include "tests/support/TestSupport.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace tallowmere {
namespace {

TEST(NetworkInterfaceCounters, SumsEveryInterfaceButLoopbackNames)
{
    const QByteArray text = test::readFile(test::fixturePath("monitors/net_dev.txt"));
    const auto counts = parseProcNetDev(text.toStdString());
    ASSERT_TRUE(counts);
    // eth0 (counter glued to the colon), wlp2s0 and wg0; lo and lo-backup are left out, and
    // the malformed line is skipped.
    EXPECT_EQ(counts->inBytes, 123456789012u + 50000u + 1000u);
    EXPECT_EQ(counts->outBytes, 98765432u + 7000u + 2000u);
    EXPECT_FALSE(parseProcNetDev("Inter-|   Receive\n face |bytes\n"));

    // The reader uses its root, and reads zero when the file is missing.
    QTemporaryDir root;
    test::writeFile(root.path(), "net/dev", " eth0: 10 1 0 0 0 0 0 0 20 2 0 0 0 0 0 0\n");
    NetworkInterfaceCounters counters(root.path().toStdString());
    EXPECT_EQ(counters.read(), (ByteCounts{10, 20}));
    NetworkInterfaceCounters missing(root.path().toStdString() + "/nowhere");
    EXPECT_EQ(missing.read(), ByteCounts{});
}

} // namespace
} // namespace tallowmere
