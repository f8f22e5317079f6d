#include "ui/window/UpdateAlert.h"

namespace tallowmere {

bool UpdateAlertGate::shouldPresent(const UpdateState& state)
{
    if (!state.is(UpdateState::Kind::available)) {
        presented_.reset();
        return false;
    }
    if (presented_ == state)
        return false;
    presented_ = state;
    return true;
}

QString updateAlertMessage(const QString& version)
{
    return QStringLiteral("Tallowmere ") + version
        + QStringLiteral(" is available. The app will update and relaunch automatically.");
}

} // namespace tallowmere
