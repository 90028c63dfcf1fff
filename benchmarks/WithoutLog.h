#pragma once

// The service without a single log call, to measure what the calls cost while they are off. Included ahead of every
// file.
#include "Log.h"

#undef ORVANE_LOG
#define ORVANE_LOG(level, ...)                                                                                         \
    do {                                                                                                               \
        if (false) {                                                                                                   \
            logAppLine(OrvaneLog::TAG, OrvaneLog::SOURCE, OrvaneLog::level, __LINE__, __VA_ARGS__);                    \
        }                                                                                                              \
    } while (false)
