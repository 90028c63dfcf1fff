#pragma once

#include <ctime>
#include <string>

/// Times as a person at this PC reads them.
namespace LocalTime {

/// ISO 8601 UTC as local date and time, "20.11. 14:05"; the text itself when it is none.
std::string dateAndTime(const std::string& isoTime);

/// "14:05:09".
std::string timeOfDay(std::time_t seconds);

} // namespace LocalTime
