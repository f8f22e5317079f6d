#include "hardware/CameraScanner.h"

#include "tests/hardware/CameraFakeLayer.h"
#include "tests/support/TestSupport.h"

#include <QDir>

#include <gtest/gtest.h>

#include <fcntl.h>
#include <linux/videodev2.h>
#include <sys/ioctl.h>
#include <unistd.h>

using namespace tallowmere;

namespace {

CameraRoots fixtureRoots()
{
    const QString tree = test::fixturePath(QStringLiteral("hardware/camera_tree"));
    return CameraRoots{tree + QStringLiteral("/dev"), tree + QStringLiteral("/sys"), tree + QStringLiteral("/proc")};
}

// A laptop camera and its metadata node, a USB webcam on the multi-planar interface, and a
// loopback device without formats; a fourth camera's node refuses to be opened.
std::shared_ptr<test::FakeVideoLayer> fixtureLayer()
{
    auto layer = std::make_shared<test::FakeVideoLayer>();
    auto& laptop = layer->nodes["video0"];
    laptop.capability = test::captureCapability("Integrated Camera: Integrated C");
    laptop.formats[V4L2_PIX_FMT_MJPEG] = {{{1280, 720}, {{1, 30}}}, {{1920, 1080}, {{1, 30}, {1, 15}}}};
    laptop.formats[V4L2_PIX_FMT_YUYV] = {{{640, 480}, {{1001, 30000}}}, {{1080, 1920}, {{1, 5}}}};
    layer->nodes["video1"].capability = test::metadataCapability("Integrated Camera: Integrated C");

    auto& webcam = layer->nodes["video2"];
    webcam.capability = test::captureCapability("C920 HD Pro Webcam");
    webcam.capability->deviceCaps = V4L2_CAP_VIDEO_CAPTURE_MPLANE | V4L2_CAP_STREAMING;
    webcam.multiplanar = true;
    // A driver's stepwise range comes as its two ends; a zero interval means nothing.
    webcam.formats[V4L2_PIX_FMT_NV12] = {{{160, 120}, {{2, 119}, {0, 0}}}, {{2304, 1536}, {{1, 2}}}};

    layer->nodes["video10"].capability = test::captureCapability("Dummy video device (0x0000)", "v4l2 loopback");
    return layer;
}

CameraDevice expected(const char* id, const char* name, const char* manufacturer, const char* model,
                      const char* type, std::optional<QString> resolution, std::optional<int> rate, bool inUse)
{
    return CameraDevice{QString::fromUtf8(id), QString::fromUtf8(name), QString::fromUtf8(manufacturer),
                        QString::fromUtf8(model), QString::fromUtf8(type), std::move(resolution), rate, inUse};
}

std::string describe(const std::vector<CameraDevice>& devices)
{
    std::string text;
    for (const CameraDevice& d : devices) {
        text += (QStringList{d.id, d.name, d.manufacturer, d.modelID, d.typeDescription,
                             d.maxResolution.value_or(QStringLiteral("-")),
                             d.maxFrameRate ? QString::number(*d.maxFrameRate) : QStringLiteral("-"),
                             d.isInUse ? QStringLiteral("in use") : QStringLiteral("idle")})
                    .join(QStringLiteral(" | "))
                    .toStdString()
            + "\n";
    }
    return text;
}

} // namespace

TEST(CameraScanner, FixtureMachineListsEachCaptureNodeOnce)
{
    const auto devices = CameraScanner(fixtureLayer(), fixtureRoots()).scan();
    const std::vector<CameraDevice> want{
        expected("/dev/video0", "Integrated Camera: Integrated C", "Chicony Electronics Co.,Ltd.", "04f2:b6dd",
                 "Built-in", QStringLiteral("1920 × 1080"), 30, true),
        expected("/dev/video2", "C920 HD Pro Webcam", "Logi", "046d:085c", "External (USB)",
                 QStringLiteral("2304 × 1536"), 60, true),
        // Not openable, but the first node of its device: shown from what sysfs says.
        expected("/dev/video3", "USB 2.0 Camera", "", "1bcf:2284", "External (USB)", std::nullopt, std::nullopt,
                 false),
        expected("/dev/video10", "Dummy video device (0x0000)", "", "v4l2 loopback", "Camera", std::nullopt,
                 std::nullopt, false),
    };
    EXPECT_EQ(describe(devices), describe(want));
}

TEST(CameraScanner, UnopenableSecondNodesAndUnreadableCapabilitiesAreLeftOut)
{
    auto layer = fixtureLayer();
    layer->nodes.erase("video1");                  // index 1: not a camera's first node
    layer->nodes["video2"].capability.reset();     // opens, but answers nothing
    const auto devices = CameraScanner(layer, fixtureRoots()).scan();
    QStringList ids;
    for (const auto& d : devices)
        ids << d.id;
    EXPECT_EQ(ids.join(u' '), QStringLiteral("/dev/video0 /dev/video2 /dev/video3 /dev/video10"));
    // The silent node is the first of its device, so it is kept with sysfs's name.
    EXPECT_EQ(devices[1].name, QStringLiteral("C920 HD Pro Webcam"));
    EXPECT_FALSE(devices[1].maxResolution.has_value());
}

