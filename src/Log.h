#pragma once

#include "logging/Logging.h"

/// Identity and levels of the service's log lines.
namespace OrvaneLog {

constexpr const char* TAG = "Orvane Service";
constexpr const char* SOURCE = "./src/OrvaneService";

enum Level : int { ERROR = 2, WARNING = 3, STATUS = 4, DETAIL = 5, DEBUG = 6 };

inline const char* text(bool value) {
    return value ? "true" : "false";
}

} // namespace OrvaneLog

/// Writes a line; the arguments are evaluated only when the line is wanted.
#define ORVANE_LOG(level, ...)                                                                                         \
    do {                                                                                                               \
        if (loggingOnAppLine(OrvaneLog::TAG, OrvaneLog::level)) {                                                      \
            logAppLine(OrvaneLog::TAG, OrvaneLog::SOURCE, OrvaneLog::level, __LINE__, __VA_ARGS__);                    \
        }                                                                                                              \
    } while (false)
