#include "tests/hardware/CameraFakeLayer.h"

#include <linux/videodev2.h>

namespace tallowmere::test {

namespace {

class FakeDevice final : public VideoDevice {
public:
    explicit FakeDevice(const FakeVideoLayer::Node& node) : node_(node) {}

    std::optional<VideoCapability> queryCapability() override { return node_.capability; }

    std::vector<std::uint32_t> pixelFormats(bool multiplanar) override
    {
        std::vector<std::uint32_t> result;
        if (multiplanar != node_.multiplanar)
            return result; // the wrong queue type has no formats
        for (const auto& [format, sizes] : node_.formats)
            result.push_back(format);
        return result;
    }

    std::vector<VideoFrameSize> frameSizes(std::uint32_t pixelFormat) override
    {
        std::vector<VideoFrameSize> result;
        if (const auto it = node_.formats.find(pixelFormat); it != node_.formats.end()) {
            for (const auto& size : it->second)
                result.push_back(size.size);
        }
        return result;
    }

    std::vector<VideoFrameInterval> frameIntervals(std::uint32_t pixelFormat, VideoFrameSize size) override
    {
        if (const auto it = node_.formats.find(pixelFormat); it != node_.formats.end()) {
            for (const auto& entry : it->second) {
                if (entry.size.width == size.width && entry.size.height == size.height)
                    return entry.intervals;
            }
        }
        return {};
    }

private:
    const FakeVideoLayer::Node& node_;
};

} // namespace

std::unique_ptr<VideoDevice> FakeVideoLayer::open(const std::string& path)
{
    ++opens;
    const auto it = nodes.find(path.substr(path.find_last_of('/') + 1));
    if (it == nodes.end())
        return nullptr;
    return std::make_unique<FakeDevice>(it->second);
}

VideoCapability captureCapability(const char* card, const char* driver)
{
    return VideoCapability{driver, card, "usb-0000:00:14.0-5", V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_STREAMING};
}

VideoCapability metadataCapability(const char* card)
{
    return VideoCapability{"uvcvideo", card, "usb-0000:00:14.0-5", V4L2_CAP_META_CAPTURE | V4L2_CAP_STREAMING};
}

} // namespace tallowmere::test
