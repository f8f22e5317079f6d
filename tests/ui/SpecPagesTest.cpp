#include "WindowTestKit.h"

#include "ui/components/InfoRow.h"
#include "ui/pages/LinuxTexts.h"

#include <QDir>
#include <QFile>
#include <QPushButton>

#include <gtest/gtest.h>

using namespace tallowmere;

namespace {

const CardRecord& card(const PageRecord& page, const QString& title)
{
    for (const CardRecord& c : page.cards)
        if (c.title == title)
            return c;
    static const CardRecord none;
    ADD_FAILURE() << "no card " << title.toStdString() << " on " << page.title.toStdString();
    return none;
}

QString rowValue(const CardRecord& c, const QString& label)
{
    for (const RowRecord& row : c.rows)
        if (row.label == label)
            return row.value;
    return QStringLiteral("<missing>");
}

} // namespace

TEST(SpecPages, TextFormats)
{
    EXPECT_EQ(uptimeText(307), "Up 0:05");
    EXPECT_EQ(uptimeText(86399), "Up 23:59");
    EXPECT_EQ(uptimeText(86400), "Up 1 day, 0:00");
    EXPECT_EQ(uptimeText(3 * 86400 + 4 * 3600 + 5 * 60 + 59), "Up 3 days, 4:05");

    EXPECT_EQ(InfoRow::masked(QStringLiteral("C02")), QString(8, QChar(0x2022))) << "never fewer than eight";

    EXPECT_EQ(graphicsSummary({}), "Integrated graphics");
    EXPECT_EQ(graphicsSummary({QStringLiteral("A")}), "Integrated graphics");
    EXPECT_EQ(graphicsSummary({QStringLiteral("A"), QStringLiteral("B"), QStringLiteral("C")}), "3 GPUs detected");
}

TEST(SpecPages, FixtureInventory)
{
    const PageInputs in = test::fixtureInputs();

    const PageRecord summary = makeSpecPage(SpecCategory::summary, in);
    ASSERT_EQ(summary.tiles.size(), 4);
    EXPECT_EQ(summary.tiles[0].subtitle, "8 cores \u00B7 2.8 GHz");
    EXPECT_EQ(summary.tiles[1].value, "15.5 GB");
    EXPECT_EQ(summary.tiles[2].value, "176.9 GB free");
    EXPECT_EQ(summary.tiles[3].subtitle, "Integrated graphics");
    EXPECT_EQ(rowValue(card(summary, QStringLiteral("Platform")), QStringLiteral("Uptime")), "Up 1 day, 1:01");

    const CardRecord cpu = card(makeSpecPage(SpecCategory::cpu, in), QStringLiteral("Processor"));
    EXPECT_EQ(rowValue(cpu, QStringLiteral("Physical Cores")), "4");
    EXPECT_EQ(rowValue(cpu, QStringLiteral("Logical Cores")), "8");
    EXPECT_EQ(rowValue(cpu, QStringLiteral("Frequency")), "2.80 GHz");

    const PageRecord os = makeSpecPage(SpecCategory::operatingSystem, in);
    EXPECT_EQ(rowValue(card(os, QStringLiteral("Operating System")), QStringLiteral("Version")),
              "Debian GNU/Linux 12 (bookworm)");
    EXPECT_EQ(rowValue(card(os, QStringLiteral("Operating System")), QStringLiteral("Kernel")), "6.1.0-13-amd64");

    const PageRecord storage = makeSpecPage(SpecCategory::storage, in);
    EXPECT_EQ(storage.tiles[0].value, "300.0 / 476.9 GB");
    EXPECT_EQ(storage.tiles[0].subtitle, "of 476.9 GB \u00B7 ext4");
    EXPECT_EQ(storage.subtitle, "176.9 GB free of 476.9 GB");
    const CardRecord usage = card(storage, QStringLiteral("Disk Usage"));
    EXPECT_EQ(usage.barCaption, "63% used");
    EXPECT_EQ(rowValue(usage, QStringLiteral("Total")), "476.9 GB");
    const CardRecord volumes = card(storage, QStringLiteral("Volumes"));
    ASSERT_EQ(volumes.items.size(), 2);
    EXPECT_EQ(volumes.items[1].captions, QStringList({"0.4 GB free", "0.5 GB total"}));
    EXPECT_NEAR(*volumes.items[1].usedFraction, 0.2, 1e-9);

    const CardRecord board = card(makeSpecPage(SpecCategory::motherboard, in), QStringLiteral("Motherboard"));
    EXPECT_EQ(rowValue(board, QStringLiteral("Model")), "ThinkPad X1 Carbon Gen 9");
    EXPECT_TRUE(board.rows.last().revealable);
    EXPECT_EQ(board.rows.last().label, "Hardware UUID");

    const CardRecord interfaces = card(makeSpecPage(SpecCategory::network, in), QStringLiteral("Interfaces"));
    ASSERT_EQ(interfaces.items.size(), 1);
    EXPECT_EQ(interfaces.items[0].rows[1].value, "fe80::1%wlp0s20f3");
}

