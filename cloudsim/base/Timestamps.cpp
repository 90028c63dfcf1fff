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

} // namespace cloudsim
