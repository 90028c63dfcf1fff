#include "faults/Delivery.h"

#include "base/Identifiers.h"

#include <algorithm>
#include <cstdio>

namespace cloudsim {
namespace {

using Milliseconds = std::chrono::milliseconds;

std::string chunked(const std::string& body, std::size_t chunkBytes) {
    std::string result;
    for (std::size_t begin = 0; begin < body.size(); begin += chunkBytes) {
        auto size = std::min(chunkBytes, body.size() - begin);
        char line[24];
        std::snprintf(line, sizeof line, "%zx\r\n", size);
        result += line + body.substr(begin, size) + "\r\n";
    }
    return result + "0\r\n\r\n";
}

/// In pieces, with a pause behind each.
bool writeSlowly(Connection& connection, std::string_view bytes, std::size_t piece, Milliseconds interval) {
    while (!bytes.empty()) {
        auto size = std::min(piece, bytes.size());
        if (!connection.write(bytes.substr(0, size)))
            return false;
        bytes.remove_prefix(size);
        if (!bytes.empty() && !connection.pause(interval))
            return false;
    }
    return true;
}

bool writeBody(Connection& connection, std::string_view body, const FaultActions& actions) {
    if (actions.trickleBytes > 0)
        return writeSlowly(connection, body, actions.trickleBytes, actions.trickleInterval);
    if (actions.bytesPerSecond > 0) {
        constexpr std::size_t slicesPerSecond = 20;
        auto piece = std::max<std::size_t>(1, actions.bytesPerSecond / slicesPerSecond);
        auto interval = Milliseconds(1000 * piece / actions.bytesPerSecond);
        return writeSlowly(connection, body, piece, interval);
    }
    return connection.write(body);
}

} // namespace

bool deliver(Connection& connection, const HttpResponse& response, const FaultActions& actions) {
    if (actions.randomBytes > 0) {
        connection.write(randomBytes(actions.randomBytes));
        return false;
    }
    bool inChunks = actions.chunkBytes > 0 && hasBody(response.status);
    std::string head = responseHead(response, inChunks);
    std::string body = inChunks                   ? chunked(response.body, actions.chunkBytes)
                       : hasBody(response.status) ? response.body
                                                  : "";

    if (actions.reset == FaultActions::Reset::IN || actions.cutAfterBytes) {
        bool resets = actions.reset == FaultActions::Reset::IN;
        auto kept = std::min(body.size(), actions.cutAfterBytes.value_or(body.size() / 2));
        if (!connection.write(head) || !writeBody(connection, std::string_view(body).substr(0, kept), actions))
            return false;
        if (resets) {
            // What was sent has to arrive before the reset does away with it.
            connection.pause(Milliseconds(50));
            connection.reset();
        }
        return false;
    }
    if (!connection.write(head) || !writeBody(connection, body, actions))
        return false;
    if (actions.reset == FaultActions::Reset::AFTER) {
        connection.pause(Milliseconds(50));
        connection.reset();
        return false;
    }
    return !actions.closeAfter && !response.closes;
}

} // namespace cloudsim
