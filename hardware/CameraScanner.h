#pragma once

#include "hardware/CameraDevice.h"
#include "hardware/V4L2DeviceLayer.h"

#include <QSet>
#include <QString>

#include <memory>
#include <vector>

namespace tallowmere {

// Where the camera list reads from; tests point these at fixture trees.
struct CameraRoots {
    QString dev = QStringLiteral("/dev");
    QString sys = QStringLiteral("/sys");
    QString proc = QStringLiteral("/proc");
};

// What sysfs tells about the hardware behind one video node.
struct CameraSysfsInfo {
    QString name;          // the node's own name attribute
    int index = -1;        // the node's number among the nodes of its device, -1 unknown
    bool onUsb = false;
    QString removable;     // the USB port's "removable" attribute: "fixed", "removable", "unknown"
    QString manufacturer;
    QString vendorId;
    QString productId;
};

// One pass over the machine's video capture nodes: what they are, the best picture size and
// rate they offer, and whether another process holds them open. Safe to run off the main
// thread; it keeps no state between passes.
class CameraScanner {
public:
    explicit CameraScanner(std::shared_ptr<VideoDeviceLayer> layer, CameraRoots roots = {});

    std::vector<CameraDevice> scan() const;

    // "video0", "video2", …, in number order.
    static std::vector<QString> videoNodeNames(const QString& devRoot);
    // Every "/dev/video…" that a process other than `ownPid` has open.
    static QSet<QString> nodesHeldOpen(const QString& procRoot, int ownPid);
    static CameraSysfsInfo readSysfsInfo(const QString& sysRoot, const QString& nodeName);
    static CameraKind kindOf(const CameraSysfsInfo& info);
    // Each pixel format's sizes, each with the highest rate of its interval list.
    static std::vector<CameraFormat> readFormats(VideoDevice& device, bool multiplanar);

private:
    std::shared_ptr<VideoDeviceLayer> layer_;
    CameraRoots roots_;
};

} // namespace tallowmere
