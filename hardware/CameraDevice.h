#pragma once

#include <QString>

#include <cstdint>
#include <optional>
#include <vector>

namespace tallowmere {

// One video capture device as the camera page lists it.
struct CameraDevice {
    QString id;
    QString name;
    QString manufacturer;
    QString modelID;
    QString typeDescription;
    std::optional<QString> maxResolution;
    std::optional<int> maxFrameRate;
    bool isInUse = false;

    bool operator==(const CameraDevice&) const = default;
};

// One picture size a device offers, with the highest frame rate of each of its rate ranges.
struct CameraFormat {
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::vector<double> maxFrameRates;
};

enum class CameraKind { builtIn, externalUSB, continuity, deskView, other };

} // namespace tallowmere
