#include "hardware/CameraMonitoringService.h"

#include "tests/hardware/CameraFakeLayer.h"
#include "tests/support/TestSupport.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include <gtest/gtest.h>

using namespace tallowmere;

namespace {
// A machine with one camera; the test decides whether process 4242 holds it open.
struct CameraServiceTest : ::testing::Test {
    QTemporaryDir root;
    std::shared_ptr<test::FakeVideoLayer> layer = std::make_shared<test::FakeVideoLayer>();
    QString link = root.path() + QStringLiteral("/proc/4242/fd/9");

    void SetUp() override
    {
        test::writeFile(root.path(), QStringLiteral("dev/video0"), {});
        QDir().mkpath(root.path() + QStringLiteral("/proc/4242/fd"));
        layer->nodes["video0"] = {test::FakeVideoLayer::capture("Studio Camera"),
                                  {{V4L2_PIX_FMT_MJPEG, {3840, 2160}, {{1, 30}}}}};
    }
    std::unique_ptr<CameraMonitoringService> makeService()
    {
        const QString r = root.path();
        return std::make_unique<CameraMonitoringService>(layer, CameraRoots{r + "/dev", r + "/sys", r + "/proc"});
    }
    static bool streaming(const CameraMonitoringService& s) { return s.devices().size() == 1 && s.devices()[0].isInUse; }
};
} // namespace

TEST_F(CameraServiceTest, PollsOnlyWhileThePageIsShown)
{
    const auto service = makeService();
    QSignalSpy pageSpy(service.get(), &CameraMonitoringService::pageActiveChanged);
    service->setPageActive(false);
    EXPECT_EQ(service->statusText(), QStringLiteral("No cameras detected"));

    service->setPageActive(true);
    ASSERT_TRUE(test::waitUntil([&] { return service->devices().size() == 1; }));
    EXPECT_EQ(service->statusText(), QStringLiteral("No camera in use"));
    ASSERT_TRUE(QFile::link(QStringLiteral("/dev/video0"), link)); // another program starts streaming
    ASSERT_TRUE(test::waitUntil([&] { return streaming(*service); }, 6000));
    EXPECT_EQ(service->statusText(), QStringLiteral("1 camera streaming"));

    service->setPageActive(false);
    ASSERT_TRUE(QFile::remove(link));
    const int opensWhenHidden = layer->opens;
    QTest::qWait(2500);
    EXPECT_EQ(layer->opens, opensWhenHidden);
    EXPECT_TRUE(streaming(*service)) << "the last list stays while hidden";

    service->setPageActive(true);
    ASSERT_TRUE(test::waitUntil([&] { return !streaming(*service); }));
    EXPECT_EQ(pageSpy.count(), 3);
}

TEST_F(CameraServiceTest, PassesEndingAfterThePageWentAwayAreDropped)
{
    auto service = makeService();
    QSignalSpy devicesSpy(service.get(), &CameraMonitoringService::devicesChanged);
    service->setPageActive(true);
    service->setPageActive(false);
    QTest::qWait(300);
    EXPECT_EQ(devicesSpy.count(), 0);
    service->setPageActive(true);
    service.reset(); // destroyed with a pass in flight
    QTest::qWait(300);
}
