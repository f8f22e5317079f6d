#include "hardware/CameraRules.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace tallowmere;

namespace {
CameraFormat format(std::int32_t width, std::int32_t height, std::vector<double> rates = {})
{
    return CameraFormat{width, height, std::move(rates)};
}

CameraDevice camera(bool inUse)
{
    CameraDevice device;
    device.id = QStringLiteral("/dev/video0");
    device.isInUse = inUse;
    return device;
}
} // namespace

TEST(CameraRules, LargestPictureIsTheFirstOfItsArea)
{
    EXPECT_EQ(maxResolutionText({format(1280, 720), format(1920, 1080), format(1080, 1920)}),
              QStringLiteral("1920 × 1080"));
    EXPECT_EQ(maxResolutionText({format(640, 480), format(320, 240)}), QStringLiteral("640 × 480"));
    EXPECT_EQ(maxResolutionText({format(-1, 720), format(640, 480)}), QStringLiteral("640 × 480"));
    EXPECT_EQ(maxResolutionText({format(0, 0)}), QStringLiteral("0 × 0"));
    // Products beyond 32 bits must not wrap around.
    EXPECT_EQ(maxResolutionText({format(70000, 70000), format(1920, 1080)}), QStringLiteral("70000 × 70000"));
    EXPECT_FALSE(maxResolutionText({}).has_value());
    EXPECT_FALSE(maxResolutionText({format(-5, 10)}).has_value());
}

TEST(CameraRules, HighestRateIsRoundedHalfAwayFromZero)
{
    EXPECT_EQ(maxFrameRate({format(1, 1, {30.0, 29.97})}), 30);
    EXPECT_EQ(maxFrameRate({format(1, 1, {59.5})}), 60);
    EXPECT_EQ(maxFrameRate({format(1, 1, {15.0}), format(2, 2, {29.4, 7.5})}), 29);
    EXPECT_EQ(maxFrameRate({format(1, 1, {0.4})}), 0);
    EXPECT_EQ(maxFrameRate({format(1, 1, {std::nan(""), 24.0})}), 24);
    EXPECT_FALSE(maxFrameRate({format(1, 1, {0.0, -30.0})}).has_value());
    EXPECT_FALSE(maxFrameRate({format(1, 1)}).has_value());
    EXPECT_FALSE(maxFrameRate({}).has_value());
}

TEST(CameraRules, StatusCountsStreamingCameras)
{
    EXPECT_EQ(cameraStatusText({}), QStringLiteral("No cameras detected"));
    EXPECT_EQ(cameraStatusText({camera(false), camera(false)}), QStringLiteral("No camera in use"));
    EXPECT_EQ(cameraStatusText({camera(false), camera(true)}), QStringLiteral("1 camera streaming"));
    EXPECT_EQ(cameraStatusText({camera(true), camera(true), camera(false)}), QStringLiteral("2 cameras streaming"));
}

TEST(CameraRules, KindsHaveTheirDescriptions)
{
    EXPECT_EQ(typeDescription(CameraKind::builtIn), QStringLiteral("Built-in"));
    EXPECT_EQ(typeDescription(CameraKind::externalUSB), QStringLiteral("External (USB)"));
    EXPECT_EQ(typeDescription(CameraKind::continuity), QStringLiteral("Continuity Camera"));
    EXPECT_EQ(typeDescription(CameraKind::deskView), QStringLiteral("Desk View"));
    EXPECT_EQ(typeDescription(CameraKind::other), QStringLiteral("Camera"));
}
