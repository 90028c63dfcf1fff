#pragma once

#include "logging/Logging.h"

/// The host platform's own lines in the log.
namespace HostLog {

constexpr const char* tag = "Orvane Host";
enum Level : int { ERROR = 2, WARNING = 3, STATUS = 4, DEBUG = 6 };

} // namespace HostLog

#define HOST_LOG(level, ...) logAppLine(HostLog::tag, __FILE__, level, __LINE__, __VA_ARGS__)
