#include "RemoteCall.h"

#include <cstdio>

namespace {

class ObservingProxy : public Proxy, public OrvaneServiceObserverIfc {
public:
    void initProxy(ProxyRequest&) override {}
    Executable* getSubscribingService() override { return nullptr; }
    void informUserEvent(const std::string&, OrvaneServiceTypes::UserMsgType) override {}
    void orvaneEvent(OrvaneServiceTypes::EventType) override {}
    void orvaneFullSync(std::vector<std::string>, OrvaneServiceTypes::DataType) override {}
    void orvaneIncrementalSync(std::vector<std::string>, OrvaneServiceTypes::DataType) override {}
    void orvaneVoicemail(std::map<std::string, OrvaneServiceTypes::Voicemail>&) override {}
};

class OtherProxy : public Proxy {
public:
    void initProxy(ProxyRequest&) override {}
};

std::string refusal(const OrvaneServiceIfc* service, const ProtocolAdapterIfc* adapter) {
    char text[128];
    std::snprintf(text, sizeof text, "handleMessage() ovSvc[%p] protocolAdapter[%p]", static_cast<const void*>(service),
                  static_cast<const void*>(adapter));
    return text;
}

} // namespace

// ---- Messages that are not handled -------------------------------------------------------------------------------

TEST_F(RemoteCall, AMessageThatCannotBeDecodedGetsALineAndNoReply) {
    adapter.decodes = false;

    call("isRunning");

    expectCalls({});
    expectNoReply();
    EXPECT_TRUE(logged(refusal(&service, &adapter)));
}

TEST_F(RemoteCall, AnUnknownProtocolGetsALineAndNoReply) {
    framework.adapter = nullptr;

    call("isRunning");

    expectCalls({});
    expectNoReply();
    EXPECT_TRUE(logged(refusal(&service, nullptr)));
    EXPECT_EQ((std::vector<std::string>{"protocol"}), framework.protocols);
}

TEST_F(RemoteCall, WithoutAServiceTheMessageIsNotHandled) {
    executable = nullptr;

    call("isRunning");

    expectNoReply();
    EXPECT_TRUE(logged(refusal(nullptr, &adapter)));
    EXPECT_EQ("", adapter.decodedText) << "not even decoded";
}

TEST_F(RemoteCall, AServiceOfAnotherKindIsNone) {
    SiblingService other;
    executable = &other;

    call("isRunning");

    expectNoReply();
    EXPECT_TRUE(logged(refusal(nullptr, &adapter)));
}

TEST_F(RemoteCall, BeforeInitInvokerThereIsNoAdapter) {
    invoker.reset(createOrvaneServiceInvoker());

    call("isRunning");

    expectNoReply();
    EXPECT_TRUE(logged(refusal(&service, nullptr)));
}

TEST_F(RemoteCall, AFrameworkThatKnowsNothingGivesNoAdapterAndNoProxy) {
    FrameworkContext plain;
    invoker->initInvoker(&plain);
    std::string interfaceName = "OrvaneServiceObserverIfc";
    std::string subscriber = "subscriber";

    call("isRunning");

    expectNoReply();
    EXPECT_TRUE(logged(refusal(&service, nullptr)));
    EXPECT_EQ(nullptr, plain.findProxy(interfaceName, subscriber));
}

TEST_F(RemoteCall, LinesAreBuiltOnlyWhenTheyAreWanted) {
    platform.log.level = 1;

    call("makeCoffee");

    EXPECT_TRUE(platform.log.lines().empty());
}

// ---- The text of a message ---------------------------------------------------------------------------------------

TEST_F(RemoteCall, TheAdapterIsGivenAllBytesOfTheMessage) {
    adapter.request = Method("isRunning", Method::REQUEST);
    const std::string text("a\0b\n\xff", 5);

    deliver(text);

    EXPECT_EQ(text, adapter.decodedText);
}

TEST_F(RemoteCall, AnEmptyMessageIsHandedToTheAdapter) {
    adapter.request = Method("isRunning", Method::REQUEST);

    deliver("");

    EXPECT_EQ("", adapter.decodedText);
    expectResult("isRunning", true);
}

TEST_F(RemoteCall, OneInvokerHandlesOneMessageAfterTheOther) {
    call("isRunning");
    expectResult("isRunning", true);
    call("clearSyncTokens");
    expectNoReply();
    call("deleteAllCallLogEntries");
    expectResult("deleteAllCallLogEntries", true);
}

// ---- Remote observers --------------------------------------------------------------------------------------------

TEST_F(RemoteCall, SubscribeHandsTheSendersProxyToTheService) {
    ObservingProxy proxy;
    framework.proxy = &proxy;

    call("subscribe");

    expectCalls({"subscribe"});
    EXPECT_EQ(&proxy, service.lastObserver);
    EXPECT_EQ((std::vector<std::pair<std::string, std::string>>{{"OrvaneServiceObserverIfc", "subscriber"}}),
              framework.proxyQueries);
    expectNoReply();
}

TEST_F(RemoteCall, UnsubscribeFindsTheSameProxy) {
    ObservingProxy proxy;
    framework.proxy = &proxy;

    call("unsubscribe");

    expectCalls({"unsubscribe"});
    EXPECT_EQ(&proxy, service.lastObserver);
    EXPECT_EQ((std::vector<std::pair<std::string, std::string>>{{"OrvaneServiceObserverIfc", "subscriber"}}),
              framework.proxyQueries);
    expectNoReply();
}

TEST_F(RemoteCall, WithoutAProxyNothingChanges) {
    call("subscribe");
    call("unsubscribe");

    expectCalls({});
    expectNoReply();
    EXPECT_TRUE(platform.log.lines().empty());
}

TEST_F(RemoteCall, AProxyOfAnotherKindIsNoObserver) {
    OtherProxy proxy;
    framework.proxy = &proxy;

    call("subscribe");
    call("unsubscribe");

    expectCalls({});
    EXPECT_TRUE(platform.log.lines().empty());
}
