#pragma once

#include "hardware/SystemInfo.h"

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

// The platform-free half of the inventory: kernel and configuration text in, values out.
namespace tallowmere::inventory {

// A DMI or device-tree text with NUL bytes and surrounding blanks removed; absent when
// empty or one of the vendor placeholders ("To Be Filled By O.E.M.", "Default string", ...).
std::optional<QString> firmwareText(const QByteArray& raw);

// What /proc/cpuinfo says: the processor's name and the number of distinct physical cores
// (absent when the file does not give core ids, as on many ARM boards).
struct CpuInfoSummary {
    std::optional<QString> brand;
    int processors = 0;
    std::optional<int> physicalCores;
};
CpuInfoSummary parseCpuInfo(const QByteArray& text);

// The number of CPUs in a kernel CPU list such as "0-3,6,8-11"; absent when malformed.
std::optional<int> countCpuList(const QByteArray& text);

// MemTotal of /proc/meminfo in bytes.
std::optional<quint64> memTotalBytes(const QByteArray& meminfo);

// KEY=value lines of os-release or machine-info, with shell quoting removed.
QHash<QString, QString> parseKeyValueFile(const QByteArray& text);
// "Debian GNU/Linux 12 (bookworm)": PRETTY_NAME, else NAME and VERSION_ID, else "Linux".
QString osMarketingName(const QHash<QString, QString>& osRelease);

// One line of /proc/self/mountinfo, reduced to what volume selection needs.
struct MountEntry {
    QString mountPoint;
    QString root;
    QString fsType;
    QString source;
    QString device;  // major:minor
};
QList<MountEntry> parseMountInfo(const QByteArray& text);
// Mounts of real block devices, each device once (bind mounts and subvolume mounts of the
// same device left out), in mount order.
QList<MountEntry> selectVolumeMounts(const QList<MountEntry>& mounts);

// Card names of /proc/asound/cards ("HDA Intel PCH").
QStringList parseSoundCards(const QByteArray& text);

// Vendor and device names from a pci.ids or usb.ids database (same layout).
class HardwareIdDatabase {
public:
    HardwareIdDatabase() = default;
    explicit HardwareIdDatabase(QByteArray text) : text_(std::move(text)) {}
    // Reads the first `fileName` found in `dirs`; an empty database when none is.
    static HardwareIdDatabase load(const QStringList& dirs, const QString& fileName);

    bool isEmpty() const { return text_.isEmpty(); }
    // Ids as four hexadecimal digits ("10de"; a "0x" prefix and case do not matter).
    std::optional<QString> vendorName(const QString& vendorId) const;
    std::optional<QString> deviceName(const QString& vendorId, const QString& deviceId) const;

private:
    // Offset just past the vendor's line, or -1.
    qsizetype vendorLineEnd(const QString& vendorId) const;
    QByteArray text_;
};

// "NVIDIA Corporation GA106 [GeForce RTX 3060]"; absent when the database knows neither.
std::optional<QString> pciDisplayName(const HardwareIdDatabase& pci, const QString& vendorId, const QString& deviceId);

// One address of one interface, already in numeric form.
struct InterfaceAddress {
    QString interface;
    QString address;
};
// One record per interface with its non-loopback addresses sorted, interfaces sorted by name.
QList<NetworkInterfaceInfo> groupInterfaceAddresses(const QList<InterfaceAddress>& addresses);

// De-duplicated and sorted by plain text comparison; empty names dropped.
QStringList sortedUnique(QStringList names);

} // namespace tallowmere::inventory
