#pragma once

#include <QString>

#include <optional>

namespace tallowmere {

// The host name registered for an IPv4 or IPv6 address in text form; none when the text is no
// address or no name is known (a numeric answer does not count). Blocking.
std::optional<QString> reverseLookup(const QString& ip);

} // namespace tallowmere
