#include "admin/AdminRouter.h"

#include "base/BadInput.h"
#include "base/WholeNumber.h"
#include "net/PlainStream.h"
#include "rest/RestRequest.h"

namespace cloudsim {
namespace {

constexpr std::chrono::minutes idleTimeout(10);

} // namespace

std::int64_t AdminRequest::capturedNumber(const std::string& name) const {
    const std::string& text = captured.at(name);
    auto number = wholeNumber<std::int64_t>(text);
    if (!number)
        throw BadInput("'" + text + "' is no number");
    return *number;
}

std::optional<std::int64_t> AdminRequest::queryNumber(const char* key) const {
    if (lastValue(query, key) == nullptr)
        return std::nullopt;
    auto number = cloudsim::queryNumber(query, key);
    if (!number)
        throw BadInput(std::string(key) + " is no number");
    return number;
}

std::string AdminRequest::queryText(const char* key) const {
    const std::string* value = lastValue(query, key);
    return value == nullptr ? "" : *value;
}

const Json& AdminRequest::object() const {
    if (!body.is_object())
        throw BadInput("the body must be an object");
    return body;
}

AdminAnswer notFound(const std::string& what) {
    return {404, {{"error", what + " is not there"}}};
}

void AdminRouter::add(const std::string& method, const std::string& path, Operation operation) {
    m_routes.push_back({method, pathSegments(path), std::move(operation)});
}

Json AdminRouter::overview() const {
    Json result = Json::array();
    for (const auto& route : m_routes) {
        std::string path;
        for (const auto& segment : route.segments)
            path += "/" + segment;
        result.push_back(route.method + " " + path);
    }
    return result;
}

AdminAnswer AdminRouter::answer(const HttpRequest& request) const {
    Target target = splitTarget(request.target);
    auto segments = pathSegments(target.path);
    if (segments.empty())
        return {200, overview()};
    bool known = false;
    for (const auto& route : m_routes) {
        AdminRequest call;
        if (!fitsPattern(segments, route.segments, call.captured))
            continue;
        known = true;
        if (route.method != request.method)
            continue;
        call.query = target.query;
        if (!request.body.empty()) {
            call.body = fromText(request.body);
            if (call.body.is_discarded())
                return {400, {{"error", "the body is no JSON, or nests too deeply"}}};
        }
        try {
            return route.operation(call);
        } catch (const BadInput& error) {
            return {400, {{"error", error.what()}}};
        } catch (const Json::exception& error) {
            return {400, {{"error", error.what()}}};
        }
    }
    return known ? AdminAnswer{405, {{"error", "the method does not fit"}}} : notFound(target.path);
}

void AdminRouter::serve(Connection& connection) {
    if (!connection.begin(std::make_unique<PlainStream>(connection.socket())))
        return;
    HttpReader reader(connection);
    HttpRequest request;
    while (reader.next(request, idleTimeout) == HttpReader::Result::REQUEST) {
        AdminAnswer result = answer(request);
        HttpResponse response{result.status, {{"Content-Type", "application/json"}}, toText(result.body) + "\n"};
        response.closes = !request.keepAlive;
        if (!connection.write(responseText(response)) || response.closes)
            return;
    }
}

} // namespace cloudsim
