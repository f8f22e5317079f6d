#include "hardware/CameraMonitoringService.h"

#include "tests/hardware/CameraFakeLayer.h"
#include "tests/support/ManualScheduler.h"
#include "tests/support/TestSupport.h"

#include <QDir>
#include <QFile>
#include <QSignalSpy>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace tallowmere;
using namespace std::chrono_literals;

namespace {
// A machine with one camera; the test decides whether process 4242 holds it open.
struct CameraServiceTest : ::testing::Test {
    QTemporaryDir root;
    std::shared_ptr<test::FakeVideoLayer> layer = std::make_shared<test::FakeVideoLayer>();
    QString link = root.path() + QStringLiteral("/proc/4242/fd/9");
    std::shared_ptr<test::ManualScheduler> scheduler = std::make_shared<test::ManualScheduler>();
    std::unique_ptr<CameraMonitoringService> service;

    void SetUp() override
    {
        test::writeFile(root.path(), QStringLiteral("dev/video0"), {});
        QDir().mkpath(root.path() + QStringLiteral("/proc/4242/fd"));
        layer->nodes["video0"] = {test::FakeVideoLayer::capture("Studio Camera"),
                                  {{V4L2_PIX_FMT_MJPEG, {3840, 2160}, {{1, 30}}}}};
        const QString r = root.path();
        service = std::make_unique<CameraMonitoringService>(layer, CameraRoots{r + "/dev", r + "/sys", r + "/proc"},
                                                            scheduler);
    }
    bool streaming() const { return service->devices().size() == 1 && service->devices()[0].isInUse; }
};
} // namespace

TEST_F(CameraServiceTest, PollsOnlyWhileThePageIsShown)
{
    EXPECT_EQ(service->statusText(), QStringLiteral("No cameras detected"));
    service->setPageActive(true);
    test::finishDetachedWork();
    ASSERT_EQ(service->devices().size(), 1u);
    EXPECT_EQ(service->statusText(), QStringLiteral("No camera in use"));
    ASSERT_TRUE(QFile::link(QStringLiteral("/dev/video0"), link)); // another program starts streaming
    scheduler->advance(1999ms);
    test::finishDetachedWork();
    EXPECT_FALSE(streaming());
    scheduler->advance(1ms);
    test::finishDetachedWork();
    EXPECT_TRUE(streaming());
    EXPECT_EQ(service->statusText(), QStringLiteral("1 camera streaming"));

    service->setPageActive(false);
    ASSERT_TRUE(QFile::remove(link));
    const int opensWhenHidden = layer->opens;
    scheduler->advance(10s);
    test::finishDetachedWork();
    EXPECT_EQ(layer->opens, opensWhenHidden);
    EXPECT_TRUE(streaming()) << "the last list stays while hidden";
    service->setPageActive(true);
    test::finishDetachedWork();
    EXPECT_FALSE(streaming());
}

TEST_F(CameraServiceTest, PassesEndingAfterThePageWentAwayAreDropped)
{
    QSignalSpy devicesSpy(service.get(), &CameraMonitoringService::devicesChanged);
    service->setPageActive(true);
    service->setPageActive(false);
    test::finishDetachedWork();
    EXPECT_EQ(devicesSpy.count(), 0);
    service->setPageActive(true);
    service.reset(); // destroyed with a pass in flight
    test::finishDetachedWork();
}
