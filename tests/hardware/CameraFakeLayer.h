#pragma once

#include "hardware/V4L2DeviceLayer.h"

#include <atomic>
#include <map>
#include <string>

namespace tallowmere::test {

// Video nodes that answer from tables, as a driver would. Node names ("video0") select the
// entry whatever folder the node was opened from; an unknown name cannot be opened.
class FakeVideoLayer final : public VideoDeviceLayer {
public:
    struct Size {
        VideoFrameSize size;
        std::vector<VideoFrameInterval> intervals;
    };
    struct Node {
        std::optional<VideoCapability> capability;
        std::map<std::uint32_t, std::vector<Size>> formats; // by pixel format
        bool multiplanar = false;
    };

    std::map<std::string, Node> nodes;
    std::atomic<int> opens{0};

    std::unique_ptr<VideoDevice> open(const std::string& path) override;
};

VideoCapability captureCapability(const char* card, const char* driver = "uvcvideo");
VideoCapability metadataCapability(const char* card);

} // namespace tallowmere::test
