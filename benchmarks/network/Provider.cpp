#include "network/Provider.h"

#include "Bodies.h"
#include "support/TestCertificates.h"

#include <jansson.h>

namespace {

constexpr int callsOf45Kilobytes = 108;

bool contains(const std::string& text, const char* part) {
    return text.find(part) != std::string::npos;
}

} // namespace

Provider::Provider(const CertificateFiles& files)
    : m_large(Bodies::callLog(0, callsOf45Kilobytes)),
      m_server(files.certificate, files.key, [this](const std::string& target) { return bodyOf(target); }) {
    m_server.greetWith(
        R"([{"type":"ConnectionDetails","messageId":"m1","status":200,"wsc":{"token":"wsc-1","sequence":1}},)"
        R"({"creationTime":"2026-01-01T00:00:00Z","maxConnectionsPerSession":5,"recoveryBufferSize":30,)"
        R"("recoveryTimeout":300,"idleTimeout":600,"absoluteTimeout":86400}])");
    m_server.answerFrames([](const std::string& frame) { return confirmation(frame); });
}

std::string Provider::endOfCall(int number) {
    return R"([{"type":"ServerNotification","messageId":"n"},{"event":)"
           R"("/restapi/v1.0/account/1/extension/4711/presence?detailedTelephonyState=true","ownerId":"4711",)"
           R"("body":{"activeCalls":[{"telephonyStatus":"NoCall","telephonySessionId":")" +
           Bodies::sessionOf(number) + R"("}]}}])";
}

std::string Provider::confirmation(const std::string& frame) {
    json_t* root = json_loads(frame.c_str(), 0, nullptr);
    const char* id = json_string_value(json_object_get(json_array_get(root, 0), "messageId"));
    const std::string reply =
        std::string(R"([{"type":"ClientRequest","messageId":")") + (id == nullptr ? "" : id) +
        R"(","status":200},{"id":"sub-1","creationTime":"2026-01-01T00:00:00Z","status":"Active","eventFilters":)"
        R"(["/restapi/v1.0/account/1/extension/4711/presence?detailedTelephonyState=true",)"
        R"("/restapi/v1.0/account/1/extension/4711/message-store?direction=Inbound&type=Voicemail",)"
        R"("/restapi/v1.0/account/1/extension/4711/presence/dnd"],)"
        R"("expirationTime":"2026-01-01T01:00:00Z","expiresIn":3600}])";
    json_decref(root);
    return reply;
}

std::string Provider::bodyOf(const std::string& target) {
    if (contains(target, "/auth/token")) {
        return R"({"accessToken":"T1","expiresIn":3600})";
    }
    if (contains(target, "/wstoken")) {
        return R"({"ws_access_token":"W1","uri":"wss://127.0.0.1:)" + std::to_string(m_server.port()) +
               R"(/ws","expires_in":300})";
    }
    if (contains(target, "/presence")) {
        return R"({"dndStatus":"TakeAllCalls","extension":{"id":4711}})";
    }
    if (contains(target, "/grant")) {
        return R"({"records":[]})";
    }
    if (contains(target, "/call-log-sync?syncType=ISync")) {
        return Bodies::callLog(m_lastCall, 1);
    }
    if (contains(target, "/call-log-sync")) {
        return Bodies::callLog(0, callsOfALogin);
    }
    if (contains(target, "/address-book-sync")) {
        return Bodies::phonebookPage(0, 50, "token");
    }
    if (contains(target, "/large")) {
        return m_large;
    }
    return R"({"id":4711})";
}