TEST(SpecPages, EmptyInventoryFallsBackEverywhere)
{
    const PageInputs in;
    const PageRecord summary = makeSpecPage(SpecCategory::summary, in);
    EXPECT_EQ(summary.tiles[0].value, "Unknown");
    EXPECT_EQ(card(summary, QStringLiteral("Graphics")).empty,
              (EmptyState{"display.trianglebadge.exclamationmark", "No GPU information available"}));
    EXPECT_EQ(rowValue(card(summary, QStringLiteral("Platform")), QStringLiteral("Uptime")), "Unknown");

    const CardRecord os = card(makeSpecPage(SpecCategory::operatingSystem, in), QStringLiteral("Operating System"));
    EXPECT_EQ(rowValue(os, QStringLiteral("Computer Name")), "Unknown");
    EXPECT_EQ(rowValue(os, QStringLiteral("Build")), "<missing>");

    const CardRecord cpu = card(makeSpecPage(SpecCategory::cpu, in), QStringLiteral("Processor"));
    EXPECT_EQ(rowValue(cpu, QStringLiteral("Brand")), "Unknown");
    EXPECT_EQ(rowValue(cpu, QStringLiteral("Physical Cores")), "<missing>");

    const CardRecord board = card(makeSpecPage(SpecCategory::motherboard, in), QStringLiteral("Motherboard"));
    EXPECT_EQ(rowValue(board, QStringLiteral("Model")), "<missing>");
    for (const RowRecord& row : board.rows) {
        EXPECT_EQ(row.value, "Unknown") << row.label.toStdString();
        EXPECT_FALSE(row.revealable) << "nothing to hide behind " << row.label.toStdString();
    }

    const PageRecord storage = makeSpecPage(SpecCategory::storage, in);
    EXPECT_EQ(storage.tiles[0].value, "Unknown");
    EXPECT_EQ(card(storage, QStringLiteral("Volumes")).empty, (EmptyState{"externaldrive.badge.xmark", "No volumes found"}));

    EXPECT_EQ(makeSpecPage(SpecCategory::opticalDrives, in).cards[0].empty, (EmptyState{QString(), "None detected"}));
    EXPECT_EQ(makeSpecPage(SpecCategory::audio, in).cards[0].empty, (EmptyState{"speaker.slash", "None detected"}));
    EXPECT_EQ(card(makeSpecPage(SpecCategory::network, in), QStringLiteral("Interfaces")).empty,
              (EmptyState{"wifi.slash", "No interfaces found"}));
    EXPECT_EQ(makeSpecPage(SpecCategory::battery, in).tiles[0].value, "No battery");
}

TEST(SpecPages, SerialNumberIsMaskedUntilRevealed)
{
    InventoryPage page(Theme::lightTheme(), makeSpecPage(SpecCategory::motherboard, test::fixtureInputs()));
    auto* serial = page.findChild<InfoRow*>(QStringLiteral("row:Serial Number"));
    ASSERT_NE(serial, nullptr);
    EXPECT_EQ(serial->shownValue(), QString(12, QChar(0x2022)));
    EXPECT_EQ(serial->revealButton()->text(), "Reveal");
    serial->revealButton()->click();
    EXPECT_EQ(serial->shownValue(), "PF2ABCD1XYZ9");
    EXPECT_EQ(serial->revealButton()->text(), "Hide");
    EXPECT_EQ(page.findChild<InfoRow*>(QStringLiteral("row:Board ID"))->revealButton(), nullptr);
    EXPECT_NE(page.findChild<QWidget*>(QStringLiteral("liveCards")), nullptr);
}

TEST(SpecPages, LinuxFactsFromProcFiles)
{
    QTemporaryDir proc;
    QDir(proc.path()).mkpath(QStringLiteral("self"));
    const auto write = [&proc](const QString& name, const QByteArray& text) {
        QFile file(proc.filePath(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(text);
    };
    write(QStringLiteral("self/mountinfo"),
          "22 1 259:2 / / rw,relatime shared:1 - ext4 /dev/nvme0n1p2 rw\n"
          "25 22 259:1 / /boot/efi rw,relatime shared:2 - vfat /dev/nvme0n1p1 rw\n"
          "30 22 0:26 / / rw shared:9 - btrfs /dev/mapper/root rw\n");
    write(QStringLiteral("uptime"), "90061.42 350000.10\n");
    EXPECT_EQ(linuxTexts::rootFileSystemType(proc.path()), "btrfs");
    EXPECT_EQ(linuxTexts::uptimeSeconds(proc.path()), 90061);
    EXPECT_EQ(linuxTexts::rootFileSystemType(proc.filePath(QStringLiteral("none"))), std::nullopt);
    EXPECT_EQ(linuxTexts::uptimeSeconds(proc.filePath(QStringLiteral("none"))), std::nullopt);
}
