#pragma once

#include "rest/RestRequest.h"

namespace cloudsim {

/// Finds the resource for a path and lets it answer.
class RestRouter {
public:
    /// What comes in over HTTPS: "/MODEL/MAC" in front of every path, a token request or a bearer token. The peer's
    /// name is that of its client certificate.
    HttpResponse answer(State& state, const HttpRequest& request, const std::string& peerName,
                        const std::string& authority, std::vector<CloudEvent>& events) const;
    /// A request of a caller who is known, without the prefix.
    HttpResponse answer(State& state, const RestRequest& request, std::vector<CloudEvent>& events) const;
};

} // namespace cloudsim
