#include "hardware/CameraMonitoringService.h"
#include "tests/hardware/CameraFakeLayer.h"
#include "tests/support/TestSupport.h"
#include "tests/ui/WindowTestKit.h"
#include "ui/components/InfoRow.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace tallowmere {
namespace {

// The camera page beside another page in a window, over a machine with two cameras that the
// test lets other processes open.
struct CameraPage : ::testing::Test, test::LivePageKit {
    QTemporaryDir root;
    std::shared_ptr<test::FakeVideoLayer> layer = std::make_shared<test::FakeVideoLayer>();
    CameraMonitoringService service{layer, CameraRoots{root.filePath("dev"), root.filePath("sys"), root.filePath("proc")},
                                    scheduler};

    void SetUp() override
    {
        for (const char* node : {"video0", "video2"}) {
            test::writeFile(root.path(), QStringLiteral("dev/") + node, {});
            layer->nodes[node] = {test::FakeVideoLayer::capture(node), {{V4L2_PIX_FMT_MJPEG, {1280, 720}, {{1, 30}}}}};
        }
        WindowServices services = kit.services();
        services.camera = &service;
        build(SpecCategory::camera, services);
    }
    // Another process opens the node; the next poll sees it.
    void openElsewhere(const char* node, int pid)
    {
        const QString fds = root.filePath(QStringLiteral("proc/%1/fd").arg(pid));
        ASSERT_TRUE(QDir().mkpath(fds) && QFile::link(QStringLiteral("/dev/") + node, fds + QStringLiteral("/5")));
        advance(std::chrono::seconds(2));
    }
    bool emptyShown() const { return page->findChild<QWidget*>("emptyState")->isVisibleTo(page); }
};

TEST_F(CameraPage, PollsOnlyWhileShownAndTellsHowManyCamerasStream)
{
    EXPECT_FALSE(service.pageActive()) << "the page is behind another";
    EXPECT_EQ(text("cameraState"), "Idle");
    EXPECT_EQ(text("cameraStatus"), "No cameras detected");
    EXPECT_TRUE(emptyShown());

    stack->setCurrentWidget(page);
    EXPECT_TRUE(service.pageActive());
    test::finishDetachedWork();
    EXPECT_EQ(text("cameraStatus"), "No camera in use");
    EXPECT_FALSE(emptyShown());
    const auto* camera = page->findChild<QWidget*>("camera:video0");
    ASSERT_NE(camera, nullptr);
    EXPECT_EQ(camera->findChild<InfoRow*>("row:Max Resolution")->shownValue(), "1280 × 720");
    EXPECT_EQ(camera->findChild<InfoRow*>("row:Max Frame Rate")->shownValue(), "30 fps");

    openElsewhere("video0", 4242);
    EXPECT_EQ(text("cameraState"), "In Use");
    EXPECT_EQ(text("cameraStatus"), "1 camera streaming");
    openElsewhere("video2", 4343);
    EXPECT_EQ(text("cameraStatus"), "2 cameras streaming");

    stack->setCurrentWidget(other);
    EXPECT_FALSE(service.pageActive());
    stack->setCurrentWidget(page);
    window.close();
    EXPECT_FALSE(service.pageActive()) << "a closed window samples nothing";
    test::finishDetachedWork();  // the pass begun by showing the page again still ends
    const int opens = layer->opens;
    scheduler->advance(std::chrono::minutes(1));
    test::finishDetachedWork();
    EXPECT_EQ(layer->opens, opens);
}

} // namespace
} // namespace tallowmere
