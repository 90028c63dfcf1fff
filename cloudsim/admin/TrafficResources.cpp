#include "admin/AdminResources.h"

#include "base/BadInput.h"

namespace cloudsim {
namespace {

void addFaultResources(AdminRouter& router, Cloud& cloud) {
    router.add("GET", "faults", [&cloud](const AdminRequest&) { return AdminAnswer{200, cloud.faults.list()}; });
    router.add("POST", "faults", [&cloud](const AdminRequest& request) {
        return AdminAnswer{201, {{"id", cloud.faults.arm(request.body)}}};
    });
    router.add("DELETE", "faults", [&cloud](const AdminRequest&) {
        cloud.faults.disarmAll();
        return AdminAnswer{};
    });
    router.add("DELETE", "faults/{id}", [&cloud](const AdminRequest& request) {
        auto id = static_cast<std::uint64_t>(request.capturedNumber("id"));
        return cloud.faults.disarm(id) ? AdminAnswer{} : notFound("the fault");
    });
}

/// Takes the port down or brings it up, for a time where one is given.
void switchPort(const AdminReach& reach, bool down, std::int64_t milliseconds) {
    if (!down)
        return reach.server.bringUp();
    reach.server.takeDown();
    if (milliseconds > 0)
        reach.cloud.scheduler.after(std::chrono::milliseconds(milliseconds),
                                    [&server = reach.server] { server.bringUp(); });
}

} // namespace

void addTrafficResources(AdminRouter& router, const AdminReach& reach) {
    Cloud& cloud = reach.cloud;
    router.add("GET", "requests", [&cloud](const AdminRequest& request) {
        auto after = static_cast<std::uint64_t>(request.queryNumber("after").value_or(0));
        return AdminAnswer{200, cloud.journal.list({request.queryText("path"), request.queryText("method"), after})};
    });
    router.add("DELETE", "requests", [&cloud](const AdminRequest&) {
        cloud.journal.clear();
        return AdminAnswer{};
    });
    addFaultResources(router, cloud);

    router.add("GET", "connections",
               [reach](const AdminRequest&) { return AdminAnswer{200, {{"count", reach.server.connectionCount()}}}; });
    router.add("POST", "connections/close", [reach](const AdminRequest& request) {
        bool resets = request.body.is_object() && textMember(request.body, "how") == "reset";
        reach.server.closeConnections(resets ? Connection::Closing::RESET : Connection::Closing::IN_ORDER);
        return AdminAnswer{};
    });
    router.add("PUT", "port", [reach](const AdminRequest& request) {
        const Json& body = request.object();
        bool down = requireFlag(body.value("down", Json()), "down");
        bool timed = body.contains("forMilliseconds") && body["forMilliseconds"].is_number_integer();
        switchPort(reach, down, timed ? body["forMilliseconds"].get<std::int64_t>() : 0);
        return AdminAnswer{};
    });
    router.add("GET", "tls", [reach](const AdminRequest&) {
        return AdminAnswer{200, {{"profile", reach.tls.selected()}, {"profiles", TlsProfiles::names()}}};
    });
    router.add("PUT", "tls", [reach](const AdminRequest& request) {
        if (!reach.tls.select(textMember(request.object(), "profile")))
            throw BadInput("profile: is none of " + toText(Json(TlsProfiles::names())));
        return AdminAnswer{};
    });
}

} // namespace cloudsim
