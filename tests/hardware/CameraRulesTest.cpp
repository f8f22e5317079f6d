#include "hardware/CameraRules.h"

#include <gtest/gtest.h>

#include <cmath>

using namespace tallowmere;

TEST(CameraRules, LargestPictureIsTheFirstOfItsArea)
{
    using F = CameraFormat;
    EXPECT_EQ(maxResolutionText({F{1280, 720, {}}, F{1920, 1080, {}}, F{1080, 1920, {}}}), QStringLiteral("1920 × 1080"));
    EXPECT_EQ(maxResolutionText({F{-1, 720, {}}, F{640, 480, {}}, F{320, 240, {}}}), QStringLiteral("640 × 480"));
    EXPECT_EQ(maxResolutionText({F{70000, 70000, {}}, F{1920, 1080, {}}}), QStringLiteral("70000 × 70000"));
    EXPECT_EQ(maxResolutionText({F{0, 0, {}}}), QStringLiteral("0 × 0"));
    EXPECT_FALSE(maxResolutionText({F{-5, 10, {}}}).has_value());
    EXPECT_FALSE(maxResolutionText({}).has_value());
}

TEST(CameraRules, HighestRateIsRoundedHalfAwayFromZero)
{
    const auto rate = [](std::vector<double> rates) { return maxFrameRate({CameraFormat{1, 1, std::move(rates)}}); };
    EXPECT_EQ(rate({30.0, 29.97}), 30);
    EXPECT_EQ(rate({59.5}), 60);
    EXPECT_EQ(rate({std::nan(""), 24.0}), 24);
    EXPECT_FALSE(rate({0.0, -30.0}).has_value());
    EXPECT_FALSE(rate({}).has_value());
}

TEST(CameraRules, StatusCountsStreamingCameras)
{
    const auto devices = [](std::vector<bool> inUse) {
        std::vector<CameraDevice> list(inUse.size());
        for (std::size_t i = 0; i < inUse.size(); ++i)
            list[i].isInUse = inUse[i];
        return cameraStatusText(list);
    };
    EXPECT_EQ(devices({}), QStringLiteral("No cameras detected"));
    EXPECT_EQ(devices({false, false}), QStringLiteral("No camera in use"));
    EXPECT_EQ(devices({false, true}), QStringLiteral("1 camera streaming"));
    EXPECT_EQ(devices({true, true, false}), QStringLiteral("2 cameras streaming"));
}
