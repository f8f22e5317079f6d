#include "hardware/SystemInfoReader.h"

#include "hardware/SystemInfoParsers.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSysInfo>

#include <ifaddrs.h>
#include <netdb.h>
#include <sys/socket.h>
#include <sys/statvfs.h>
#include <sys/utsname.h>
#include <unistd.h>

#include <algorithm>
#include <memory>

namespace tallowmere {

namespace {

constexpr double bytesPerGB = 1024.0 * 1024.0 * 1024.0;

struct Capacity {
    double totalGB = 0;
    double freeGB = 0;
};

std::optional<Capacity> capacityOf(const QString& path)
{
    struct statvfs fs {};
    if (::statvfs(QFile::encodeName(path).constData(), &fs) != 0)
        return std::nullopt;
    return Capacity{double(fs.f_blocks) * double(fs.f_frsize) / bytesPerGB,
                    double(fs.f_bavail) * double(fs.f_frsize) / bytesPerGB};
}

// SMBIOS chassis type codes, for the kinds a desktop user would recognise.
std::optional<QString> chassisName(const std::optional<QString>& code)
{
    if (!code)
        return std::nullopt;
    switch (code->toInt()) {
    case 3: case 4: case 5: case 6: case 7: case 15: case 16: return QStringLiteral("Desktop");
    case 8: case 9: case 10: case 14: return QStringLiteral("Laptop");
    case 11: return QStringLiteral("Handheld");
    case 13: return QStringLiteral("All-in-One");
    case 17: case 23: case 28: return QStringLiteral("Server");
    case 30: return QStringLiteral("Tablet");
    case 31: case 32: return QStringLiteral("Convertible");
    case 35: case 36: return QStringLiteral("Mini PC");
    default: return std::nullopt;
    }
}

QStringList entriesMatching(const QString& dir, const QRegularExpression& pattern)
{
    QStringList names;
    for (const QString& name : QDir(dir).entryList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::System)) {
        if (pattern.match(name).hasMatch())
            names.append(name);
    }
    return names;
}

// "card10" after "card2": the number, not the text, gives the platform's order.
void sortByNumberSuffix(QStringList& names, qsizetype prefixLength)
{
    std::sort(names.begin(), names.end(),
              [prefixLength](const QString& a, const QString& b) { return a.mid(prefixLength).toInt() < b.mid(prefixLength).toInt(); });
}

QString labelDecoded(QString label)
{
    // udev escapes blanks and slashes in link names as \x20 and \x2f.
    static const QRegularExpression escape(QStringLiteral(R"(\\x([0-9a-fA-F]{2}))"));
    QString out;
    qsizetype last = 0;
    for (auto it = escape.globalMatch(label); it.hasNext();) {
        const auto m = it.next();
        out += label.mid(last, m.capturedStart() - last) + QChar(m.captured(1).toInt(nullptr, 16));
        last = m.capturedEnd();
    }
    return out + label.mid(last);
}

QHash<QString, QString> labelsByDevice()
{
    QHash<QString, QString> labels;
    const QDir dir(QStringLiteral("/dev/disk/by-label"));
    for (const QFileInfo& link : dir.entryInfoList(QDir::AllEntries | QDir::NoDotAndDotDot | QDir::System)) {
        if (const QString device = link.canonicalFilePath(); !device.isEmpty())
            labels.insert(device, labelDecoded(link.fileName()));
    }
    return labels;
}

QList<inventory::InterfaceAddress> liveInterfaceAddresses()
{
    ifaddrs* list = nullptr;
    if (::getifaddrs(&list) != 0)
        return {};
    const std::unique_ptr<ifaddrs, decltype(&::freeifaddrs)> guard(list, &::freeifaddrs);
    QList<inventory::InterfaceAddress> addresses;
    for (const ifaddrs* entry = list; entry; entry = entry->ifa_next) {
        if (!entry->ifa_name || !entry->ifa_addr)
            continue;
        const int family = entry->ifa_addr->sa_family;
        if (family != AF_INET && family != AF_INET6)
            continue;
        char host[NI_MAXHOST] = {};
        const socklen_t length = family == AF_INET ? sizeof(sockaddr_in) : sizeof(sockaddr_in6);
        if (::getnameinfo(entry->ifa_addr, length, host, sizeof host, nullptr, 0, NI_NUMERICHOST) != 0)
            continue;
        addresses.append({QString::fromUtf8(entry->ifa_name), QString::fromUtf8(host)});
    }
    return addresses;
}

} // namespace

