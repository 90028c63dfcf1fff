#include "life/CallPlayer.h"

#include "base/Identifiers.h"

namespace cloudsim {

CloudEvent presenceEvent(std::int64_t extensionId, const Json& activeCalls) {
    std::string telephonyStatus = "NoCall";
    if (activeCalls.is_array())
        for (const auto& call : activeCalls)
            if (call.is_object() && textMember(call, "telephonyStatus", "NoCall") != "NoCall")
                telephonyStatus = textMember(call, "telephonyStatus");
    return {CloudEvent::Kind::PRESENCE,
            extensionId,
            {{"extensionId", std::to_string(extensionId)},
             {"presenceStatus", telephonyStatus == "NoCall" ? "Available" : "Busy"},
             {"telephonyStatus", telephonyStatus},
             {"activeCalls", activeCalls}}};
}

void CallPlayer::announce(const PlayedCall& call, const char* telephonyStatus) {
    Json active{{"id", textMember(call.members, "sessionId")},
                {"direction", textMember(call.members, "direction", "Inbound")},
                {"telephonyStatus", telephonyStatus},
                {"telephonySessionId", textMember(call.members, "telephonySessionId")},
                {"sessionId", textMember(call.members, "sessionId")},
                {"startTime", textMember(call.members, "startTime")}};
    for (const char* party : {"from", "to"}) {
        auto member = call.members.find(party);
        if (member == call.members.end() || !member->is_object())
            continue;
        if (std::string number = textMember(*member, "phoneNumber"); !number.empty())
            active[party] = number;
        if (std::string name = textMember(*member, "name"); !name.empty())
            active[std::string(party) + "Name"] = name;
    }
    m_cloud.hub.publish(presenceEvent(call.extensionId, Json::array({active})));
}

std::string CallPlayer::play(PlayedCall call) {
    Json& members = call.members;
    if (!members.contains("telephonySessionId"))
        members["telephonySessionId"] = "s-" + randomUuid();
    if (!members.contains("sessionId"))
        members["sessionId"] = randomToken(12);
    if (!members.contains("startTime"))
        members["startTime"] = toTimestamp(std::chrono::system_clock::now());
    bool outbound = textMember(members, "direction") == "Outbound";
    if (!members.contains("result"))
        members["result"] =
            call.talk.count() > 0 ? (outbound ? "Call connected" : "Accepted") : (outbound ? "No Answer" : "Missed");
    if (!members.contains("duration"))
        members["duration"] = call.talk.count() / 1000;
    std::string id = textMember(members, "telephonySessionId");

    announce(call, "Ringing");
    auto end = call.ring + call.talk;
    if (call.talk.count() > 0)
        m_cloud.scheduler.after(call.ring, [this, call] { announce(call, "CallConnected"); });
    m_cloud.scheduler.after(end, [this, call] { announce(call, "NoCall"); });
    if (call.withRecord)
        m_cloud.scheduler.after(end + call.recordDelay, [this, call] {
            m_cloud.state.with([&](State& state) {
                if (Extension* extension = state.findExtension(call.extensionId))
                    extension->calls.add(call.members);
            });
        });
    return id;
}

void CallPlayer::leaveMessage(std::int64_t extensionId) {
    Json change{{"type", "Voicemail"}, {"newCount", 1}, {"updatedCount", 0}};
    m_cloud.hub.publish({CloudEvent::Kind::MESSAGE_STORE,
                         extensionId,
                         {{"extensionId", extensionId},
                          {"lastUpdated", toTimestamp(std::chrono::system_clock::now())},
                          {"changes", Json::array({change})}}});
}

} // namespace cloudsim
