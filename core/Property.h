#pragma once

#include <utility>

namespace tallowmere {

// Published scalars: assigning the value already held notifies nobody.
template <class Owner, class T, class U>
bool assignProperty(Owner* owner, T& field, U&& value, void (Owner::*changed)())
{
    if (field == value)
        return false;
    field = std::forward<U>(value);
    (owner->*changed)();
    return true;
}

// Published lists and records are replaced whole and always announced.
template <class Owner, class T, class U>
void replaceProperty(Owner* owner, T& field, U&& value, void (Owner::*changed)())
{
    field = std::forward<U>(value);
    (owner->*changed)();
}

} // namespace tallowmere
