#pragma once

#include "hardware/CameraDevice.h"

#include <QString>

#include <optional>
#include <vector>

namespace tallowmere {

QString typeDescription(CameraKind kind);

// The first format with the largest picture, as "1920 × 1080"; nothing without formats.
std::optional<QString> maxResolutionText(const std::vector<CameraFormat>& formats);

// The highest rate of any format, rounded half away from zero; nothing unless above 0.
std::optional<int> maxFrameRate(const std::vector<CameraFormat>& formats);

// "2 cameras streaming", "No camera in use" or "No cameras detected".
QString cameraStatusText(const std::vector<CameraDevice>& devices);

} // namespace tallowmere
