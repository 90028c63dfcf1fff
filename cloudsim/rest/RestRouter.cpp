#include "rest/RestRouter.h"

#include "rest/Resources.h"

namespace cloudsim {
namespace {

/// Whose data a path may name.
enum class Access { OWN, GRANTED, COLLEAGUE };

struct Route {
    const char* method;
    const char* path; ///< "{account}", "{extension}" and "{id}" stand for a segment
    Access access;
    HttpResponse (*resource)(const RestContext&);
};

constexpr Route routes[] = {
    {"GET", "restapi/v1.0/account/{account}/extension/{extension}", Access::OWN, getExtension},
    {"GET", "restapi/v1.0/account/{account}/extension/{extension}/call-log-sync", Access::GRANTED, syncCallLog},
    {"DELETE", "restapi/v1.0/account/{account}/extension/{extension}/call-log", Access::OWN, deleteAllCalls},
    {"DELETE", "restapi/v1.0/account/{account}/extension/{extension}/call-log/{id}", Access::GRANTED, deleteCall},
    {"GET", "restapi/v1.0/account/{account}/extension/{extension}/grant", Access::OWN, getGrants},
    {"GET", "restapi/v1.0/account/{account}/extension/{extension}/address-book-sync", Access::OWN, syncAddressBook},
    {"POST", "restapi/v1.0/account/{account}/extension/{extension}/address-book/contact", Access::OWN, addContact},
    {"GET", "restapi/v1.0/account/{account}/extension/{extension}/address-book/contact/{id}", Access::OWN, getContact},
    {"PUT", "restapi/v1.0/account/{account}/extension/{extension}/address-book/contact/{id}", Access::OWN, editContact},
    {"DELETE", "restapi/v1.0/account/{account}/extension/{extension}/address-book/contact/{id}", Access::OWN,
     deleteContact},
    {"GET", "restapi/v1.0/account/{account}/extension/{extension}/presence", Access::COLLEAGUE, getPresence},
    {"PUT", "restapi/v1.0/account/{account}/extension/{extension}/presence", Access::COLLEAGUE, changePresence},
    {"POST", "restapi/oauth/wstoken", Access::OWN, issueSocketToken},
};

bool mayReach(const State& state, const Extension& caller, std::int64_t extensionId, Access access) {
    if (extensionId == caller.id)
        return true;
    switch (access) {
    case Access::OWN:
        return false;
    case Access::COLLEAGUE:
        return state.extensions.count(extensionId) != 0;
    case Access::GRANTED:
        return std::find(caller.grants.begin(), caller.grants.end(), extensionId) != caller.grants.end();
    }
    return false;
}

HttpResponse visit(const Route& route, const CapturedSegments& captured, State& state, const RestRequest& request,
                   std::vector<CloudEvent>& events) {
    const Extension* caller = state.findExtension(request.caller.extensionId);
    if (caller == nullptr)
        return errorResponse(404, "CMN-102", "The extension is gone");
    const std::string& account = captured.at("account");
    if (account != "~" && account != std::to_string(state.accountId))
        return errorResponse(404, "CMN-102", "Account is not found");
    std::int64_t extensionId = caller->id;
    const std::string& extension = captured.at("extension");
    if (extension != "~") {
        auto found = std::find_if(state.extensions.begin(), state.extensions.end(),
                                  [&](const auto& entry) { return std::to_string(entry.first) == extension; });
        if (found == state.extensions.end())
            return errorResponse(404, "CMN-102", "Extension is not found");
        extensionId = found->first;
    }
    if (!mayReach(state, *caller, extensionId, route.access))
        return errorResponse(403, "CMN-408", "Permission is missing");
    return route.resource({state, request, extensionId, captured.at("id"), events});
}

HttpResponse issueToken(State& state, const Device* device, const std::string& peerName) {
    if (device == nullptr)
        return errorResponse(404, "OAU-101", "Device is not known");
    if (!device->certificateName.empty() && device->certificateName != peerName)
        return errorResponse(401, "OAU-102", "Device shows another certificate");
    int lifetime = state.settings.tokenLifetimeSeconds;
    auto expires = std::chrono::steady_clock::now() + std::chrono::seconds(lifetime);
    std::string token = state.accessTokens.issue({device->model, device->mac, device->extensionId, expires});
    return jsonResponse({{"accessToken", token}, {"expiresIn", lifetime}});
}

std::string bearerToken(const HttpRequest& request) {
    static constexpr std::string_view scheme = "Bearer ";
    const std::string* header = request.header("authorization");
    return header != nullptr && header->compare(0, scheme.size(), scheme) == 0 ? header->substr(scheme.size()) : "";
}

} // namespace

HttpResponse RestRouter::answer(State& state, const HttpRequest& request, const std::string& peerName,
                                const std::string& authority, std::vector<CloudEvent>& events) const {
    Target target = splitTarget(request.target);
    auto segments = pathSegments(target.path);
    if (segments.size() < 3)
        return errorResponse(404, "CMN-102", "Resource is not found");
    std::string model = segments[0];
    std::string mac = segments[1];
    segments.erase(segments.begin(), segments.begin() + 2);
    if (segments == std::vector<std::string>{"auth", "token"})
        return request.method == "GET" ? issueToken(state, state.findDevice(model, mac), peerName)
                                       : errorResponse(405, "CMN-201", "Method is not supported");
    auto holder = state.accessTokens.find(bearerToken(request));
    if (!holder || holder->model != model || holder->mac != mac) {
        HttpResponse refusal = errorResponse(401, "TokenInvalid", "Token not found or expired");
        refusal.headers.emplace_back("WWW-Authenticate", "Bearer realm=\"cloud\"");
        return refusal;
    }
    return answer(state, {request.method, segments, target.query, request.body, authority, *holder}, events);
}

HttpResponse RestRouter::answer(State& state, const RestRequest& request, std::vector<CloudEvent>& events) const {
    bool known = false;
    for (const Route& route : routes) {
        CapturedSegments captured{{"account", "~"}, {"extension", "~"}, {"id", ""}};
        if (!fitsPattern(request.segments, pathSegments(route.path), captured))
            continue;
        if (request.method == route.method)
            return visit(route, captured, state, request, events);
        known = true;
    }
    return known ? errorResponse(405, "CMN-201", "Method is not supported")
                 : errorResponse(404, "CMN-102", "Resource is not found");
}

} // namespace cloudsim
