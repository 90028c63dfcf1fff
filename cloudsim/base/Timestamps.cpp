#include "base/Timestamps.h"

#include <cstdio>
#include <ctime>

namespace cloudsim {

using std::chrono::milliseconds;

std::string toTimestamp(WallTime time) {
    auto sinceEpoch = std::chrono::duration_cast<milliseconds>(time.time_since_epoch()).count();
    std::time_t seconds = static_cast<std::time_t>(sinceEpoch / 1000);
    std::tm parts{};
    gmtime_r(&seconds, &parts);
    char text[64];
    std::snprintf(text, sizeof text, "%04d-%02d-%02dT%02d:%02d:%02d.%03dZ", parts.tm_year + 1900, parts.tm_mon + 1,
                  parts.tm_mday, parts.tm_hour, parts.tm_min, parts.tm_sec, static_cast<int>(sinceEpoch % 1000));
    return text;
}

std::optional<WallTime> fromTimestamp(const std::string& text) {
    std::tm parts{};
    int thousandths = 0;
    int read = 0;
    if (std::sscanf(text.c_str(), "%4d-%2d-%2dT%2d:%2d:%2d.%3dZ%n", &parts.tm_year, &parts.tm_mon, &parts.tm_mday,
                    &parts.tm_hour, &parts.tm_min, &parts.tm_sec, &thousandths, &read) != 7 ||
        static_cast<std::size_t>(read) != text.size())
        return std::nullopt;
    parts.tm_year -= 1900;
    parts.tm_mon -= 1;
    return std::chrono::system_clock::from_time_t(timegm(&parts)) + milliseconds(thousandths);
}

} // namespace cloudsim
