#pragma once

#include <QString>

namespace tallowmere {

enum class UpdateError {
    badResponse,
    malformedFeed,
    unzipFailed,
    appNotFound,
};

// The text the user sees for each failure.
QString updateErrorMessage(UpdateError error);

} // namespace tallowmere
