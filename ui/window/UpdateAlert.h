#pragma once

#include "update/UpdateState.h"

#include <optional>

namespace tallowmere {

// Decides when the "Update Available" alert appears: once each time the update service
// enters the available state (or offers a different update), never again for the same offer.
class UpdateAlertGate {
public:
    // Called on every state change; true when the alert should be presented now.
    bool shouldPresent(const UpdateState& state);

private:
    std::optional<UpdateState> presented_;
};

// "Tallowmere 2.1 is available. The app will update and relaunch automatically."
QString updateAlertMessage(const QString& version);

} // namespace tallowmere
