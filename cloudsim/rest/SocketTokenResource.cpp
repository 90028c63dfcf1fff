#include "rest/Resources.h"

namespace cloudsim {

HttpResponse issueSocketToken(const RestContext& context) {
    int lifetime = context.state.settings.socketTokenLifetimeSeconds;
    AccessTokens::Holder holder = context.request.caller;
    holder.expires = std::chrono::steady_clock::now() + std::chrono::seconds(lifetime);
    Json json{{"uri", "wss://" + context.request.authority + "/ws"},
              {"ws_access_token", context.state.socketTokens.issue(holder)},
              {"expires_in", lifetime}};
    return jsonResponse(json);
}

} // namespace cloudsim
