#pragma once

#include "OrvaneServiceObserverIfc.h"
#include "framework/Proxy.h"

class Method;

/// Stands in the list of observers for one in another service: each call becomes one message, sent on the thread of
/// the call.
class OrvaneServiceObserverProxy : public Proxy, public OrvaneServiceObserverIfc {
public:
    OrvaneServiceObserverProxy();
    ~OrvaneServiceObserverProxy() override;

    void initProxy(ProxyRequest& request) override;
    Executable* getSubscribingService() override;
    void informUserEvent(const std::string& msg, OrvaneServiceTypes::UserMsgType type) override;
    void orvaneEvent(OrvaneServiceTypes::EventType type) override;
    void orvaneFullSync(std::vector<std::string> data, OrvaneServiceTypes::DataType type) override;
    void orvaneIncrementalSync(std::vector<std::string> data, OrvaneServiceTypes::DataType type) override;
    void orvaneVoicemail(std::map<std::string, OrvaneServiceTypes::Voicemail>& data) override;

private:
    void send(const Method& method);
    void sendRecords(const char* name, const std::vector<std::string>& data, OrvaneServiceTypes::DataType type);

    ProxyRequest* m_pProxyRequest = nullptr; ///< not owned, null until initProxy
};

/// A proxy with no request bound; the caller owns it.
extern "C" __attribute__((visibility("default"))) Proxy* createOrvaneServiceObserverProxy();
