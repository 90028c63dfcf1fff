#pragma once

#include "base/Json.h"
#include "base/Timestamps.h"
#include "net/HttpMessage.h"

#include <deque>
#include <mutex>

namespace cloudsim {

/// What was requested, in order of arrival. The oldest entries make room for new ones.
class RequestJournal {
public:
    /// Returns the entry's number.
    std::uint64_t add(std::uint64_t connection, std::uint16_t port, const HttpRequest& request);
    void setStatus(std::uint64_t number, int status);
    void clear();

    struct Filter {
        std::string pathPart;
        std::string method;
        std::uint64_t after = 0;
    };
    Json list(const Filter& filter);

private:
    struct Entry {
        std::uint64_t number;
        std::uint64_t connection;
        std::uint16_t port;
        WallTime time;
        HttpRequest request;
        int status;
    };

    static Json toJson(const Entry& entry);

    std::mutex m_mutex;
    std::deque<Entry> m_entries;
    std::uint64_t m_lastNumber = 0;
};

} // namespace cloudsim
