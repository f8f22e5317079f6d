#pragma once

#include <optional>
#include <string>
#include <string_view>

// Plain C++ without Qt: the privileged wake helper compiles this file too, so the program and
// the helper agree on every name and every byte of the units.
namespace tallowmere::wake {

struct ClockTime {
    int hour = 0;
    int minute = 0;
};

// A login name that is safe inside a unit name and a file name: 1 to 32 of A-Z a-z 0-9 _ . -,
// not starting with '.' or '-'.
bool isValidUserName(std::string_view name);

// Exactly "HH:MM", 00:00 to 23:59.
std::optional<ClockTime> parseClockTime(std::string_view text);
std::string formatClockTime(ClockTime time);

// tallowmere-wake-USER.timer and its .service; callers validate the user name first.
std::string timerName(std::string_view user);
std::string serviceName(std::string_view user);

// The timer wakes the machine at the time every day; the service it starts does nothing.
std::string timerUnit(std::string_view user, ClockTime time);
std::string serviceUnit(std::string_view user);

inline constexpr std::string_view systemUnitDirectory = "/etc/systemd/system";

} // namespace tallowmere::wake
