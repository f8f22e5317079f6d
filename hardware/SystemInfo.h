#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <QUuid>

#include <functional>
#include <optional>

namespace tallowmere {

// One mounted file system; `id` is fresh for every gathering. Sizes in GB of 2^30 bytes.
struct VolumeInfo {
    QUuid id;
    QString name;
    std::optional<double> totalGB;
    std::optional<double> freeGB;

    bool operator==(const VolumeInfo&) const = default;
};

// One network interface with its addresses in numeric form (loopback addresses left out).
struct NetworkInterfaceInfo {
    QUuid id;
    QString name;
    QStringList addresses;

    bool operator==(const NetworkInterfaceInfo&) const = default;
};

// Where the inventory is read from; tests point these at fixture trees.
struct SystemInfoSources {
    QString sysRoot = QStringLiteral("/sys");
    QString procRoot = QStringLiteral("/proc");
    QString etcRoot = QStringLiteral("/etc");
    // The file system whose size is the machine's storage figure.
    QString storagePath = QStringLiteral("/");
    // Folders searched, in order, for the pci.ids and usb.ids name databases.
    QStringList idDatabaseDirs{QStringLiteral("/usr/share/hwdata"), QStringLiteral("/usr/share/misc")};
    // Whether to add the live interface addresses of this machine (not part of any fixture).
    bool readInterfaceAddresses = true;
    // The sound server's device names, absent when no server answers; the kernel's sound
    // card list stands in then, and when this is not set.
    std::function<std::optional<QStringList>()> audioDevices;
};

// A one-shot inventory of the machine and its operating system. Every source is independent:
// one that is missing or unreadable leaves its field absent or its list empty.
struct SystemInfo {
    std::optional<QString> modelIdentifier;
    std::optional<QString> machine;
    std::optional<QString> boardID;
    std::optional<QString> platformUUID;
    std::optional<QString> marketingName;
    std::optional<QString> serialNumber;
    std::optional<QString> modelNumber;
    std::optional<QString> targetType;
    std::optional<QString> cpuBrand;
    int cpuCores = 1;
    std::optional<int> cpuPhysicalCores;
    std::optional<double> cpuFrequencyGHz;
    double memoryGB = 0;
    QString osVersion;
    QString osMarketingVersion;
    std::optional<QString> osBuildNumber;
    std::optional<QString> osComputerName;
    std::optional<QString> osKernelVersion;
    std::optional<double> storageTotalGB;
    std::optional<double> storageFreeGB;
    QList<VolumeInfo> volumes;
    QStringList gpus;
    QStringList opticalDrives;
    QStringList audioDevices;
    QStringList peripherals;
    QList<NetworkInterfaceInfo> networkInterfaces;

    bool operator==(const SystemInfo&) const = default;

    // Gathers synchronously from this machine; nothing is cached.
    static SystemInfo current();
    static SystemInfo current(const SystemInfoSources& sources);

    // The name to show for the machine, e.g. "ThinkPad X1 Carbon Gen 9"; never empty.
    QString displayModelName() const;
    // The operating system in one line, with " · Build ..." when a build id is known.
    QString osDisplayVersion() const;
};

} // namespace tallowmere