SystemInfo SystemInfoReader::read() const
{
    SystemInfo info;
    readIdentity(info);
    readProcessor(info);
    readOperatingSystem(info);
    readStorage(info);
    info.gpus = readGpus();
    info.opticalDrives = readOpticalDrives();
    info.peripherals = readPeripherals();
    const std::optional<QStringList> serverDevices = sources_.audioDevices ? sources_.audioDevices() : std::nullopt;
    info.audioDevices = serverDevices ? *serverDevices
                                      : inventory::parseSoundCards(readFile(sources_.procRoot, QStringLiteral("asound/cards")));
    if (sources_.readInterfaceAddresses)
        info.networkInterfaces = inventory::groupInterfaceAddresses(liveInterfaceAddresses());
    return info;
}

QByteArray SystemInfoReader::readFile(const QString& root, const QString& relative) const
{
    QFile file(root + u'/' + relative);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return file.readAll();
}

std::optional<QString> SystemInfoReader::firmwareFile(const QString& relative) const
{
    return inventory::firmwareText(readFile(sources_.sysRoot, relative));
}

void SystemInfoReader::readIdentity(SystemInfo& info) const
{
    const auto dmi = [this](const char* name) { return firmwareFile(QStringLiteral("class/dmi/id/") + QLatin1StringView(name)); };
    const auto tree = [this](const char* name) {
        return readFile(sources_.sysRoot, QStringLiteral("firmware/devicetree/base/") + QLatin1StringView(name));
    };

    const auto vendor = dmi("sys_vendor");
    const auto product = dmi("product_name");
    const QByteArray compatible = tree("compatible");
    info.modelIdentifier = product ? product : inventory::firmwareText(compatible.left(compatible.indexOf('\0')));

    // Lenovo keeps the model number in product_name and the name people know in product_version.
    std::optional<QString> name = product;
    if (vendor && vendor->compare(QLatin1StringView("LENOVO"), Qt::CaseInsensitive) == 0) {
        if (auto version = dmi("product_version"))
            name = version;
    }
    if (auto treeModel = inventory::firmwareText(tree("model")))
        info.marketingName = treeModel;
    else if (vendor && name && !name->startsWith(*vendor, Qt::CaseInsensitive))
        info.marketingName = *vendor + u' ' + *name;
    else
        info.marketingName = name ? name : info.modelIdentifier;

    utsname uts{};
    if (::uname(&uts) == 0)
        info.machine = QString::fromUtf8(uts.machine);
    info.boardID = dmi("board_name");
    info.platformUUID = dmi("product_uuid");
    info.serialNumber = dmi("product_serial");
    if (!info.serialNumber)
        info.serialNumber = inventory::firmwareText(tree("serial-number"));
    info.modelNumber = dmi("product_sku");
    info.targetType = chassisName(dmi("chassis_type"));
}

