#include "admin/AdminResources.h"

#include "base/BadInput.h"
#include "base/Identifiers.h"
#include "channel/Frames.h"

namespace cloudsim {
namespace {

using Links = std::vector<std::shared_ptr<ChannelLink>>;

/// The bytes that a description of a frame stands for.
std::string frameBytes(const Json& description) {
    try {
        if (description.contains("raw"))
            return fromBase64(textMember(description, "raw"));
        Frame frame;
        frame.opcode = static_cast<int>(numberMember(description, "opcode", Frame::TEXT));
        frame.isFinal = flagMember(description, "final", true);
        if (description.contains("json"))
            frame.payload = toText(description["json"]);
        else if (description.contains("base64"))
            frame.payload = fromBase64(textMember(description, "base64"));
        else
            frame.payload = textMember(description, "text");
        return encodeFrame(frame);
    } catch (const std::invalid_argument&) {
        throw BadInput("the base64 text cannot be read");
    }
}

void addSessionOperation(AdminRouter& router, Cloud& cloud, const std::string& name,
                         std::function<void(ChannelLink&, const Json&)> operation) {
    router.add("POST", "sessions/{id}/" + name, [&cloud, operation](const AdminRequest& request) {
        const std::string& id = request.captured.at("id");
        Links links = cloud.hub.links(id);
        if (links.empty())
            return notFound("a connected session " + id);
        const Json body = request.body.is_null() ? Json::object() : request.object();
        for (const auto& link : links)
            operation(*link, body);
        return AdminAnswer{200, {{"sessions", links.size()}}};
    });
}

} // namespace

void addChannelResources(AdminRouter& router, Cloud& cloud) {
    router.add("GET", "sessions", [&cloud](const AdminRequest&) { return AdminAnswer{200, cloud.hub.sessions()}; });
    addSessionOperation(router, cloud, "frame",
                        [](ChannelLink& link, const Json& body) { link.sendBytes(frameBytes(body)); });
    addSessionOperation(router, cloud, "close", [](ChannelLink& link, const Json& body) {
        constexpr int normal = 1000;
        link.close(static_cast<int>(numberMember(body, "code", normal)), textMember(body, "reason"));
    });
    addSessionOperation(router, cloud, "reset", [](ChannelLink& link, const Json&) { link.reset(); });
    addSessionOperation(router, cloud, "silence",
                        [](ChannelLink& link, const Json& body) { link.setSilent(flagMember(body, "on", true)); });
    addSessionOperation(router, cloud, "freeze-pongs",
                        [](ChannelLink& link, const Json& body) { link.setPongsFrozen(flagMember(body, "on", true)); });
    router.add("DELETE", "sessions/{id}", [&cloud](const AdminRequest& request) {
        return cloud.hub.expire(request.captured.at("id")) ? AdminAnswer{} : notFound("the session");
    });
    router.add("GET", "frames", [&cloud](const AdminRequest& request) {
        return AdminAnswer{200, cloud.hub.frames(static_cast<std::uint64_t>(request.queryNumber("after").value_or(0)))};
    });
    router.add("DELETE", "frames", [&cloud](const AdminRequest&) {
        cloud.hub.clearFrames();
        return AdminAnswer{};
    });
    router.add("GET", "channel-faults", [&cloud](const AdminRequest&) { return AdminAnswer{200, cloud.hub.faults()}; });
    router.add("PUT", "channel-faults", [&cloud](const AdminRequest& request) {
        cloud.hub.setFaults(channelFaultsFromJson(request.object()));
        return AdminAnswer{200, cloud.hub.faults()};
    });
    router.add("DELETE", "channel-faults", [&cloud](const AdminRequest&) {
        cloud.hub.setFaults({});
        return AdminAnswer{};
    });
}

} // namespace cloudsim
