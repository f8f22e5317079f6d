#pragma once

#include "app/AppServices.h"

#include <memory>

class QString;

namespace tallowmere::bench {

// The real container on this machine with its preferences and history in `dir`, no update feed
// and a port of the system's choosing. `switchesOff` stores every switch off first, so nothing
// but what a benchmark opens makes the monitors sample.
std::unique_ptr<AppServices> makePrivateServices(const QString& dir, bool switchesOff = true);

} // namespace tallowmere::bench
