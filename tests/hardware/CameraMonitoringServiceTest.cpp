#include "hardware/CameraMonitoringService.h"

#include "tests/hardware/CameraFakeLayer.h"
#include "tests/support/TestSupport.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

#include <linux/videodev2.h>

using namespace tallowmere;

namespace {

// A machine with one camera whose holder the test changes between polls.
struct CameraServiceTest : ::testing::Test {
    QTemporaryDir root;
    std::shared_ptr<test::FakeVideoLayer> layer = std::make_shared<test::FakeVideoLayer>();

    void SetUp() override
    {
        test::writeFile(root.path(), QStringLiteral("dev/video0"), {});
        test::writeFile(root.path(), QStringLiteral("sys/class/video4linux/video0/index"), "0\n");
        QDir().mkpath(root.path() + QStringLiteral("/proc/4242/fd"));
        auto& node = layer->nodes["video0"];
        node.capability = test::captureCapability("Studio Camera");
        node.formats[V4L2_PIX_FMT_MJPEG] = {{{3840, 2160}, {{1, 30}}}};
    }
    CameraRoots roots() const
    {
        return {root.path() + QStringLiteral("/dev"), root.path() + QStringLiteral("/sys"),
                root.path() + QStringLiteral("/proc")};
    }
    void setStreaming(bool streaming)
    {
        const QString link = root.path() + QStringLiteral("/proc/4242/fd/9");
        if (streaming)
            ASSERT_TRUE(QFile::link(QStringLiteral("/dev/video0"), link));
        else
            ASSERT_TRUE(QFile::remove(link));
    }
    static bool streaming(const CameraMonitoringService& service)
    {
        return service.devices().size() == 1 && service.devices()[0].isInUse;
    }
};

} // namespace

TEST_F(CameraServiceTest, PollsOnlyWhileThePageIsShown)
{
    CameraMonitoringService service(layer, roots());
    QSignalSpy pageSpy(&service, &CameraMonitoringService::pageActiveChanged);
    EXPECT_TRUE(service.devices().empty());
    EXPECT_EQ(service.statusText(), QStringLiteral("No cameras detected"));
    service.setPageActive(false);
    EXPECT_EQ(pageSpy.count(), 0);
    EXPECT_EQ(layer->opens, 0);

    service.setPageActive(true);
    ASSERT_TRUE(test::waitUntil([&] { return service.devices().size() == 1; }));
    EXPECT_EQ(service.devices()[0].maxResolution, QStringLiteral("3840 × 2160"));
    EXPECT_EQ(service.statusText(), QStringLiteral("No camera in use"));

    // Another program starts streaming: the next poll sees it.
    setStreaming(true);
    ASSERT_TRUE(test::waitUntil([&] { return streaming(service); }, 6000));
    EXPECT_EQ(service.statusText(), QStringLiteral("1 camera streaming"));

    service.setPageActive(false);
    EXPECT_FALSE(service.isPolling());
    setStreaming(false);
    const int opensWhenHidden = layer->opens;
    QTest::qWait(2500);
    EXPECT_EQ(layer->opens, opensWhenHidden);
    EXPECT_TRUE(streaming(service)) << "the last list stays while hidden";

    service.setPageActive(true);
    EXPECT_TRUE(service.isPolling());
    ASSERT_TRUE(test::waitUntil([&] { return !streaming(service); }));
    EXPECT_EQ(pageSpy.count(), 3);
}

TEST_F(CameraServiceTest, APassFinishingAfterThePageWentAwayIsDropped)
{
    CameraMonitoringService service(layer, roots());
    QSignalSpy devicesSpy(&service, &CameraMonitoringService::devicesChanged);
    service.setPageActive(true);
    service.setPageActive(false); // before the first pass could report
    QTest::qWait(300);
    EXPECT_EQ(devicesSpy.count(), 0);
    EXPECT_TRUE(service.devices().empty());
}

TEST_F(CameraServiceTest, DestroyedWhilePassRunsIsSafe)
{
    auto service = std::make_unique<CameraMonitoringService>(layer, roots());
    service->setPageActive(true);
    service.reset();
    QTest::qWait(200);
    SUCCEED();
}
