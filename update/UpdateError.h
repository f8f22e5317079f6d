#pragma once

#include <QString>

namespace tallowmere {

enum class UpdateError {
    badResponse,
    malformedFeed,
    unzipFailed,
    appNotFound,
    notVerified,      // the archive does not carry a valid signature of our key
    insecureAddress,  // plain http:// to another machine
    escapingArchive,  // an entry or link would land outside the unpacking folder
    noFeed,           // this copy was built without a feed address
};

// The text the user sees for each failure.
QString updateErrorMessage(UpdateError error);

} // namespace tallowmere
