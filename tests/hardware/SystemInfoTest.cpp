#include "hardware/SystemInfo.h"

#include "tests/support/TestSupport.h"

#include <QProcess>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace tallowmere {
namespace {

SystemInfoSources sourcesAt(const QString& base)
{
    SystemInfoSources sources;
    sources.sysRoot = base + "/sys";
    sources.procRoot = base + "/proc";
    sources.etcRoot = base + "/etc";
    sources.idDatabaseDirs = {base + "/ids"};
    sources.readInterfaceAddresses = false;
    return sources;
}

TEST(SystemInfoNames, DisplayModelNameRules)
{
    const auto name = [](std::optional<QString> identifier, std::optional<QString> marketing) {
        SystemInfo info;
        info.modelIdentifier = std::move(identifier);
        info.marketingName = std::move(marketing);
        return info.displayModelName();
    };
    // A lone identifier is looked up in the built-in table, but a marketing name with a
    // parenthesis is already the full name; the fixture and empty trees show the other rules.
    EXPECT_EQ(name(QString("Mac16,13"), {}), R"(MacBook Pro (16", 2024))");
    EXPECT_EQ(name(QString("Mac16,13"), QString("Mac (Custom)")), "Mac (Custom)");
    EXPECT_EQ(name(QString("20XWCTO1WW"), {}), "20XWCTO1WW");
}

TEST(SystemInfoReading, FixtureLaptopTree)
{
    const SystemInfo info = SystemInfo::current(sourcesAt(test::fixturePath(QStringLiteral("hardware/inventory-laptop"))));
    EXPECT_EQ(info.modelIdentifier, QString("20XWCTO1WW"));
    EXPECT_EQ(info.displayModelName(), "LENOVO ThinkPad X1 Carbon Gen 9");
    EXPECT_EQ(info.serialNumber, std::nullopt);  // a placeholder
    EXPECT_EQ(info.targetType, QString("Laptop"));
    EXPECT_EQ(info.modelNumber, QString("LENOVO_MT_20XW_BU_Think_FM_ThinkPad X1 Carbon Gen 9"));

    EXPECT_EQ(info.cpuBrand, QString("11th Gen Intel(R) Core(TM) i5-1135G7 @ 2.40GHz"));
    EXPECT_EQ(std::pair(info.cpuCores, info.cpuPhysicalCores), std::pair(4, std::optional<int>(2)));
    EXPECT_EQ(info.cpuFrequencyGHz, 2.4);
    EXPECT_DOUBLE_EQ(info.memoryGB, 16131776.0 * 1024 / (1 << 30));

    EXPECT_EQ(info.osVersion, "Linux 6.1.0-18-amd64 #1 SMP PREEMPT_DYNAMIC Debian 6.1.76-1 (2024-02-01)");
    EXPECT_EQ(info.osDisplayVersion(), QString::fromUtf8("Debian GNU/Linux 12 (bookworm) \u00b7 Build 20240210"));
    EXPECT_EQ(info.osKernelVersion, QString("6.1.0-18-amd64"));
    EXPECT_EQ(info.osComputerName, QString("Ana's Laptop"));

    // card0, card2, card10 in number order; the last is a platform device known by its driver.
    EXPECT_EQ(info.gpus, (QStringList{"Intel Corporation TigerLake-LP GT2 [Iris Xe Graphics]",
                                      "NVIDIA Corporation Device 1f9d", "vc4-drm"}));
    EXPECT_EQ(info.opticalDrives, QStringList{"HL-DT-ST DVDRAM GP57EB40"});
    // Root hubs and interfaces are not peripherals; two identical receivers appear once.
    EXPECT_EQ(info.peripherals, (QStringList{"Integrated Camera", "Synaptics, Inc. Device", "USB Receiver"}));
    EXPECT_EQ(info.audioDevices, (QStringList{"HD Pro Webcam C920", "HDA Intel PCH"}));
    // A sound server that answers names the devices; one that does not leaves the cards.
    SystemInfoSources withServer = sourcesAt(test::fixturePath(QStringLiteral("hardware/inventory-laptop")));
    withServer.audioDevices = [] { return std::optional(QStringList{"Speakers"}); };
    EXPECT_EQ(SystemInfo::current(withServer).audioDevices, QStringList{"Speakers"});
    withServer.audioDevices = [] { return std::optional<QStringList>(); };
    EXPECT_EQ(SystemInfo::current(withServer).audioDevices, info.audioDevices);

    // Of the fixture's mounts only those this machine can reach have a capacity; "/" always can.
    ASSERT_FALSE(info.volumes.isEmpty());
    EXPECT_EQ(info.volumes.front().name, "/");
    for (const VolumeInfo& volume : info.volumes)
        EXPECT_TRUE(QStringList({"/", "efi", "USB STICK"}).contains(volume.name)) << volume.name.toStdString();
}

TEST(SystemInfoReading, EmptyTreeLeavesFieldsAbsentButNeverEmptiesTheMandatoryOnes)
{
    QTemporaryDir empty;
    SystemInfoSources sources = sourcesAt(empty.path());
    sources.storagePath = empty.path() + "/missing";
    const SystemInfo info = SystemInfo::current(sources);
    EXPECT_FALSE(info.modelIdentifier || info.marketingName || info.boardID || info.cpuBrand || info.cpuFrequencyGHz
                 || info.osBuildNumber || info.storageTotalGB || info.storageFreeGB);
    EXPECT_GE(info.cpuCores, 1);      // the process's own view of the processors
    EXPECT_GT(info.memoryGB, 0.0);    // and of the memory
    EXPECT_EQ(info.osDisplayVersion(), "Linux");  // no build number either
    EXPECT_FALSE(info.osVersion.isEmpty());
    EXPECT_EQ(info.displayModelName(), info.machine.value_or("This Computer"));
    EXPECT_TRUE(info.gpus.isEmpty() && info.peripherals.isEmpty() && info.volumes.isEmpty()
                && info.audioDevices.isEmpty() && info.opticalDrives.isEmpty() && info.networkInterfaces.isEmpty());
}

TEST(SystemInfoReading, ThisMachine)
{
    const SystemInfo info = SystemInfo::current();
    ASSERT_TRUE(info.storageTotalGB && info.storageFreeGB);
    EXPECT_LE(*info.storageFreeGB, *info.storageTotalGB);

    // Every IPv4 address that iproute2 lists appears under its interface, loopback excepted.
    QStringList listed;
    for (const NetworkInterfaceInfo& n : info.networkInterfaces) {
        for (const QString& address : n.addresses)
            listed << n.name + ' ' + address;
    }
    QProcess ip;
    ip.start("ip", {"-o", "-4", "addr", "show"});
    ip.waitForFinished(10000);
    for (const QByteArray& line : ip.readAllStandardOutput().split('\n')) {
        const QStringList f = QString::fromUtf8(line.simplified()).split(' ');
        if (f.size() >= 4 && f[2] == "inet" && !f[3].startsWith("127.0.0.1/")) {
            EXPECT_TRUE(listed.contains(f[1].section('@', 0, 0) + ' ' + f[3].section('/', 0, 0))) << line.constData();
        }
    }
    EXPECT_FALSE(listed.join(' ').contains(" 127.0.0.1") || listed.join(' ').contains(" ::1"));
}

} // namespace
} // namespace tallowmere
