#include "hardware/CameraScanner.h"

#include "tests/hardware/CameraFakeLayer.h"
#include "tests/support/TestSupport.h"


#include <gtest/gtest.h>


using namespace tallowmere;
using Layer = test::FakeVideoLayer;

namespace {

const QString tree = test::fixturePath(QStringLiteral("hardware/camera_tree"));
const CameraRoots fixtureRoots{tree + QStringLiteral("/dev"), tree + QStringLiteral("/sys"), tree + QStringLiteral("/proc")};

// A laptop camera and its metadata node, a USB webcam on the multi-planar interface, and a
// loopback device without formats; video3's node refuses to be opened.
std::shared_ptr<Layer> fixtureLayer()
{
    auto layer = std::make_shared<Layer>();
    layer->nodes["video0"] = {Layer::capture("Integrated Camera: Integrated C"),
                              {{V4L2_PIX_FMT_MJPEG, {1280, 720}, {{1, 30}}},
                               {V4L2_PIX_FMT_MJPEG, {1920, 1080}, {{1, 30}, {1, 15}}},
                               {V4L2_PIX_FMT_YUYV, {1080, 1920}, {{1001, 30000}}}}};
    layer->nodes["video1"] = {Layer::capture("Integrated Camera: Integrated C", V4L2_CAP_META_CAPTURE), {}};
    // A stepwise range comes as its two ends; a zero interval means nothing.
    layer->nodes["video2"] = {Layer::capture("C920 HD Pro Webcam", V4L2_CAP_VIDEO_CAPTURE_MPLANE),
                              {{V4L2_PIX_FMT_NV12, {160, 120}, {{2, 119}, {0, 0}}},
                               {V4L2_PIX_FMT_NV12, {2304, 1536}, {{1, 2}}}}};
    layer->nodes["video10"] = {Layer::capture("Dummy video device (0x0000)"), {}};
    layer->nodes["video10"].capability->driver = "v4l2 loopback";
    return layer;
}

std::string describe(const std::vector<CameraDevice>& devices)
{
    std::string text;
    for (const CameraDevice& d : devices) {
        const QString rate = d.maxFrameRate ? QString::number(*d.maxFrameRate) : QStringLiteral("-");
        text += QStringList{d.id, d.name, d.manufacturer, d.modelID, d.typeDescription,
                            d.maxResolution.value_or(QStringLiteral("-")), rate, d.isInUse ? u"in use"_qs : u"idle"_qs}
                    .join(u'|').toStdString() + "\n";
    }
    return text;
}

} // namespace

TEST(CameraScanner, FixtureMachineListsEachCaptureNodeOnce)
{
    EXPECT_EQ(describe(CameraScanner(fixtureLayer(), fixtureRoots).scan()),
              "/dev/video0|Integrated Camera: Integrated C|Chicony Electronics Co.,Ltd.|04f2:b6dd|Built-in|1920 × 1080|30|in use\n"
              "/dev/video2|C920 HD Pro Webcam|Logi|046d:085c|External (USB)|2304 × 1536|60|in use\n"
              "/dev/video3|USB 2.0 Camera||1bcf:2284|External (USB)|-|-|idle\n"
              "/dev/video10|Dummy video device (0x0000)||v4l2 loopback|Camera|-|-|idle\n");

    // A node that cannot be opened or answers nothing shows only when it is the first of its
    // device, named from sysfs.
    auto layer = fixtureLayer();
    layer->nodes.erase("video1");
    layer->nodes["video0"].capability.reset();
    const std::string listed = describe(CameraScanner(layer, fixtureRoots).scan());
    EXPECT_EQ(listed.substr(0, listed.find("/dev/video2")),
              "/dev/video0|Integrated Camera: Integrated C|Chicony Electronics Co.,Ltd.|04f2:b6dd|Built-in|-|-|in use\n");
}

TEST(CameraScanner, NodeNamesAndHoldersComeFromTheirRoots)
{
    const auto names = CameraScanner::videoNodeNames(fixtureRoots.dev);
    EXPECT_EQ(QStringList(names.begin(), names.end()).join(u' '), QStringLiteral("video0 video1 video2 video3 video10"));
    QStringList held = CameraScanner::nodesHeldOpen(fixtureRoots.proc, 1).values();
    held.sort();
    EXPECT_EQ(held.join(u' '), QStringLiteral("/dev/video0 /dev/video1 /dev/video2"));
    // The scanning process's own descriptors do not count.
    EXPECT_EQ(CameraScanner::nodesHeldOpen(fixtureRoots.proc, 200).values(), QStringList{u"/dev/video2"_qs});
    EXPECT_TRUE(CameraScanner::nodesHeldOpen(QStringLiteral("/nonexistent"), 1).isEmpty());
}

// The real kernel layer on a node that is no video device: every question fails cleanly.
TEST(CameraScanner, RealLayerOnANodeThatIsNoCamera)
{
    const auto device = makeV4L2DeviceLayer()->open("/dev/null");
    ASSERT_NE(device, nullptr);
    EXPECT_FALSE(device->queryCapability().has_value());
    EXPECT_TRUE(device->pixelFormats(false).empty());
    EXPECT_TRUE(device->frameSizes(V4L2_PIX_FMT_MJPEG).empty());
    EXPECT_TRUE(device->frameIntervals(V4L2_PIX_FMT_MJPEG, {640, 480}).empty());
    EXPECT_EQ(makeV4L2DeviceLayer()->open("/nonexistent/video0"), nullptr);
}