void SystemInfoReader::readProcessor(SystemInfo& info) const
{
    const inventory::CpuInfoSummary cpu = inventory::parseCpuInfo(readFile(sources_.procRoot, QStringLiteral("cpuinfo")));
    info.cpuBrand = cpu.brand;

    const QString cpuDir = sources_.sysRoot + QStringLiteral("/devices/system/cpu");
    if (auto online = inventory::countCpuList(readFile(cpuDir, QStringLiteral("online"))))
        info.cpuCores = *online;
    else if (cpu.processors > 0)
        info.cpuCores = cpu.processors;
    else
        info.cpuCores = int(std::max(1L, ::sysconf(_SC_NPROCESSORS_ONLN)));

    // Threads that share a core list the same siblings; distinct lists are physical cores.
    static const QRegularExpression cpuName(QStringLiteral(R"(^cpu\d+$)"));
    QSet<QByteArray> siblingLists;
    for (const QString& name : entriesMatching(cpuDir, cpuName)) {
        const QByteArray siblings = readFile(cpuDir, name + QStringLiteral("/topology/thread_siblings_list")).trimmed();
        if (!siblings.isEmpty())
            siblingLists.insert(siblings);
    }
    info.cpuPhysicalCores = siblingLists.isEmpty() ? cpu.physicalCores : std::optional<int>(int(siblingLists.size()));

    for (const char* file : {"cpu0/cpufreq/base_frequency", "cpu0/cpufreq/cpuinfo_max_freq"}) {
        bool ok = false;
        const double kHz = readFile(cpuDir, QLatin1StringView(file)).trimmed().toDouble(&ok);
        if (ok && kHz > 0) {
            info.cpuFrequencyGHz = kHz / 1e6;
            break;
        }
    }

    if (auto total = inventory::memTotalBytes(readFile(sources_.procRoot, QStringLiteral("meminfo"))))
        info.memoryGB = double(*total) / bytesPerGB;
    else
        info.memoryGB = double(::sysconf(_SC_PHYS_PAGES)) * double(::sysconf(_SC_PAGESIZE)) / bytesPerGB;
}

void SystemInfoReader::readOperatingSystem(SystemInfo& info) const
{
    const auto kernelText = [this](const char* name) {
        return inventory::firmwareText(readFile(sources_.procRoot, QStringLiteral("sys/kernel/") + QLatin1StringView(name)));
    };
    utsname uts{};
    const bool haveUname = ::uname(&uts) == 0;
    const QString osType = kernelText("ostype").value_or(haveUname ? QString::fromUtf8(uts.sysname) : QStringLiteral("Linux"));
    info.osKernelVersion = kernelText("osrelease");
    if (!info.osKernelVersion && haveUname)
        info.osKernelVersion = QString::fromUtf8(uts.release);
    const std::optional<QString> build = kernelText("version");
    info.osVersion = osType;
    if (info.osKernelVersion)
        info.osVersion += u' ' + *info.osKernelVersion;
    if (build)
        info.osVersion += u' ' + *build;

    QByteArray osRelease = readFile(sources_.etcRoot, QStringLiteral("os-release"));
    if (osRelease.isEmpty() && sources_.etcRoot == QLatin1StringView("/etc"))
        osRelease = readFile(QStringLiteral("/usr/lib"), QStringLiteral("os-release"));
    const QHash<QString, QString> release = inventory::parseKeyValueFile(osRelease);
    info.osMarketingVersion = inventory::osMarketingName(release);
    if (const QString id = release.value(QStringLiteral("BUILD_ID")); !id.isEmpty())
        info.osBuildNumber = id;

    const QHash<QString, QString> machineInfo = inventory::parseKeyValueFile(readFile(sources_.etcRoot, QStringLiteral("machine-info")));
    if (const QString pretty = machineInfo.value(QStringLiteral("PRETTY_HOSTNAME")); !pretty.isEmpty())
        info.osComputerName = pretty;
    else
        info.osComputerName = kernelText("hostname");
}

void SystemInfoReader::readStorage(SystemInfo& info) const
{
    if (auto root = capacityOf(sources_.storagePath)) {
        info.storageTotalGB = root->totalGB;
        info.storageFreeGB = root->freeGB;
    }
    const QList<inventory::MountEntry> mounts =
        inventory::selectVolumeMounts(inventory::parseMountInfo(readFile(sources_.procRoot, QStringLiteral("self/mountinfo"))));
    const QHash<QString, QString> labels = mounts.isEmpty() ? QHash<QString, QString>{} : labelsByDevice();
    for (const inventory::MountEntry& mount : mounts) {
        const auto capacity = capacityOf(mount.mountPoint);
        if (!capacity)
            continue;  // not reachable from here (another mount namespace, no permission)
        const QString device = QFileInfo(mount.source).canonicalFilePath();
        QString name = device.isEmpty() ? QString() : labels.value(device);
        if (name.isEmpty())
            name = mount.mountPoint == QLatin1StringView("/") ? QStringLiteral("/") : QFileInfo(mount.mountPoint).fileName();
        info.volumes.append({QUuid::createUuid(), name, capacity->totalGB, capacity->freeGB});
    }
}

