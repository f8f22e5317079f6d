#include "hardware/V4L2DeviceLayer.h"

#include "core/UniqueFd.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <linux/videodev2.h>
#include <sys/ioctl.h>

namespace tallowmere {

bool VideoCapability::canCapture() const
{
    return (deviceCaps & (V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_VIDEO_CAPTURE_MPLANE)) != 0;
}

bool VideoCapability::isMultiplanar() const
{
    return (deviceCaps & V4L2_CAP_VIDEO_CAPTURE) == 0 && (deviceCaps & V4L2_CAP_VIDEO_CAPTURE_MPLANE) != 0;
}

namespace {

// A driver that never says "no more" must not keep a poll going forever.
constexpr std::uint32_t maxEntries = 256;

template <class Arg>
bool query(int fd, unsigned long request, Arg& arg)
{
    int result;
    do {
        result = ::ioctl(fd, request, &arg);
    } while (result < 0 && errno == EINTR);
    return result == 0;
}

template <std::size_t N>
std::string fixedText(const __u8 (&field)[N])
{
    return std::string(reinterpret_cast<const char*>(field), strnlen(reinterpret_cast<const char*>(field), N));
}

class V4L2Device final : public VideoDevice {
public:
    explicit V4L2Device(UniqueFd fd) : fd_(std::move(fd)) {}

    std::optional<VideoCapability> queryCapability() override
    {
        v4l2_capability cap{};
        if (!query(fd_.get(), VIDIOC_QUERYCAP, cap))
            return std::nullopt;
        VideoCapability result;
        result.driver = fixedText(cap.driver);
        result.card = fixedText(cap.card);
        result.busInfo = fixedText(cap.bus_info);
        // Older drivers give only the capabilities of the whole device.
        result.deviceCaps = (cap.capabilities & V4L2_CAP_DEVICE_CAPS) ? cap.device_caps : cap.capabilities;
        return result;
    }

    std::vector<std::uint32_t> pixelFormats(bool multiplanar) override
    {
        std::vector<std::uint32_t> formats;
        for (std::uint32_t i = 0; i < maxEntries; ++i) {
            v4l2_fmtdesc desc{};
            desc.index = i;
            desc.type = multiplanar ? V4L2_BUF_TYPE_VIDEO_CAPTURE_MPLANE : V4L2_BUF_TYPE_VIDEO_CAPTURE;
            if (!query(fd_.get(), VIDIOC_ENUM_FMT, desc))
                break;
            formats.push_back(desc.pixelformat);
        }
        return formats;
    }

    std::vector<VideoFrameSize> frameSizes(std::uint32_t pixelFormat) override
    {
        std::vector<VideoFrameSize> sizes;
        for (std::uint32_t i = 0; i < maxEntries; ++i) {
            v4l2_frmsizeenum size{};
            size.index = i;
            size.pixel_format = pixelFormat;
            if (!query(fd_.get(), VIDIOC_ENUM_FRAMESIZES, size))
                break;
            if (size.type == V4L2_FRMSIZE_TYPE_DISCRETE) {
                sizes.push_back({size.discrete.width, size.discrete.height});
                continue;
            }
            sizes.push_back({size.stepwise.min_width, size.stepwise.min_height});
            sizes.push_back({size.stepwise.max_width, size.stepwise.max_height});
            break;
        }
        return sizes;
    }

    std::vector<VideoFrameInterval> frameIntervals(std::uint32_t pixelFormat, VideoFrameSize frameSize) override
    {
        std::vector<VideoFrameInterval> intervals;
        for (std::uint32_t i = 0; i < maxEntries; ++i) {
            v4l2_frmivalenum interval{};
            interval.index = i;
            interval.pixel_format = pixelFormat;
            interval.width = frameSize.width;
            interval.height = frameSize.height;
            if (!query(fd_.get(), VIDIOC_ENUM_FRAMEINTERVALS, interval))
                break;
            if (interval.type == V4L2_FRMIVAL_TYPE_DISCRETE) {
                intervals.push_back({interval.discrete.numerator, interval.discrete.denominator});
                continue;
            }
            intervals.push_back({interval.stepwise.min.numerator, interval.stepwise.min.denominator});
            intervals.push_back({interval.stepwise.max.numerator, interval.stepwise.max.denominator});
            break;
        }
        return intervals;
    }

private:
    UniqueFd fd_;
};

class V4L2DeviceLayer final : public VideoDeviceLayer {
public:
    std::unique_ptr<VideoDevice> open(const std::string& path) override
    {
        // Non-blocking: only questions are asked, and a busy driver must not stall the poll.
        UniqueFd fd(::open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC));
        if (!fd)
            return nullptr;
        return std::make_unique<V4L2Device>(std::move(fd));
    }
};

} // namespace

std::shared_ptr<VideoDeviceLayer> makeV4L2DeviceLayer()
{
    return std::make_shared<V4L2DeviceLayer>();
}

} // namespace tallowmere
