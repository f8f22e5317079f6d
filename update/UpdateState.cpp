#include "update/UpdateState.h"

#include <utility>

namespace tallowmere {

UpdateState UpdateState::available(AvailableUpdate update)
{
    UpdateState state(Kind::available);
    state.update_ = std::move(update);
    return state;
}

UpdateState UpdateState::downloading(double progress)
{
    UpdateState state(Kind::downloading);
    state.progress_ = progress;
    return state;
}

UpdateState UpdateState::failed(QString message)
{
    UpdateState state(Kind::failed);
    state.message_ = std::move(message);
    return state;
}

} // namespace tallowmere
