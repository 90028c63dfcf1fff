#include "rest/Resources.h"

#include "model/AccountData.h"

namespace cloudsim {

Json presenceOf(const Extension& extension) {
    bool reachable = extension.dndStatus != "DoNotAcceptAnyCalls";
    return {{"presenceStatus", reachable ? extension.userStatus : "Busy"},
            {"telephonyStatus", "NoCall"},
            {"userStatus", extension.userStatus},
            {"dndStatus", extension.dndStatus},
            {"extension", {{"id", extension.id}, {"extensionNumber", extension.number}}}};
}

CloudEvent dndEvent(const Extension& extension) {
    return {CloudEvent::Kind::DND,
            extension.id,
            {{"extensionId", std::to_string(extension.id)}, {"dndStatus", extension.dndStatus}}};
}

HttpResponse getPresence(const RestContext& context) {
    return jsonResponse(presenceOf(context.extension()));
}

HttpResponse changePresence(const RestContext& context) {
    if (!context.isOwn())
        return errorResponse(403, "CMN-408", "Only the own presence can be changed");
    Json json = fromText(context.request.body);
    if (!json.is_object())
        return errorResponse(400, "CMN-100", "Presence cannot be read");
    Extension& extension = context.extension();
    std::string status = textMember(json, "dndStatus", extension.dndStatus);
    if (!isDndStatus(status) || (json.contains("dndStatus") && !json["dndStatus"].is_string()))
        return errorResponse(400, "CMN-101", "Parameter [dndStatus] value is invalid");
    extension.userStatus = textMember(json, "userStatus", extension.userStatus);
    if (status != extension.dndStatus) {
        extension.dndStatus = status;
        context.events.push_back(dndEvent(extension));
    }
    return jsonResponse(presenceOf(extension));
}

} // namespace cloudsim