QStringList SystemInfoReader::readGpus() const
{
    static const QRegularExpression cardName(QStringLiteral(R"(^card\d+$)"));
    const QString drm = sources_.sysRoot + QStringLiteral("/class/drm");
    QStringList cards = entriesMatching(drm, cardName);
    sortByNumberSuffix(cards, 4);
    const auto pci = inventory::HardwareIdDatabase::load(sources_.idDatabaseDirs, QStringLiteral("pci.ids"));
    QStringList gpus;
    for (const QString& card : cards) {
        const QString device = drm + u'/' + card + QStringLiteral("/device");
        const QString vendorId = QString::fromLatin1(readFile(device, QStringLiteral("vendor")).trimmed());
        const QString deviceId = QString::fromLatin1(readFile(device, QStringLiteral("device")).trimmed());
        if (auto name = inventory::pciDisplayName(pci, vendorId, deviceId)) {
            gpus.append(*name);
            continue;
        }
        // Not a PCI device (SoC graphics) or not in the database: the driver's name says most.
        const QString driver = QFileInfo(device + QStringLiteral("/driver")).symLinkTarget();
        if (!driver.isEmpty())
            gpus.append(QFileInfo(driver).fileName());
    }
    return gpus;
}

QStringList SystemInfoReader::readOpticalDrives() const
{
    static const QRegularExpression opticalName(QStringLiteral(R"(^sr\d+$)"));
    const QString block = sources_.sysRoot + QStringLiteral("/block");
    QStringList names;
    for (const QString& drive : entriesMatching(block, opticalName)) {
        const QString device = block + u'/' + drive + QStringLiteral("/device");
        const auto vendor = inventory::firmwareText(readFile(device, QStringLiteral("vendor")));
        const auto model = inventory::firmwareText(readFile(device, QStringLiteral("model")));
        if (vendor && model)
            names.append(*vendor + u' ' + *model);
        else
            names.append(model.value_or(vendor.value_or(drive)));
    }
    return inventory::sortedUnique(names);
}

QStringList SystemInfoReader::readPeripherals() const
{
    // Devices are named "1-2" or "1-2.4"; "usb1" is a root hub and "1-2:1.0" an interface.
    static const QRegularExpression deviceName(QStringLiteral(R"(^\d+-[\d.]+$)"));
    const QString devices = sources_.sysRoot + QStringLiteral("/bus/usb/devices");
    const QStringList entries = entriesMatching(devices, deviceName);
    if (entries.isEmpty())
        return {};
    const auto usb = inventory::HardwareIdDatabase::load(sources_.idDatabaseDirs, QStringLiteral("usb.ids"));
    QStringList names;
    for (const QString& entry : entries) {
        const QString dir = devices + u'/' + entry;
        const QString vendorId = QString::fromLatin1(readFile(dir, QStringLiteral("idVendor")).trimmed());
        const QString productId = QString::fromLatin1(readFile(dir, QStringLiteral("idProduct")).trimmed());
        std::optional<QString> name = inventory::firmwareText(readFile(dir, QStringLiteral("product")));
        if (!name)
            name = usb.deviceName(vendorId, productId);
        if (auto vendor = usb.vendorName(vendorId); !name && vendor)
            name = *vendor + QStringLiteral(" Device");
        names.append(name.value_or(QStringLiteral("USB Device")));
    }
    return inventory::sortedUnique(names);
}

} // namespace tallowmere
