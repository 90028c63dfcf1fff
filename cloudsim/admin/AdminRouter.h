#pragma once

#include "base/Json.h"
#include "base/Query.h"
#include "net/HttpReader.h"
#include "net/Server.h"

#include <functional>
#include <optional>

namespace cloudsim {

/// One request to the administration.
struct AdminRequest {
    CapturedSegments captured;
    Query query;
    Json body; ///< null without one

    /// Throws BadInput when it is missing or no number.
    std::int64_t capturedNumber(const std::string& name) const;
    std::optional<std::int64_t> queryNumber(const char* key) const;
    std::string queryText(const char* key) const;
    /// Throws BadInput unless the body is an object.
    const Json& object() const;
};

struct AdminAnswer {
    int status = 200;
    Json body = Json::object();
};

/// The administration over plain HTTP: JSON in, JSON out.
class AdminRouter final : public ConnectionHandler {
public:
    using Operation = std::function<AdminAnswer(const AdminRequest&)>;

    /// The path without a leading slash; "{name}" captures a segment. BadInput from the operation becomes a 400.
    void add(const std::string& method, const std::string& path, Operation operation);
    void serve(Connection& connection) override;
    AdminAnswer answer(const HttpRequest& request) const;

private:
    struct Route {
        std::string method;
        std::vector<std::string> segments;
        Operation operation;
    };

    Json overview() const;

    std::vector<Route> m_routes;
};

/// 404 with a text that says what is not there.
AdminAnswer notFound(const std::string& what);

} // namespace cloudsim
