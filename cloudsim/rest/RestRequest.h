#pragma once

#include "base/Query.h"
#include "model/State.h"
#include "net/HttpMessage.h"

#include <string>
#include <vector>

namespace cloudsim {

/// Something that subscribers are to be told.
struct CloudEvent {
    enum class Kind { PRESENCE, MESSAGE_STORE, DND };
    Kind kind = Kind::PRESENCE;
    std::int64_t extensionId = 0; ///< whom it is about
    Json body;
};

/// One request behind the device's prefix, with who sends it.
struct RestRequest {
    std::string method;
    std::vector<std::string> segments; ///< of the path
    Query query;
    std::string body;
    std::string authority; ///< host and port that the client used
    AccessTokens::Holder caller;
};

/// What a resource may use: the data, locked for the time of the request, and a place for events, which are told when
/// the lock is gone.
struct RestContext {
    State& state;
    const RestRequest& request;
    /// The extension that "~" or an id in the path stands for.
    std::int64_t extensionId = 0;
    /// The id at the end of the path, where the resource has one.
    std::string id;
    std::vector<CloudEvent>& events;

    Extension& extension() const { return state.extensions.at(extensionId); }
    bool isOwn() const { return extensionId == request.caller.extensionId; }
};

HttpResponse jsonResponse(const Json& json, int status = 200);
HttpResponse errorResponse(int status, const std::string& code, const std::string& message);

/// A whole number in a query. Nothing when it is missing or no number.
std::optional<std::int64_t> queryNumber(const Query& query, const char* key);

} // namespace cloudsim
