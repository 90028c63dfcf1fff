#pragma once

#include "net/Connection.h"
#include "net/HttpMessage.h"

namespace cloudsim {

/// Reads the requests of one connection, one after the other.
class HttpReader {
public:
    enum class Result {
        REQUEST,
        END,      ///< the peer is gone, or the connection is to be closed
        MALFORMED ///< what came is no HTTP, or too much
    };

    explicit HttpReader(Connection& connection) : m_connection(connection) {}

    Result next(HttpRequest& request, std::chrono::milliseconds idleTimeout);
    /// Bytes behind the last request that were read already.
    std::string takeLeftover() { return std::move(m_buffer); }

private:
    Connection& m_connection;
    std::string m_buffer;
};

} // namespace cloudsim
