#include "update/UpdateError.h"

namespace tallowmere {

QString updateErrorMessage(UpdateError error)
{
    switch (error) {
    case UpdateError::badResponse:
        return QStringLiteral("Couldn't reach the update server.");
    case UpdateError::malformedFeed:
        return QStringLiteral("The update feed was malformed.");
    case UpdateError::unzipFailed:
        return QStringLiteral("Couldn't unpack the downloaded update.");
    case UpdateError::appNotFound:
        return QStringLiteral("The downloaded update didn't contain an app.");
    }
    return {};
}

} // namespace tallowmere
