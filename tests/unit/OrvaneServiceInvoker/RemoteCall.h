#pragma once

#include "OrvaneServiceIfc.h"
#include "OrvaneServiceInvoker/OrvaneServiceInvoker.h"
#include "OrvaneServiceObserverIfc.h"

#include "SiblingService.h"
#include "TestPlatform.h"
#include "framework/FrameworkContext.h"
#include "framework/InvokerResponse.h"
#include "framework/Method.h"
#include "framework/ProtocolAdapterIfc.h"
#include "framework/Proxy.h"
#include "utilities/Serializer.h"

#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

/// The service as remote callers see it: writes its calls down and answers what the test says.
class RecordingService : public SiblingService, public OrvaneServiceIfc {
public:
    std::vector<std::string> calls;
    bool answer = true;
    OrvaneServiceObserverIfc* lastObserver = nullptr;

    void subscribe(OrvaneServiceObserverIfc* observer) override { note("subscribe"), lastObserver = observer; }
    void unsubscribe(OrvaneServiceObserverIfc* observer) override { note("unsubscribe"), lastObserver = observer; }
    bool isRunning() override { return note("isRunning"); }
    void clearSyncTokens() override { note("clearSyncTokens"); }
    void ageMissedCall(const std::string& id) override { note("ageMissedCall " + id); }
    void ageMissedCalls(const std::set<std::string>& ids) override {
        note("ageMissedCalls " + Serializer::serialize(ids));
    }
    bool isMissedCallViewed(const std::string& id) override { return note("isMissedCallViewed " + id); }
    void deleteCallLogEntry(const std::string& id) override { note("deleteCallLogEntry " + id); }
    bool deleteAllCallLogEntries() override { return note("deleteAllCallLogEntries"); }
    void refreshCallLogEntries() override { note("refreshCallLogEntries"); }
    void refreshPhonebookEntries() override { note("refreshPhonebookEntries"); }
    void refreshVoicemailEntries() override { note("refreshVoicemailEntries"); }
    void reloadAllData() override { note("reloadAllData"); }
    void addNewContact(const std::string& xmlData) override { note("addNewContact " + xmlData); }
    void deleteSingleContact(const std::string& id) override { note("deleteSingleContact " + id); }
    void updateEditedContact(const std::string& xmlData) override { note("updateEditedContact " + xmlData); }
    void updateUserPresenceStatus(bool newDndState) override {
        note(newDndState ? "updateUserPresenceStatus true" : "updateUserPresenceStatus false");
    }
    bool sipVoicemailStatusProcessed(const std::string& lineURI, const std::string& lineName,
                                     bool mwiIndicated) override {
        return note("sipVoicemailStatusProcessed " + lineURI + " " + lineName + (mwiIndicated ? " true" : " false"));
    }

private:
    bool note(const std::string& call) {
        calls.push_back(call);
        return answer;
    }
};

/// An adapter whose decoding gives the method that the test put in, and whose encoding keeps the reply.
class ScriptedAdapter : public ProtocolAdapterIfc {
public:
    bool decode(std::istream& stream, Method& method) override {
        std::ostringstream text;
        text << stream.rdbuf();
        decodedText = text.str();
        method = request;
        return decodes;
    }
    bool encode(std::ostream& stream, const Method& method) override {
        reply = method;
        ++encoded;
        stream << std::string("re\0ply", 6);
        return true;
    }

    Method request;
    bool decodes = true;
    std::string decodedText;
    Method reply;
    int encoded = 0;
};

class ScriptedFramework : public FrameworkContext {
public:
    ProtocolAdapterIfc* findProtocolAdapter(std::string& name) override {
        protocols.push_back(name);
        return adapter;
    }
    Proxy* findProxy(std::string& interfaceName, std::string& subscriber) override {
        proxyQueries.emplace_back(interfaceName, subscriber);
        return proxy;
    }

    ProtocolAdapterIfc* adapter = nullptr;
    Proxy* proxy = nullptr;
    std::vector<std::string> protocols;
    std::vector<std::pair<std::string, std::string>> proxyQueries;
};

/// What became of the answer side of a message.
struct ResponseRecord {
    std::vector<std::string> sent;
    int destroyed = 0;
};

class RecordingResponse : public InvokerResponse {
public:
    explicit RecordingResponse(ResponseRecord& record) : m_record(record) {}
    ~RecordingResponse() override { ++m_record.destroyed; }

    std::string getProtocolName() const override { return "protocol"; }
    std::string getSubscriberName() const override { return "subscriber"; }
    void send(const char* text, int length) override {
        EXPECT_EQ(0, m_record.destroyed);
        m_record.sent.emplace_back(text, static_cast<std::size_t>(length));
    }

private:
    ResponseRecord& m_record;
};

/// Remote calls through the real invoker.
class RemoteCall : public testing::Test {
protected:
    RemoteCall() {
        framework.adapter = &adapter;
        invoker.reset(createOrvaneServiceInvoker());
        invoker->initInvoker(&framework);
    }

    /// Parameters of a request; a pair that is left out is missing.
    using Texts = std::vector<std::pair<std::string, std::string>>;
    using Flags = std::vector<std::pair<std::string, bool>>;

    void call(const std::string& name, const Texts& texts = {}, const Flags& flags = {}) {
        adapter.request = Method(name, Method::REQUEST);
        for (const auto& [parameter, value] : texts) {
            adapter.request.addStringParameter(parameter, value, Parameter::DIRECTION_IN);
        }
        for (const auto& [parameter, value] : flags) {
            adapter.request.addBoolParameter(parameter, value, Parameter::DIRECTION_IN);
        }
        deliver();
    }
    void deliver(const std::string& text = "text") {
        response = ResponseRecord();
        adapter.encoded = 0;
        invoker->handleMessage(executable, text.data(), static_cast<int>(text.size()), new RecordingResponse(response));
        EXPECT_EQ(1, response.destroyed);
    }
    void expectCalls(const std::vector<std::string>& expected) {
        EXPECT_EQ(expected, service.calls);
        service.calls.clear();
    }
    void expectNoReply() {
        EXPECT_TRUE(response.sent.empty());
        EXPECT_EQ(0, adapter.encoded);
    }
    void expectResult(const std::string& method, bool expected) {
        ASSERT_EQ(1u, response.sent.size());
        EXPECT_EQ(std::string("re\0ply", 6), response.sent[0]);
        EXPECT_EQ(method, adapter.reply.getName());
        EXPECT_EQ(Method::RESPONSE, adapter.reply.getType());
        ASSERT_EQ(1u, adapter.reply.getParameters().size());
        const Parameter& result = adapter.reply.getParameters()[0];
        EXPECT_EQ("result", result.name);
        EXPECT_EQ(Parameter::Kind::BOOL, result.kind);
        EXPECT_EQ(Parameter::DIRECTION_OUT, result.direction);
        EXPECT_EQ(expected, result.boolValue);
    }
    bool logged(const std::string& text) const {
        for (const auto& line : platform.log.lines()) {
            if (line.tag == "Orvane Service Invoker" && line.source == "./src/OrvaneServiceInvoker" &&
                line.level == 2 && line.text == text) {
                return true;
            }
        }
        return false;
    }

    TestPlatform platform;
    RecordingService service;
    Executable* executable = &service;
    ScriptedAdapter adapter;
    ScriptedFramework framework;
    ResponseRecord response;
    std::unique_ptr<Invoker> invoker;
};
