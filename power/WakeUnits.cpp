#include "power/WakeUnits.h"

#include <algorithm>

namespace tallowmere::wake {

namespace {

bool isNameChar(char c)
{
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' || c == '.'
        || c == '-';
}

std::optional<int> twoDigits(std::string_view text)
{
    if (text.size() != 2 || text[0] < '0' || text[0] > '9' || text[1] < '0' || text[1] > '9')
        return std::nullopt;
    return (text[0] - '0') * 10 + (text[1] - '0');
}

std::string description(std::string_view user)
{
    return "[Unit]\nDescription=Tallowmere daily wake for " + std::string(user) + "\n\n";
}

} // namespace

bool isValidUserName(std::string_view name)
{
    return !name.empty() && name.size() <= 32 && name.front() != '.' && name.front() != '-'
        && std::all_of(name.begin(), name.end(), isNameChar);
}

std::optional<ClockTime> parseClockTime(std::string_view text)
{
    if (text.size() != 5 || text[2] != ':')
        return std::nullopt;
    const auto hour = twoDigits(text.substr(0, 2));
    const auto minute = twoDigits(text.substr(3, 2));
    if (!hour || !minute || *hour > 23 || *minute > 59)
        return std::nullopt;
    return ClockTime{*hour, *minute};
}

std::string formatClockTime(ClockTime time)
{
    const char text[] = {char('0' + time.hour / 10), char('0' + time.hour % 10), ':',
                         char('0' + time.minute / 10), char('0' + time.minute % 10)};
    return std::string(text, sizeof text);
}

std::string timerName(std::string_view user)
{
    return "tallowmere-wake-" + std::string(user) + ".timer";
}

std::string serviceName(std::string_view user)
{
    return "tallowmere-wake-" + std::string(user) + ".service";
}

std::string timerUnit(std::string_view user, ClockTime time)
{
    // WakeSystem= works only in the system manager; without AccuracySec= the timer may fire up
    // to a minute late, and a missed wake is pointless to catch up on later.
    return description(user) + "[Timer]\nOnCalendar=*-*-* " + formatClockTime(time)
        + ":00\nWakeSystem=true\nAccuracySec=1s\nPersistent=false\nUnit=" + serviceName(user)
        + "\n\n[Install]\nWantedBy=timers.target\n";
}

std::string serviceUnit(std::string_view user)
{
    // The wake itself is the point; the service only gives the timer something to start.
    return description(user) + "[Service]\nType=oneshot\nExecStart=/bin/true\n";
}

} // namespace tallowmere::wake
