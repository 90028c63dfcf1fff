#include "admin/AdminResources.h"

#include "base/BadInput.h"

namespace cloudsim {
namespace {

std::int64_t extensionOf(Cloud& cloud, const AdminRequest& request) {
    const Json& body = request.object();
    if (!body.contains("extensionId"))
        return cloud.state.with([](State& state) { return state.firstExtensionId(); });
    return requireNumber(body["extensionId"], "extensionId");
}

std::chrono::milliseconds duration(const Json& body, const char* key, std::chrono::milliseconds otherwise) {
    return std::chrono::milliseconds(numberMember(body, key, otherwise.count(), notNegative));
}

AdminAnswer playCall(const AdminReach& reach, const AdminRequest& request) {
    PlayedCall call;
    const Json& body = request.object();
    call.extensionId = extensionOf(reach.cloud, request);
    call.ring = duration(body, "ringMilliseconds", call.ring);
    call.talk = duration(body, "talkMilliseconds", call.talk);
    call.recordDelay = duration(body, "recordDelayMilliseconds", call.recordDelay);
    call.withRecord = !body.contains("withRecord") || body["withRecord"] != false;
    call.members = body.contains("call") ? body["call"] : Json::object();
    if (!call.members.is_object())
        throw BadInput("call: must be an object");
    return {201, {{"telephonySessionId", reach.player.play(std::move(call))}}};
}

} // namespace

void addLifeResources(AdminRouter& router, const AdminReach& reach) {
    Cloud& cloud = reach.cloud;
    router.add("POST", "events/presence", [&cloud](const AdminRequest& request) {
        const Json& body = request.object();
        cloud.hub.publish(presenceEvent(extensionOf(cloud, request),
                                        body.contains("activeCalls") ? body["activeCalls"] : Json::array()));
        return AdminAnswer{};
    });
    router.add("POST", "events/message-store", [reach](const AdminRequest& request) {
        reach.player.leaveMessage(extensionOf(reach.cloud, request));
        return AdminAnswer{};
    });
    router.add("POST", "events/dnd", [&cloud](const AdminRequest& request) {
        auto id = extensionOf(cloud, request);
        cloud.hub.publish({CloudEvent::Kind::DND,
                           id,
                           {{"extensionId", std::to_string(id)},
                            {"dndStatus", textMember(request.object(), "dndStatus", "TakeAllCalls")}}});
        return AdminAnswer{};
    });
    router.add("POST", "events/raw", [&cloud](const AdminRequest& request) {
        cloud.hub.notifyRaw(extensionOf(cloud, request), request.object().value("data", Json::object()));
        return AdminAnswer{};
    });
    router.add("POST", "life/call", [reach](const AdminRequest& request) { return playCall(reach, request); });
    router.add("GET", "life",
               [reach](const AdminRequest&) { return AdminAnswer{200, {{"running", reach.life.isRunning()}}}; });
    router.add("PUT", "life", [reach](const AdminRequest& request) {
        reach.life.setRunning(requireFlag(request.object().value("running", Json()), "running"));
        return AdminAnswer{};
    });
}

} // namespace cloudsim