TEST(CameraScanner, NodeNamesAndHoldersComeFromTheirRoots)
{
    const CameraRoots roots = fixtureRoots();
    QStringList names;
    for (const QString& name : CameraScanner::videoNodeNames(roots.dev))
        names << name;
    EXPECT_EQ(names.join(u' '), QStringLiteral("video0 video1 video2 video3 video10"));

    QStringList held = CameraScanner::nodesHeldOpen(roots.proc, 1).values();
    held.sort();
    EXPECT_EQ(held.join(u' '), QStringLiteral("/dev/video0 /dev/video1 /dev/video2"));
    // The scanning process's own descriptors do not count.
    held = CameraScanner::nodesHeldOpen(roots.proc, 200).values();
    EXPECT_EQ(held.join(u' '), QStringLiteral("/dev/video2"));

    EXPECT_TRUE(CameraScanner::nodesHeldOpen(QStringLiteral("/nonexistent"), 1).isEmpty());
    EXPECT_TRUE(CameraScanner::videoNodeNames(QStringLiteral("/nonexistent")).empty());
}

TEST(CameraScanner, SysfsTellsBuiltInFromPluggedIn)
{
    const QString sys = fixtureRoots().sys;
    const CameraSysfsInfo laptop = CameraScanner::readSysfsInfo(sys, QStringLiteral("video0"));
    EXPECT_TRUE(laptop.onUsb);
    EXPECT_EQ(laptop.index, 0);
    EXPECT_EQ(CameraScanner::kindOf(laptop), CameraKind::builtIn);
    EXPECT_EQ(CameraScanner::kindOf(CameraScanner::readSysfsInfo(sys, QStringLiteral("video2"))),
              CameraKind::externalUSB);
    const CameraSysfsInfo loopback = CameraScanner::readSysfsInfo(sys, QStringLiteral("video10"));
    EXPECT_FALSE(loopback.onUsb);
    EXPECT_EQ(CameraScanner::kindOf(loopback), CameraKind::other);
    const CameraSysfsInfo missing = CameraScanner::readSysfsInfo(sys, QStringLiteral("video99"));
    EXPECT_EQ(missing.index, -1);
    EXPECT_TRUE(missing.name.isEmpty());
}

// This machine's own nodes, asked directly, against what the kernel layer lists. Machines
// without a camera give two empty lists, which is the right answer there.
TEST(CameraScanner, RealMachineListsItsCaptureNodes)
{
    QStringList captureNodes;
    QStringList unopenable;
    const QStringList names = QDir(QStringLiteral("/dev")).entryList({QStringLiteral("video*")}, QDir::System);
    for (const QString& name : names) {
        const int fd = ::open(("/dev/" + name).toLocal8Bit().constData(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
        if (fd < 0) {
            unopenable << QStringLiteral("/dev/") + name;
            continue;
        }
        v4l2_capability cap{};
        if (::ioctl(fd, VIDIOC_QUERYCAP, &cap) == 0) {
            const auto caps = (cap.capabilities & V4L2_CAP_DEVICE_CAPS) ? cap.device_caps : cap.capabilities;
            if (caps & (V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_VIDEO_CAPTURE_MPLANE))
                captureNodes << QStringLiteral("/dev/") + name;
        }
        ::close(fd);
    }
    QStringList listed;
    for (const CameraDevice& device : CameraScanner(makeV4L2DeviceLayer()).scan()) {
        // Nodes this process may not open are judged by sysfs alone; leave them aside.
        if (!unopenable.contains(device.id))
            listed << device.id;
    }
    captureNodes.sort();
    listed.sort();
    EXPECT_EQ(listed, captureNodes);
    for (const QString& node : CameraScanner::nodesHeldOpen(QStringLiteral("/proc"), -1))
        EXPECT_TRUE(node.startsWith(QStringLiteral("/dev/video"))) << node.toStdString();
}

// The kernel layer on a node that is no video device: every question fails cleanly.
TEST(CameraScanner, KernelLayerAnswersNothingForOtherNodes)
{
    const auto layer = makeV4L2DeviceLayer();
    EXPECT_EQ(layer->open("/nonexistent/video0"), nullptr);
    const auto device = layer->open("/dev/null");
    ASSERT_NE(device, nullptr);
    EXPECT_FALSE(device->queryCapability().has_value());
    EXPECT_TRUE(device->pixelFormats(false).empty());
    EXPECT_TRUE(device->frameSizes(V4L2_PIX_FMT_MJPEG).empty());
    EXPECT_TRUE(device->frameIntervals(V4L2_PIX_FMT_MJPEG, {640, 480}).empty());
}
