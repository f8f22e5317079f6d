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
    case UpdateError::notVerified:
        return QStringLiteral("The downloaded update could not be verified.");
    case UpdateError::insecureAddress:
        return QStringLiteral("The update server's address is not secure. Updates are fetched over HTTPS only.");
    case UpdateError::escapingArchive:
        return QStringLiteral("The downloaded update tried to place files outside its folder.");
    case UpdateError::noFeed:
        return QStringLiteral("This copy of Tallowmere was built without an update feed.");
    }
    return {};
}

} // namespace tallowmere
