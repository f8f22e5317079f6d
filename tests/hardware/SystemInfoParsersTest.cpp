#include "hardware/SystemInfoParsers.h"

#include <QFile>

#include <gtest/gtest.h>

namespace tallowmere {
namespace {

using namespace inventory;

TEST(InventoryFirmwareText, NulBytesBlanksAndPlaceholders)
{
    EXPECT_EQ(firmwareText(QByteArray("20XWCTO1WW\0", 11)), QString("20XWCTO1WW"));
    EXPECT_EQ(firmwareText(QByteArray("\0 Raspberry Pi 4 Model B Rev 1.4\n\0", 35)),
              QString("Raspberry Pi 4 Model B Rev 1.4"));
    for (const QByteArray& absent : {QByteArray("  \n"), QByteArray("\0\0", 2), QByteArray("To Be Filled By O.E.M.\n"),
                                     QByteArray("default STRING"), QByteArray("\xff\xfe broken")})
        EXPECT_EQ(firmwareText(absent), std::nullopt) << absent.toStdString();
    EXPECT_EQ(firmwareText("Default string 2"), QString("Default string 2"));
}

TEST(InventoryCpu, CpuInfoOfSeveralArchitectures)
{
    const CpuInfoSummary x86 = parseCpuInfo("processor\t: 0\nmodel name\t: AMD Ryzen 7 5800X\nphysical id\t: 0\ncore id\t\t: 0\n\n"
                                            "processor\t: 1\nmodel name\t: AMD Ryzen 7 5800X\nphysical id\t: 0\ncore id\t\t: 0\n\n"
                                            "processor\t: 2\nmodel name\t: AMD Ryzen 7 5800X\nphysical id\t: 1\ncore id\t\t: 0\n");
    EXPECT_EQ(x86.brand, QString("AMD Ryzen 7 5800X"));
    EXPECT_EQ(std::pair(x86.processors, x86.physicalCores), std::pair(3, std::optional<int>(2)));  // core 0 of two packages

    // An ARM board: no model name, no core ids, and no trailing newline.
    const CpuInfoSummary arm = parseCpuInfo("processor\t: 0\nBogoMIPS\t: 108.00\nCPU part\t: 0xd08\n\n"
                                            "processor\t: 1\nBogoMIPS\t: 108.00\nHardware\t: BCM2835\nModel\t: Raspberry Pi 4");
    EXPECT_EQ(std::tuple(arm.brand, arm.processors, arm.physicalCores), std::tuple(std::nullopt, 2, std::nullopt));
    EXPECT_EQ(parseCpuInfo("Processor\t: ARMv7 Processor rev 4 (v7l)\n").brand, QString("ARMv7 Processor rev 4 (v7l)"));

    EXPECT_EQ(countCpuList("0,2-3,8-15\n"), 11);
    for (const char* bad : {"", "\n", "3-1", "a-b", "0-", "1-2-3", "-1"})
        EXPECT_EQ(countCpuList(bad), std::nullopt) << bad;

    EXPECT_EQ(memTotalBytes("MemFree: 1 kB\nMemTotal:       16131776 kB\n"), 16131776ull * 1024);
    EXPECT_EQ(memTotalBytes("MemTotal: lots kB\n"), std::nullopt);
}

TEST(InventoryOsRelease, QuotingAndFallbacks)
{
    const auto values = parseKeyValueFile("# comment\nNAME=\"Fedora Linux\"\nVERSION_ID=39\n"
                                          "PRETTY_NAME='Fedora Linux 39 (Workstation Edition)'\nBROKEN\n=x\n"
                                          "HOME_URL=\"https://fedoraproject.org/\"\nQUOTE=\"say \\\"hi\\\"\"\n");
    EXPECT_EQ(values.value("NAME"), "Fedora Linux");
    EXPECT_EQ(values.value("QUOTE"), "say \"hi\"");
    EXPECT_FALSE(values.contains("BROKEN") || values.contains(""));

    EXPECT_EQ(osMarketingName(values), "Fedora Linux 39 (Workstation Edition)");
    EXPECT_EQ(osMarketingName({{"NAME", "Debian GNU/Linux"}, {"VERSION_ID", "12"}}), "Debian GNU/Linux 12");
}

TEST(InventoryMounts, RealDevicesOnceWithEscapedPaths)
{
    const QList<MountEntry> mounts = parseMountInfo(
        "28 1 259:2 /@ / rw,relatime shared:1 - btrfs /dev/nvme0n1p2 rw,subvol=/@\n"
        "29 28 259:2 /@home /home rw,relatime shared:2 - btrfs /dev/nvme0n1p2 rw,subvol=/@home\n"
        "45 28 7:0 / /snap/core22/1122 ro,nodev,relatime shared:33 - squashfs /dev/loop0 ro\n"
        "46 28 0:30 / /tmp rw shared:5 - tmpfs tmpfs rw\n"
        "47 28 252:1 / /var/cache rw - ext4 /dev/zram1 rw\n"
        "61 28 8:17 / /media/ana/USB\\040STICK rw,nosuid shared:40 - vfat /dev/sdb1 rw\n"
        "62 28 8:33 / /mnt/back\\134slash rw - ext4 /dev/sdc1 rw\n"
        "63 28 8:49 / /mnt/odd\\04 rw - ext4 /dev/sdd1 rw\n"
        "too short - x\n"
        "64 28 8:50 / /mnt/no-separator rw ext4 /dev/sdd2 rw x y\n");
    ASSERT_EQ(mounts.size(), 8);
    EXPECT_EQ(mounts[1].root + ' ' + mounts[1].device, "/@home 259:2");
    // Real devices once, escapes decoded; a cut-off escape stays as written.
    QStringList selected;
    for (const MountEntry& m : selectVolumeMounts(mounts))
        selected << m.mountPoint;
    EXPECT_EQ(selected, (QStringList{"/", "/media/ana/USB STICK", "/mnt/back\\slash", "/mnt/odd\\04"}));
}

TEST(InventorySoundCards, CardNamesSortedOnce)
{
    EXPECT_EQ(parseSoundCards(" 0 [PCH            ]: HDA-Intel - HDA Intel PCH\n"
                              "                      HDA Intel PCH at 0x6001118000 irq 147\n"
                              " 1 [NVidia         ]: HDA-Intel - HDA NVidia\n"
                              "                      HDA NVidia at 0xee080000 irq 17\n"
                              "10 [PCH_1          ]: HDA-Intel - HDA Intel PCH\n"
                              " 3 [Broken         ]: no dash here\n"),
              (QStringList{"HDA Intel PCH", "HDA NVidia"}));
    EXPECT_TRUE(parseSoundCards("--- no soundcards ---\n").isEmpty());
}

TEST(InventoryIdDatabase, VendorAndDeviceLookups)
{
    const HardwareIdDatabase db("1002  Advanced Micro Devices, Inc. [AMD/ATI]\n"
                                "\t73bf  Navi 21 [Radeon RX 6800/6800 XT / 6900 XT]\n"
                                "# a comment inside the block\n"
                                "\t\t1002 0e3a  Radeon RX 6900 XT\n"
                                "\t7340  Navi 14 [Radeon RX 5500/5500M / Pro 5500M]\n"
                                "10de  NVIDIA Corporation\n"
                                "\t2503  GA106 [GeForce RTX 3060]\n"
                                "C 03  Display controller\n"
                                "\t00  VGA compatible controller");
    EXPECT_EQ(db.vendorName("1002"), QString("Advanced Micro Devices, Inc. [AMD/ATI]"));  // first line of the file
    EXPECT_EQ(db.deviceName("0x1002", "0x7340"), QString("Navi 14 [Radeon RX 5500/5500M / Pro 5500M]"));
    EXPECT_EQ(db.deviceName("10DE", "2503"), QString("GA106 [GeForce RTX 3060]"));
    EXPECT_EQ(db.deviceName("1002", "2503"), std::nullopt);  // belongs to the next vendor
    EXPECT_EQ(db.deviceName("1002", "0e3a"), std::nullopt);  // a subsystem line, not a device
    EXPECT_EQ(db.deviceName("10de", "0000"), std::nullopt);  // the class section is not searched
    for (const char* bad : {"", "10d", "10dee", "zzzz", "C 03"})
        EXPECT_EQ(db.vendorName(bad), std::nullopt) << bad;

    EXPECT_EQ(pciDisplayName(db, "0x10de", "0x2503"), QString("NVIDIA Corporation GA106 [GeForce RTX 3060]"));
    EXPECT_EQ(pciDisplayName(db, "0x10de", "0x9999"), QString("NVIDIA Corporation Device 9999"));
    EXPECT_EQ(pciDisplayName(db, "0x8086", "0x9a49"), std::nullopt);
}

TEST(InventoryInterfaces, LoopbackLeftOutAndEverythingSorted)
{
    const QList<NetworkInterfaceInfo> interfaces = groupInterfaceAddresses({
        {"wlp2s0", "192.168.1.23"},
        {"lo", "127.0.0.1"},
        {"lo", "::1"},
        {"enp0s31f6", "fe80::1e69:7aff:fe0a:1b2c%enp0s31f6"},
        {"wlp2s0", "2a02:8108::5"},
        {"wlp2s0", "192.168.1.23"},
        {"docker0", "127.0.0.1"},
        {"", "10.0.0.1"},
    });
    QStringList grouped;
    for (const NetworkInterfaceInfo& n : interfaces)
        grouped << n.name + ": " + n.addresses.join(' ');
    EXPECT_EQ(grouped, (QStringList{"enp0s31f6: fe80::1e69:7aff:fe0a:1b2c%enp0s31f6", "wlp2s0: 192.168.1.23 2a02:8108::5"}));
    EXPECT_NE(interfaces[0].id, interfaces[1].id);

    EXPECT_EQ(sortedUnique({"b", "", "B", "a", "b"}), (QStringList{"B", "a", "b"}));
}

} // namespace
} // namespace tallowmere
