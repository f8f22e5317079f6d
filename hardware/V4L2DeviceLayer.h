#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tallowmere {

// What a video node says about itself.
struct VideoCapability {
    std::string driver;
    std::string card;
    std::string busInfo;
    std::uint32_t deviceCaps = 0; // the node's own capabilities (V4L2_CAP_*)

    bool canCapture() const;
    bool isMultiplanar() const;
};

struct VideoFrameSize {
    std::uint32_t width = 0;
    std::uint32_t height = 0;
};

// A frame interval of numerator/denominator seconds.
struct VideoFrameInterval {
    std::uint32_t numerator = 0;
    std::uint32_t denominator = 0;
};

// One open video node. A range of sizes or intervals is reported as its two ends.
class VideoDevice {
public:
    virtual ~VideoDevice() = default;
    virtual std::optional<VideoCapability> queryCapability() = 0;
    virtual std::vector<std::uint32_t> pixelFormats(bool multiplanar) = 0;
    virtual std::vector<VideoFrameSize> frameSizes(std::uint32_t pixelFormat) = 0;
    virtual std::vector<VideoFrameInterval> frameIntervals(std::uint32_t pixelFormat, VideoFrameSize size) = 0;
};

// Opens video nodes. The camera list asks through this, so tests can hand in devices of
// their own. Implementations must allow use from any one thread at a time.
class VideoDeviceLayer {
public:
    virtual ~VideoDeviceLayer() = default;
    // Null when the node cannot be opened.
    virtual std::unique_ptr<VideoDevice> open(const std::string& path) = 0;
};

// The kernel's video interface, through ioctl on the device nodes.
std::shared_ptr<VideoDeviceLayer> makeV4L2DeviceLayer();

} // namespace tallowmere
