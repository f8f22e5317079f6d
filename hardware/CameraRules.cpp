#include "hardware/CameraRules.h"

#include <algorithm>
#include <cmath>

namespace tallowmere {

QString typeDescription(CameraKind kind)
{
    switch (kind) {
    case CameraKind::builtIn: return QStringLiteral("Built-in");
    case CameraKind::externalUSB: return QStringLiteral("External (USB)");
    case CameraKind::continuity: return QStringLiteral("Continuity Camera");
    case CameraKind::deskView: return QStringLiteral("Desk View");
    case CameraKind::other: break;
    }
    return QStringLiteral("Camera");
}

std::optional<QString> maxResolutionText(const std::vector<CameraFormat>& formats)
{
    const CameraFormat* best = nullptr;
    std::int64_t bestArea = -1;
    for (const CameraFormat& format : formats) {
        const std::int64_t area = std::int64_t(format.width) * format.height;
        // Only a strictly larger picture replaces the first one found, so a portrait format
        // of the same area does not displace its landscape twin.
        if (area >= 0 && area > bestArea) {
            best = &format;
            bestArea = area;
        }
    }
    if (!best)
        return std::nullopt;
    return QString::number(best->width) + QStringLiteral(" × ") + QString::number(best->height);
}

std::optional<int> maxFrameRate(const std::vector<CameraFormat>& formats)
{
    double best = 0.0;
    for (const CameraFormat& format : formats) {
        for (double rate : format.maxFrameRates) {
            if (std::isfinite(rate))
                best = std::max(best, rate);
        }
    }
    if (!(best > 0.0))
        return std::nullopt;
    // std::round rounds halves away from zero; the bound keeps the conversion defined.
    return static_cast<int>(std::round(std::min(best, 1e9)));
}

QString cameraStatusText(const std::vector<CameraDevice>& devices)
{
    const auto inUse = std::count_if(devices.begin(), devices.end(), [](const CameraDevice& d) { return d.isInUse; });
    if (inUse >= 1)
        return QString::number(inUse) + QStringLiteral(" camera") + (inUse == 1 ? QString() : QStringLiteral("s"))
            + QStringLiteral(" streaming");
    return devices.empty() ? QStringLiteral("No cameras detected") : QStringLiteral("No camera in use");
}

} // namespace tallowmere
