#include "hardware/CameraScanner.h"

#include "core/ProcessFds.h"
#include "hardware/CameraRules.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <algorithm>
#include <unistd.h>

namespace tallowmere {

namespace {

QString attribute(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return {};
    return QString::fromUtf8(file.read(4096)).trimmed();
}

std::optional<int> videoNumber(const QString& name)
{
    if (!name.startsWith(QLatin1StringView("video")) || name.size() == 5)
        return std::nullopt;
    bool ok = false;
    const int number = QStringView(name).mid(5).toInt(&ok);
    if (!ok || number < 0 || !std::all_of(name.begin() + 5, name.end(), [](QChar c) { return c.isDigit(); }))
        return std::nullopt;
    return number;
}

} // namespace

CameraScanner::CameraScanner(std::shared_ptr<VideoDeviceLayer> layer, CameraRoots roots)
    : layer_(std::move(layer))
    , roots_(std::move(roots))
{
}

std::vector<QString> CameraScanner::videoNodeNames(const QString& devRoot)
{
    std::vector<std::pair<int, QString>> found;
    for (const QString& name : QDir(devRoot).entryList(QDir::System | QDir::Files | QDir::NoDotAndDotDot)) {
        if (const auto number = videoNumber(name))
            found.emplace_back(*number, name);
    }
    std::sort(found.begin(), found.end());
    std::vector<QString> names;
    names.reserve(found.size());
    for (auto& [number, name] : found)
        names.push_back(std::move(name));
    return names;
}

QSet<QString> CameraScanner::nodesHeldOpen(const QString& procRoot, int ownPid)
{
    QSet<QString> held;
    walkProcessFds(QFile::encodeName(procRoot).toStdString(), [&](const Directory&, int pid, std::string_view target) {
        if (pid == ownPid)
            return FdWalk::skipProcess;
        if (target.starts_with("/dev/video"))
            held.insert(QString::fromUtf8(target.data(), static_cast<qsizetype>(target.size())));
        return FdWalk::next;
    });
    return held;
}

CameraSysfsInfo CameraScanner::readSysfsInfo(const QString& sysRoot, const QString& nodeName)
{
    CameraSysfsInfo info;
    const QString node = sysRoot + QStringLiteral("/class/video4linux/") + nodeName;
    info.name = attribute(node + QStringLiteral("/name"));
    bool ok = false;
    const int index = attribute(node + QStringLiteral("/index")).toInt(&ok);
    info.index = ok ? index : -1;

    // The node hangs off a USB interface; the USB device that carries the port's attributes
    // is the interface's parent.
    const QString device = QFileInfo(node + QStringLiteral("/device")).canonicalFilePath();
    if (device.isEmpty())
        return info;
    const QString usb = QFileInfo(device).path();
    const QString vendor = attribute(usb + QStringLiteral("/idVendor"));
    if (vendor.isEmpty())
        return info;
    info.onUsb = true;
    info.vendorId = vendor;
    info.productId = attribute(usb + QStringLiteral("/idProduct"));
    info.manufacturer = attribute(usb + QStringLiteral("/manufacturer"));
    info.removable = attribute(usb + QStringLiteral("/removable"));
    return info;
}

CameraKind CameraScanner::kindOf(const CameraSysfsInfo& info)
{
    if (!info.onUsb)
        return CameraKind::other;
    // Laptop cameras sit on an internal USB port that the firmware marks as fixed.
    return info.removable == QLatin1StringView("fixed") ? CameraKind::builtIn : CameraKind::externalUSB;
}

std::vector<CameraFormat> CameraScanner::readFormats(VideoDevice& device, bool multiplanar)
{
    std::vector<CameraFormat> formats;
    for (std::uint32_t pixelFormat : device.pixelFormats(multiplanar)) {
        for (const VideoFrameSize& size : device.frameSizes(pixelFormat)) {
            CameraFormat format;
            format.width = static_cast<std::int32_t>(size.width);
            format.height = static_cast<std::int32_t>(size.height);
            for (const VideoFrameInterval& interval : device.frameIntervals(pixelFormat, size)) {
                if (interval.numerator > 0)
                    format.maxFrameRates.push_back(double(interval.denominator) / interval.numerator);
            }
            formats.push_back(std::move(format));
        }
    }
    return formats;
}

std::vector<CameraDevice> CameraScanner::scan() const
{
    std::vector<CameraDevice> devices;
    for (const QString& nodeName : videoNodeNames(roots_.dev)) {
        const CameraSysfsInfo info = readSysfsInfo(roots_.sys, nodeName);
        std::optional<VideoCapability> capability;
        std::vector<CameraFormat> formats;
        if (auto device = layer_->open(QFile::encodeName(roots_.dev + u'/' + nodeName).toStdString())) {
            capability = device->queryCapability();
            if (capability && capability->canCapture())
                formats = readFormats(*device, capability->isMultiplanar());
        }
        if (capability && !capability->canCapture())
            continue; // metadata, output and radio nodes
        // A node we may not open is still shown when it is its device's first node, which
        // is where cameras put their picture stream.
        if (!capability && info.index != 0)
            continue;

        CameraDevice camera;
        camera.id = QStringLiteral("/dev/") + nodeName;
        camera.name = capability && !capability->card.empty() ? QString::fromStdString(capability->card) : info.name;
        if (camera.name.isEmpty())
            camera.name = nodeName;
        camera.manufacturer = info.manufacturer;
        camera.modelID = info.onUsb ? info.vendorId + u':' + info.productId
                                    : QString::fromStdString(capability ? capability->driver : std::string());
        camera.typeDescription = typeDescription(kindOf(info));
        camera.maxResolution = maxResolutionText(formats);
        camera.maxFrameRate = maxFrameRate(formats);
        devices.push_back(std::move(camera));
    }
    if (devices.empty())
        return devices;
    const QSet<QString> held = nodesHeldOpen(roots_.proc, static_cast<int>(::getpid()));
    for (CameraDevice& camera : devices)
        camera.isInUse = held.contains(camera.id);
    return devices;
}

} // namespace tallowmere
