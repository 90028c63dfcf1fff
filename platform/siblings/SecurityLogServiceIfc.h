#pragma once

#include <ctime>
#include <string>

/// The telephone's security log, found under the service name "SecurityLogServiceIfc".
class SecurityLogServiceIfc {
public:
    virtual ~SecurityLogServiceIfc() = default;

    static_assert(sizeof(std::time_t) == 8, "on a 32-bit processor: -D_TIME_BITS=64 -D_FILE_OFFSET_BITS=64");

    /// Adds a record. `time` is in seconds since the epoch. The four classes are numbers of the log's own
    /// catalogue; `failure` is 0 for success and 1 for failure. Any thread.
    virtual void addRecord(std::time_t time, int firstClass, int secondClass, int thirdClass, int fourthClass,
                           int failure, const std::string& text, const std::string& user,
                           const std::string& address) = 0;
};
