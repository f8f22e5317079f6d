#include "hardware/SystemInfoParsers.h"

#include <QFile>
#include <QSet>

#include <algorithm>
#include <cctype>
#include <map>
#include <set>
#include <utility>

namespace tallowmere::inventory {

namespace {

// Texts firmware vendors leave in fields they never filled in.
const QStringList placeholders{
    QStringLiteral("To Be Filled By O.E.M."), QStringLiteral("To be filled by O.E.M."),
    QStringLiteral("Default string"),         QStringLiteral("System Product Name"),
    QStringLiteral("System manufacturer"),    QStringLiteral("System Version"),
    QStringLiteral("System Serial Number"),   QStringLiteral("Not Specified"),
    QStringLiteral("Not Applicable"),         QStringLiteral("None"),
    QStringLiteral("O.E.M."),                 QStringLiteral("OEM"),
    QStringLiteral("0123456789"),             QStringLiteral("Type1ProductConfigId"),
    QStringLiteral("SKU"),                    QStringLiteral("Base Board Product Name"),
    QStringLiteral("03000200-0400-0500-0006-000700080009"),
};

// Undoes the octal escapes (\040 for a blank) that mountinfo uses in paths.
QString unescapeMountField(const QByteArray& field)
{
    QByteArray out;
    out.reserve(field.size());
    for (qsizetype i = 0; i < field.size(); ++i) {
        if (field[i] == '\\' && i + 3 < field.size()) {
            const QByteArray digits = field.mid(i + 1, 3);
            bool ok = false;
            const int code = digits.toInt(&ok, 8);
            if (ok && digits.size() == 3 && code < 256) {
                out.append(char(code));
                i += 3;
                continue;
            }
        }
        out.append(field[i]);
    }
    return QString::fromUtf8(out);
}

QString normalisedId(QString id)
{
    id = id.trimmed().toLower();
    if (id.startsWith(QLatin1StringView("0x")))
        id.remove(0, 2);
    return id;
}

bool isHexId(const QString& id)
{
    return id.size() == 4 && std::all_of(id.begin(), id.end(), [](QChar c) { return std::isxdigit(c.toLatin1()); });
}

} // namespace

std::optional<QString> firmwareText(const QByteArray& raw)
{
    QByteArray bytes = raw;
    bytes.replace('\0', QByteArray());
    const QString text = QString::fromUtf8(bytes).trimmed();
    if (text.isEmpty() || text.contains(QChar::ReplacementCharacter))
        return std::nullopt;
    for (const QString& placeholder : placeholders) {
        if (text.compare(placeholder, Qt::CaseInsensitive) == 0)
            return std::nullopt;
    }
    return text;
}

CpuInfoSummary parseCpuInfo(const QByteArray& text)
{
    CpuInfoSummary summary;
    std::set<std::pair<QString, QString>> cores;
    QString physicalId;
    bool coreIdsSeen = false;
    std::map<QString, QString> brands;
    for (const QByteArray& line : text.split('\n')) {
        const qsizetype colon = line.indexOf(':');
        if (colon < 0) {
            physicalId.clear();  // a blank line ends one processor's block
            continue;
        }
        const QString key = QString::fromUtf8(line.left(colon)).trimmed();
        const QString value = QString::fromUtf8(line.mid(colon + 1)).trimmed();
        if (key == QLatin1StringView("processor")) {
            ++summary.processors;
        } else if (key == QLatin1StringView("physical id")) {
            physicalId = value;
        } else if (key == QLatin1StringView("core id")) {
            cores.emplace(physicalId, value);
            coreIdsSeen = true;
        } else if (!value.isEmpty() && !brands.count(key)) {
            brands.emplace(key, value);
        }
    }
    // x86 says "model name"; other architectures use their own keys.
    for (const char* key : {"model name", "cpu model", "Processor", "cpu"}) {
        if (auto it = brands.find(QString::fromLatin1(key)); it != brands.end()) {
            summary.brand = it->second;
            break;
        }
    }
    if (coreIdsSeen)
        summary.physicalCores = int(cores.size());
    return summary;
}

std::optional<int> countCpuList(const QByteArray& text)
{
    const QByteArray list = text.trimmed();
    if (list.isEmpty())
        return std::nullopt;
    int count = 0;
    for (const QByteArray& part : list.split(',')) {
        const QList<QByteArray> bounds = part.split('-');
        bool okLow = false;
        bool okHigh = false;
        const int low = bounds.value(0).toInt(&okLow);
        const int high = bounds.size() == 2 ? bounds[1].toInt(&okHigh) : low;
        if (!okLow || (bounds.size() == 2 && !okHigh) || bounds.size() > 2 || high < low || low < 0)
            return std::nullopt;
        count += high - low + 1;
    }
    return count;
}

std::optional<quint64> memTotalBytes(const QByteArray& meminfo)
{
    for (const QByteArray& line : meminfo.split('\n')) {
        if (!line.startsWith("MemTotal:"))
            continue;
        const QList<QByteArray> fields = line.mid(9).simplified().split(' ');
        bool ok = false;
        const quint64 kib = fields.value(0).toULongLong(&ok);
        return ok ? std::optional<quint64>(kib * 1024) : std::nullopt;
    }
    return std::nullopt;
}

QHash<QString, QString> parseKeyValueFile(const QByteArray& text)
{
    QHash<QString, QString> values;
    for (const QByteArray& raw : text.split('\n')) {
        const QByteArray line = raw.trimmed();
        const qsizetype eq = line.indexOf('=');
        if (line.startsWith('#') || eq <= 0)
            continue;
        QString value = QString::fromUtf8(line.mid(eq + 1)).trimmed();
        if (value.size() >= 2 && (value.front() == u'"' || value.front() == u'\'') && value.back() == value.front())
            value = value.mid(1, value.size() - 2);
        value.replace(QLatin1StringView("\\\""), QLatin1StringView("\""));
        values.insert(QString::fromUtf8(line.left(eq)).trimmed(), value);
    }
    return values;
}

QString osMarketingName(const QHash<QString, QString>& osRelease)
{
    if (const QString pretty = osRelease.value(QStringLiteral("PRETTY_NAME")); !pretty.isEmpty())
        return pretty;
    const QString name = osRelease.value(QStringLiteral("NAME"), QStringLiteral("Linux"));
    const QString version = osRelease.value(QStringLiteral("VERSION_ID"));
    return version.isEmpty() ? name : name + u' ' + version;
}

QList<MountEntry> parseMountInfo(const QByteArray& text)
{
    QList<MountEntry> mounts;
    for (const QByteArray& line : text.split('\n')) {
        const QList<QByteArray> fields = line.split(' ');
        const qsizetype separator = fields.indexOf(QByteArray("-"));
        if (fields.size() < 10 || separator < 6 || separator + 2 >= fields.size())
            continue;
        mounts.append({unescapeMountField(fields[4]), unescapeMountField(fields[3]),
                       QString::fromUtf8(fields[separator + 1]), unescapeMountField(fields[separator + 2]),
                       QString::fromUtf8(fields[2])});
    }
    return mounts;
}

QList<MountEntry> selectVolumeMounts(const QList<MountEntry>& mounts)
{
    QList<MountEntry> volumes;
    QSet<QString> devices;
    for (const MountEntry& mount : mounts) {
        if (!mount.source.startsWith(QLatin1StringView("/dev/")))
            continue;
        // Loop images (snaps, ISO files) and RAM disks are not storage the user owns.
        const QString name = mount.source.mid(5);
        if (name.startsWith(QLatin1StringView("loop")) || name.startsWith(QLatin1StringView("ram"))
            || name.startsWith(QLatin1StringView("zram")))
            continue;
        if (devices.contains(mount.device))
            continue;
        devices.insert(mount.device);
        volumes.append(mount);
    }
    return volumes;
}

QStringList parseSoundCards(const QByteArray& text)
{
    QStringList names;
    for (const QByteArray& line : text.split('\n')) {
        const QByteArray trimmed = line.trimmed();
        // " 0 [PCH            ]: HDA-Intel - HDA Intel PCH"; the second line of a card is indented text.
        if (trimmed.isEmpty() || !std::isdigit(static_cast<unsigned char>(trimmed[0])) || !trimmed.contains("]:"))
            continue;
        const qsizetype dash = trimmed.indexOf(" - ", trimmed.indexOf("]:"));
        if (dash < 0)
            continue;
        const QString name = QString::fromUtf8(trimmed.mid(dash + 3)).trimmed();
        if (!name.isEmpty())
            names.append(name);
    }
    return sortedUnique(names);
}

HardwareIdDatabase HardwareIdDatabase::load(const QStringList& dirs, const QString& fileName)
{
    for (const QString& dir : dirs) {
        QFile file(dir + u'/' + fileName);
        if (file.open(QIODevice::ReadOnly))
            return HardwareIdDatabase(file.readAll());
    }
    return {};
}

qsizetype HardwareIdDatabase::vendorLineEnd(const QString& vendorId) const
{
    const QString id = normalisedId(vendorId);
    if (!isHexId(id))
        return -1;
    const QByteArray needle = '\n' + id.toLatin1() + "  ";
    qsizetype at = text_.startsWith(needle.mid(1)) ? 0 : text_.indexOf(needle);
    if (at < 0)
        return -1;
    const qsizetype end = text_.indexOf('\n', at + 1);
    return end < 0 ? text_.size() : end;
}

std::optional<QString> HardwareIdDatabase::vendorName(const QString& vendorId) const
{
    const qsizetype end = vendorLineEnd(vendorId);
    if (end < 0)
        return std::nullopt;
    const qsizetype start = text_.lastIndexOf('\n', end - 1) + 1;
    return QString::fromUtf8(text_.mid(start + 6, end - start - 6)).trimmed();
}

std::optional<QString> HardwareIdDatabase::deviceName(const QString& vendorId, const QString& deviceId) const
{
    qsizetype pos = vendorLineEnd(vendorId);
    const QString device = normalisedId(deviceId);
    if (pos < 0 || !isHexId(device))
        return std::nullopt;
    const QByteArray prefix = '\t' + device.toLatin1() + "  ";
    while (pos < text_.size()) {
        const qsizetype start = pos + 1;
        qsizetype end = text_.indexOf('\n', start);
        if (end < 0)
            end = text_.size();
        const QByteArrayView line(text_.constData() + start, end - start);
        // The vendor's block ends at the next line that is neither indented nor a comment.
        if (!line.isEmpty() && line[0] != '\t' && line[0] != '#')
            break;
        if (line.startsWith(prefix))
            return QString::fromUtf8(line.sliced(prefix.size())).trimmed();
        pos = end;
    }
    return std::nullopt;
}

std::optional<QString> pciDisplayName(const HardwareIdDatabase& pci, const QString& vendorId, const QString& deviceId)
{
    const auto vendor = pci.vendorName(vendorId);
    if (!vendor)
        return std::nullopt;
    if (const auto device = pci.deviceName(vendorId, deviceId))
        return *vendor + u' ' + *device;
    return *vendor + QStringLiteral(" Device ") + normalisedId(deviceId);
}

QList<NetworkInterfaceInfo> groupInterfaceAddresses(const QList<InterfaceAddress>& addresses)
{
    std::map<QString, std::set<QString>> byName;
    for (const InterfaceAddress& entry : addresses) {
        if (entry.interface.isEmpty() || entry.address.isEmpty() || entry.address == QLatin1StringView("::1")
            || entry.address == QLatin1StringView("127.0.0.1"))
            continue;
        byName[entry.interface].insert(entry.address);
    }
    QList<NetworkInterfaceInfo> interfaces;
    for (const auto& [name, set] : byName)
        interfaces.append({QUuid::createUuid(), name, QStringList(set.begin(), set.end())});
    return interfaces;
}

QStringList sortedUnique(QStringList names)
{
    names.removeAll(QString());
    std::sort(names.begin(), names.end());
    names.erase(std::unique(names.begin(), names.end()), names.end());
    return names;
}

} // namespace tallowmere::inventory
