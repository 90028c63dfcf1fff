#include "OrvaneServiceObserverProxy/OrvaneServiceObserverProxy.h"

#include "Log.h"
#include "framework/Method.h"
#include "framework/ProxyRequest.h"
#include "utilities/Serializer.h"

#include <memory>

Proxy* createOrvaneServiceObserverProxy() {
    return std::make_unique<OrvaneServiceObserverProxy>().release();
}

OrvaneServiceObserverProxy::OrvaneServiceObserverProxy() = default;

OrvaneServiceObserverProxy::~OrvaneServiceObserverProxy() = default;

void OrvaneServiceObserverProxy::initProxy(ProxyRequest& request) {
    m_pProxyRequest = &request;
}

Executable* OrvaneServiceObserverProxy::getSubscribingService() {
    return nullptr;
}

void OrvaneServiceObserverProxy::informUserEvent(const std::string& msg, OrvaneServiceTypes::UserMsgType type) {
    Method method("informUserEvent", Method::REQUEST);
    method.addStringParameter("msg", msg, Parameter::DIRECTION_IN);
    method.addIntParameter("type", type, Parameter::DIRECTION_IN);
    send(method);
}

void OrvaneServiceObserverProxy::orvaneEvent(OrvaneServiceTypes::EventType type) {
    Method method("orvaneEvent", Method::REQUEST);
    method.addIntParameter("type", type, Parameter::DIRECTION_IN);
    send(method);
}

void OrvaneServiceObserverProxy::orvaneFullSync(std::vector<std::string> data, OrvaneServiceTypes::DataType type) {
    sendRecords("orvaneFullSync", data, type);
}

void OrvaneServiceObserverProxy::orvaneIncrementalSync(std::vector<std::string> data,
                                                       OrvaneServiceTypes::DataType type) {
    sendRecords("orvaneIncrementalSync", data, type);
}

void OrvaneServiceObserverProxy::orvaneVoicemail(std::map<std::string, OrvaneServiceTypes::Voicemail>& data) {
    std::vector<std::string> entries;
    entries.reserve(data.size());
    for (const auto& [line, voicemail] : data) {
        std::string entry;
        Serializer::serialize(entry, line, false);
        Serializer::serialize(entry, voicemail.number, false);
        Serializer::serialize(entry, voicemail.name, false);
        Serializer::serialize(entry, voicemail.latestTimestamp, false);
        Serializer::serialize(entry, voicemail.unreadVoicemailMessageCount);
        entries.push_back(std::move(entry));
    }
    Method method("orvaneVoicemail", Method::REQUEST);
    method.addStringParameter("data", Serializer::serialize(entries), Parameter::DIRECTION_IN);
    send(method);
}

void OrvaneServiceObserverProxy::sendRecords(const char* name, const std::vector<std::string>& data,
                                             OrvaneServiceTypes::DataType type) {
    Method method(name, Method::REQUEST);
    method.addStringParameter("data", Serializer::serialize(data), Parameter::DIRECTION_IN);
    method.addIntParameter("type", type, Parameter::DIRECTION_IN);
    send(method);
}

void OrvaneServiceObserverProxy::send(const Method& method) {
    if (m_pProxyRequest == nullptr) {
        ORVANE_LOG(ERROR, "%s() proxy is not bound to a request", method.getName().c_str());
        return;
    }
    m_pProxyRequest->send(method);
}
