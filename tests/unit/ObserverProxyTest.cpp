#include "OrvaneServiceObserverProxy/OrvaneServiceObserverProxy.h"
#include "RecordingProxyRequest.h"
#include "TestPlatform.h"

#include <gtest/gtest.h>

#include <memory>

using namespace OrvaneServiceTypes;

namespace {

class ObserverProxy : public testing::Test {
protected:
    ObserverProxy() { proxy->initProxy(request); }

    const Method& sent() {
        EXPECT_EQ(1u, request.sent.size());
        return request.sent.at(0);
    }
    /// Checks the whole message: name, type, and the parameters with name, kind and direction.
    void expectSent(const std::string& name, const std::vector<std::pair<std::string, std::string>>& texts,
                    const std::vector<std::pair<std::string, int>>& numbers) {
        EXPECT_EQ(name, sent().getName());
        EXPECT_EQ(Method::REQUEST, sent().getType());
        ASSERT_EQ(texts.size() + numbers.size(), sent().getParameters().size());
        std::size_t position = 0;
        for (const auto& [key, value] : texts) {
            const Parameter& parameter = sent().getParameters()[position++];
            EXPECT_EQ(key, parameter.name);
            EXPECT_EQ(Parameter::Kind::STRING, parameter.kind);
            EXPECT_EQ(Parameter::DIRECTION_IN, parameter.direction);
            EXPECT_EQ(value, parameter.stringValue);
        }
        for (const auto& [key, value] : numbers) {
            const Parameter& parameter = sent().getParameters()[position++];
            EXPECT_EQ(key, parameter.name);
            EXPECT_EQ(Parameter::Kind::INT, parameter.kind);
            EXPECT_EQ(Parameter::DIRECTION_IN, parameter.direction);
            EXPECT_EQ(value, parameter.intValue);
        }
    }

    TestPlatform platform;
    RecordingProxyRequest request;
    std::unique_ptr<Proxy> made{createOrvaneServiceObserverProxy()};
    OrvaneServiceObserverProxy* proxy = dynamic_cast<OrvaneServiceObserverProxy*>(made.get());
};

TEST_F(ObserverProxy, StandsForNoServiceInThisProcess) {
    EXPECT_EQ(nullptr, proxy->getSubscribingService());
    EXPECT_TRUE(request.sent.empty());
}

TEST_F(ObserverProxy, SendsAnEvent) {
    proxy->orvaneEvent(EVENT_TOKEN_FAILED);

    expectSent("orvaneEvent", {}, {{"type", 6}});
}

TEST_F(ObserverProxy, SendsAMessageForTheUser) {
    proxy->informUserEvent("OV.Copied.contact.ERROR", USER_MSG_ERROR);

    expectSent("informUserEvent", {{"msg", "OV.Copied.contact.ERROR"}}, {{"type", 3}});
}

TEST_F(ObserverProxy, SendsAFullBatch) {
    proxy->orvaneFullSync({"{a,\"b\"}", "17"}, DATA_CALL_LOG);

    expectSent("orvaneFullSync", {{"data", R"("{a,\"b\"}","17")"}}, {{"type", 0}});
}

TEST_F(ObserverProxy, SendsAnIncrementalBatch) {
    proxy->orvaneIncrementalSync({"17"}, DATA_PHONEBOOK);

    expectSent("orvaneIncrementalSync", {{"data", R"("17")"}}, {{"type", 5}});
}

TEST_F(ObserverProxy, SendsAnEmptyBatch) {
    proxy->orvaneFullSync({}, DATA_PHONEBOOK);

    expectSent("orvaneFullSync", {{"data", ""}}, {{"type", 5}});
}

TEST_F(ObserverProxy, SendsVoicemailsInTwoLevelsInKeyOrder) {
    std::map<std::string, Voicemail> lines;
    lines["~"] = {"+49", "Anna", "2026-01-01T00:00:00Z", -1};
    lines["815"] = {"", "Li\"ne", "", 2};

    proxy->orvaneVoicemail(lines);

    expectSent("orvaneVoicemail",
               {{"data", R"("\"815\",\"\",\"Li\\\"ne\",\"\",2","\"~\",\"+49\",\"Anna\",\"2026-01-01T00:00:00Z\",-1")"}},
               {});
}

TEST_F(ObserverProxy, SendsAnEmptyMapOfVoicemails) {
    std::map<std::string, Voicemail> lines;

    proxy->orvaneVoicemail(lines);

    expectSent("orvaneVoicemail", {{"data", ""}}, {});
}

TEST_F(ObserverProxy, OfANewProxyHasNoRequestBound) {
    std::unique_ptr<Proxy> unbound(createOrvaneServiceObserverProxy());

    dynamic_cast<OrvaneServiceObserverProxy&>(*unbound).orvaneEvent(EVENT_TOKEN_FAILED);

    EXPECT_TRUE(request.sent.empty());
    EXPECT_TRUE(platform.log.has(2, "orvaneEvent() proxy is not bound to a request"));
}

} // namespace
