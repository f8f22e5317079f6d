#pragma once

#include "hardware/V4L2DeviceLayer.h"

#include <linux/videodev2.h>

#include <atomic>
#include <map>

namespace tallowmere::test {

// Video nodes answering from tables, as a driver would; looked up by node name ("video0")
// whatever folder they are opened from. Unknown names cannot be opened.
class FakeVideoLayer final : public VideoDeviceLayer {
public:
    struct Format {
        std::uint32_t pixelFormat;
        VideoFrameSize size;
        std::vector<VideoFrameInterval> intervals;
    };
    struct Node {
        std::optional<VideoCapability> capability;
        std::vector<Format> formats;
    };
    std::map<std::string, Node> nodes;
    std::atomic<int> opens{0};

    static VideoCapability capture(const char* card, std::uint32_t caps = V4L2_CAP_VIDEO_CAPTURE)
    {
        return VideoCapability{"uvcvideo", card, "usb-0000:00:14.0-5", caps | V4L2_CAP_STREAMING};
    }

    std::unique_ptr<VideoDevice> open(const std::string& path) override
    {
        ++opens;
        const auto it = nodes.find(path.substr(path.find_last_of('/') + 1));
        return it == nodes.end() ? nullptr : std::make_unique<Device>(it->second);
    }

private:
    struct Device final : VideoDevice {
        explicit Device(const Node& node) : node(node) {}
        std::optional<VideoCapability> queryCapability() override { return node.capability; }
        std::vector<std::uint32_t> pixelFormats(bool multiplanar) override
        {
            std::vector<std::uint32_t> result; // a queue of the wrong type has no formats
            for (const Format& f : node.formats) {
                if (multiplanar == node.capability->isMultiplanar() && (result.empty() || result.back() != f.pixelFormat))
                    result.push_back(f.pixelFormat);
            }
            return result;
        }
        std::vector<VideoFrameSize> frameSizes(std::uint32_t pixelFormat) override
        {
            std::vector<VideoFrameSize> result;
            for (const Format& f : node.formats) {
                if (f.pixelFormat == pixelFormat)
                    result.push_back(f.size);
            }
            return result;
        }
        std::vector<VideoFrameInterval> frameIntervals(std::uint32_t pixelFormat, VideoFrameSize size) override
        {
            for (const Format& f : node.formats) {
                if (f.pixelFormat == pixelFormat && f.size.width == size.width && f.size.height == size.height)
                    return f.intervals;
            }
            return {};
        }
        const Node& node;
    };
};

} // namespace tallowmere::test
