#include "ChannelTelephone.h"

namespace {

class MessageEnvelopeTest : public ChannelTelephone {
protected:
    struct Parsed {
        bool result;
        std::string type;
        TestJson::Value metadata;
        TestJson::Value data;
    };
    Parsed parse(const std::string& frame) {
        const TestJson::Value root = TestJson::parse(frame);
        std::string type = "before";
        json_t* metadata = nullptr;
        json_t* data = nullptr;
        const bool result = service->getMsgTypeAndStoreWsc(type, &metadata, &data, root.get());
        return {result, type, TestJson::Value(json_incref(metadata)), TestJson::Value(json_incref(data))};
    }
    static std::string text(const TestJson::Value& value) { return value ? TestJson::dump(value.get()) : "none"; }
    /// A frame with these members in its metadata besides type and id.
    static std::string frameWith(const std::string& members) {
        return R"([{"type":"T","messageId":"1",)" + members + "}]";
    }
};

TEST_F(MessageEnvelopeTest, MetadataAloneAreAFrame) {
    const Parsed parsed = parse(R"([{"type":"T","messageId":"1"}])");
    EXPECT_TRUE(parsed.result);
    EXPECT_EQ("T", parsed.type);
    EXPECT_EQ(R"({"type": "T", "messageId": "1"})", text(parsed.metadata));
    EXPECT_EQ("none", text(parsed.data));
}

TEST_F(MessageEnvelopeTest, TheTwoElementsMayStandInEitherOrder) {
    for (const std::string frame :
         {R"([{"type":"T","messageId":"1"},{"a":2}])", R"([{"a":2},{"type":"T","messageId":"1"}])"}) {
        const Parsed parsed = parse(frame);
        EXPECT_TRUE(parsed.result) << frame;
        EXPECT_EQ("T", parsed.type) << frame;
        EXPECT_EQ(R"({"type": "T", "messageId": "1"})", text(parsed.metadata)) << frame;
        EXPECT_EQ(R"({"a": 2})", text(parsed.data)) << frame;
    }
}

TEST_F(MessageEnvelopeTest, OfTwoElementsThatQualifyTheLaterOneWins) {
    const Parsed parsed = parse(R"([{"type":"A","messageId":"1"},{"type":"B","messageId":"2"}])");
    EXPECT_TRUE(parsed.result);
    EXPECT_EQ("B", parsed.type);
    EXPECT_EQ(R"({"type": "B", "messageId": "2"})", text(parsed.metadata));
    EXPECT_EQ("none", text(parsed.data));
}

TEST_F(MessageEnvelopeTest, EachElementThatQualifiesBringsItsSessionContext) {
    logIn();
    const std::string context = R"({"type":"A","messageId":"1","status":200,"wsc":{"token":"a","sequence":1}})";
    receive("[" + context + R"(,{"type":"B","messageId":"2"}])");
    EXPECT_TRUE(logged(3, "onMessage() unknown message type 'B'"));
    EXPECT_EQ("a", sessionContext());
}

TEST_F(MessageEnvelopeTest, WithoutStringTypeAndStringIdAnElementIsData) {
    for (const std::string element :
         {R"({"type": "T"})", R"({"messageId": "1"})", R"({"type": 1, "messageId": "1"})",
          R"({"type": "T", "messageId": 1})", "{}", "[]", "17", "null", R"("type messageId")"}) {
        const Parsed parsed = parse("[" + element + "]");
        EXPECT_FALSE(parsed.result) << element;
        EXPECT_EQ("", parsed.type) << element;
        EXPECT_EQ("none", text(parsed.metadata)) << element;
        EXPECT_EQ(element, text(parsed.data));
    }
    EXPECT_TRUE(log().lines().empty());
}

TEST_F(MessageEnvelopeTest, OfTwoElementsOfDataTheLaterOneStays) {
    const Parsed parsed = parse(R"([{"a":1},{"b":2}])");
    EXPECT_FALSE(parsed.result);
    EXPECT_EQ(R"({"b": 2})", text(parsed.data));
}

TEST_F(MessageEnvelopeTest, TypeAndIdAreFoundInNestedObjects) {
    const Parsed parsed = parse(R"([{"inner":{"type":"T","deeper":{"messageId":"1"}}}])");
    EXPECT_TRUE(parsed.result);
    EXPECT_EQ("T", parsed.type);
}

TEST_F(MessageEnvelopeTest, DataWithANestedTypeAndIdPassForMetadata) {
    const Parsed parsed = parse(R"([{"type":"T","messageId":"1"},{"body":{"type":"U","messageId":"2"}}])");
    EXPECT_TRUE(parsed.result);
    EXPECT_EQ("U", parsed.type);
    EXPECT_EQ("none", text(parsed.data));
}

TEST_F(MessageEnvelopeTest, AnArrayOfAnotherSizeIsRefused) {
    EXPECT_FALSE(parse("[]").result);
    EXPECT_TRUE(logged(2, "parseClientRequestMsg() - the receiving message has size 0 of the json object. It has to "
                          "contain metadata. Data are optional."));
    EXPECT_FALSE(parse(R"([{"type":"T","messageId":"1"},{},{}])").result);
    EXPECT_TRUE(logged(2, "parseClientRequestMsg() - the receiving message has size 3 of the json object. It has to "
                          "contain metadata. Data are optional."));
}

TEST_F(MessageEnvelopeTest, ARootThatIsNoArrayIsRefused) {
    EXPECT_FALSE(parse("{}").result);
    EXPECT_TRUE(logged(2, "parseClientRequestMsg() - message is not json array"));
    std::string type = "before";
    json_t* metadata = nullptr;
    json_t* data = nullptr;
    EXPECT_FALSE(service->getMsgTypeAndStoreWsc(type, &metadata, &data, nullptr));
    EXPECT_EQ("", type);
    EXPECT_EQ(2, log().count(2, "parseClientRequestMsg() - message is not json array"));
}

TEST_F(MessageEnvelopeTest, ARisingSessionContextIsStored) {
    logIn();
    receive(frameWith(R"("status":200,"wsc":{"token":"a","sequence":1})"));
    EXPECT_EQ("a", sessionContext());
    EXPECT_TRUE(logged(6, "getMsgTypeAndStoreWsc() - WebSocket Session Context: token[a], sequence[1]"));
    receive(frameWith(R"("status":200,"wsc":{"token":"b","sequence":7})"));
    EXPECT_EQ("b", sessionContext());
    EXPECT_TRUE(logged(6, "getMsgTypeAndStoreWsc() - WebSocket Session Context: token[b], sequence[7]"));
}

TEST_F(MessageEnvelopeTest, ASequenceThatDoesNotRiseChangesNothing) {
    logIn();
    receive(frameWith(R"("status":200,"wsc":{"token":"a","sequence":5})"));
    receive(frameWith(R"("status":200,"wsc":{"token":"b","sequence":5})"));
    receive(frameWith(R"("status":200,"wsc":{"token":"c","sequence":4})"));
    EXPECT_EQ("a", sessionContext());
    EXPECT_TRUE(logged(3, "getMsgTypeAndStoreWsc() - WebSocket Session Context: sequence(5) is not greater than last "
                          "one(5)!"));
    EXPECT_TRUE(logged(3, "getMsgTypeAndStoreWsc() - WebSocket Session Context: sequence(4) is not greater than last "
                          "one(5)!"));
}

TEST_F(MessageEnvelopeTest, TheFirstSequenceHasToBeAboveZero) {
    logIn();
    receive(frameWith(R"("status":200,"wsc":{"token":"a","sequence":0})"));
    EXPECT_EQ("", sessionContext());
    EXPECT_TRUE(logged(3, "getMsgTypeAndStoreWsc() - WebSocket Session Context: sequence(0) is not greater than last "
                          "one(0)!"));
}

TEST_F(MessageEnvelopeTest, AContextWithoutSequenceOrTokenIsLoggedAndPassedOver) {
    logIn();
    receive(frameWith(R"("status":200,"wsc":{"token":"a","sequence":"1"})"));
    EXPECT_TRUE(logged(3, "getMsgTypeAndStoreWsc() - WebSocket Session Context: sequence not found!"));
    receive(frameWith(R"("status":200,"wsc":{"token":1,"sequence":9})"));
    EXPECT_TRUE(logged(3, "getMsgTypeAndStoreWsc() - WebSocket Session Context: token not found!"));
    EXPECT_EQ("", sessionContext());
    // The sequence without token was not stored either.
    receive(frameWith(R"("status":200,"wsc":{"token":"b","sequence":1})"));
    EXPECT_EQ("b", sessionContext());
}

TEST_F(MessageEnvelopeTest, TheContextIsReadAtStatus200Only) {
    logIn();
    const std::string context = R"("wsc":{"token":"a","sequence":1})";
    receive(frameWith(R"("status":404,)" + context));
    EXPECT_TRUE(logged(2, "getMsgTypeAndStoreWsc() - status(404)"));
    receive(frameWith(R"("status":"200",)" + context));
    receive(frameWith(context));
    receive(frameWith(R"("status":200,"wsc":"a")"));
    EXPECT_EQ("", sessionContext());
    EXPECT_EQ("getMsgTypeAndStoreWsc() - status(404)\n", log().text(2));
}

TEST_F(MessageEnvelopeTest, AFrameWithAnotherStatusIsDispatchedAllTheSame) {
    logIn();
    receive(R"([{"type":"Error","messageId":"1","status":500}])");
    EXPECT_TRUE(logged(2, "getMsgTypeAndStoreWsc() - status(500)"));
    EXPECT_TRUE(logged(6, "handleMsgError"));
}

TEST_F(MessageEnvelopeTest, EveryFrameIsLoggedWithItsSize) {
    logIn();
    receive("[ ]");
    EXPECT_TRUE(logged(6, "onMessage() size[3] msg[[ ]]"));
}

TEST_F(MessageEnvelopeTest, ATextThatIsNoJsonIsDropped) {
    openSession();
    clearRecords();
    receive("[\n{]");
    EXPECT_TRUE(logged(2, "onMessage() error on line 2:2(4) string or '}' expected near ']'")) << log().text(2);
    EXPECT_TRUE(timers().calls.empty());
}

TEST_F(MessageEnvelopeTest, BytesThatAreNoUtf8AreDropped) {
    openSession();
    log().clear();
    receive("[{\"type\":\"\xff\",\"messageId\":\"1\"}]");
    EXPECT_TRUE(log().contains("onMessage() error on line 1:"));
}

TEST_F(MessageEnvelopeTest, AFrameIsOneStrictJsonTextThatMayDoubleAKey) {
    openSession();
    const std::vector<std::pair<std::string, std::pair<int, std::string>>> entries = {
        {R"([{"type":"T","type":"U","messageId":"1"}])", {3, "onMessage() unknown message type 'U'"}},
        {R"([{"type":"T","messageId":"1"}] x)",
         {2, "onMessage() error on line 1:32(32) end of file expected near 'x'"}},
        {"17", {2, "onMessage() error on line 1:2(2) '[' or '{' expected near '17'"}},
        {R"([{"type":"\u0000","messageId":"1"}])",
         {2, R"(onMessage() error on line 1:17(17) \u0000 is not allowed without JSON_ALLOW_NUL near '"\u0000"')"}},
    };
    for (const auto& [frame, line] : entries) {
        log().clear();
        receive(frame);
        EXPECT_TRUE(logged(line.first, line.second)) << frame << "\n" << log().text(line.first);
    }
}

TEST_F(MessageEnvelopeTest, AFrameCarriesCharactersBeyondAsciiAsTheyAre) {
    openSession();
    service->setSusbcriptionId("sub-\xC3\xBC");
    ASSERT_TRUE(service->updateSubscriptionOvEvents());
    EXPECT_NE(std::string::npos, lastFrame().find("\"/restapi/v1.0/subscription/sub-\xC3\xBC\"")) << lastFrame();
}

TEST_F(MessageEnvelopeTest, JsonThatIsNoArrayIsDropped) {
    openSession();
    clearRecords();
    receive(R"({"type":"Error","messageId":"1"})");
    EXPECT_TRUE(logged(3, "onMessage() received message is not a json array"));
    EXPECT_FALSE(logged(6, "handleMsgError"));
    EXPECT_TRUE(timers().calls.empty());
}

TEST_F(MessageEnvelopeTest, AFrameWithoutMetadataIsDroppedAndIsNoActivity) {
    openSession();
    clearRecords();
    receive(R"([{"type":"Error"}])");
    EXPECT_TRUE(logged(6, "onMessage() getMsgTypeAndStoreWsc failed()!"));
    EXPECT_TRUE(timers().calls.empty());
}

TEST_F(MessageEnvelopeTest, EveryValidFrameIsActivity) {
    openSession();
    const std::string idleTimer = std::to_string(runningTimer(idleMilliseconds));
    for (const std::string type : {"Error", "Unheard"}) {
        timers().calls.clear();
        receive(R"([{"type":")" + type + R"(","messageId":"1"}])");
        EXPECT_EQ((std::vector<std::string>{"reset " + idleTimer}), timers().calls) << type;
    }
}

TEST_F(MessageEnvelopeTest, AnIdleTimerThatDoesNotRunIsNotStartedByAFrame) {
    openSession();
    timers().stopTimer(runningTimer(idleMilliseconds));
    timers().calls.clear();
    receive(R"([{"type":"Error","messageId":"1"}])");
    EXPECT_TRUE(timers().calls.empty());
}

TEST_F(MessageEnvelopeTest, WithoutTheFrameworksContextAFrameIsDispatchedAllTheSame) {
    receive(R"([{"type":"Error","messageId":"1"}])");
    EXPECT_TRUE(logged(6, "handleMsgError"));
}

TEST_F(MessageEnvelopeTest, EachTypeHasItsHandler) {
    openSession();
    const std::vector<std::pair<std::string, std::pair<int, std::string>>> entries = {
        {"ConnectionDetails", {4, "handleMsgConnectioDetails()"}},
        {"ServerNotification", {3, "handleMsgServerNotification() - connot find JSON item[event]"}},
        {"ClientRequest", {4, "handleMsgClientRequest()"}},
        {"Error", {6, "handleMsgError"}},
        {"Heartbeat", {6, "handleMsgHeartbeat"}},
        {"heartbeat", {3, "onMessage() unknown message type 'heartbeat'"}},
        {"", {3, "onMessage() unknown message type ''"}},
    };
    for (const auto& [type, line] : entries) {
        log().clear();
        receive(R"([{"type":")" + type + R"(","messageId":"1"}])");
        EXPECT_TRUE(logged(line.first, line.second)) << type;
    }
}

TEST_F(MessageEnvelopeTest, AnErrorLeavesTheIdAndTheRequestPending) {
    subscribeAll();
    ASSERT_TRUE(service->refreshOvEventsSubscription());
    const std::string id = TestJson::messageId(lastFrame());
    receive(R"([{"type":"Error","messageId":")" + id + R"("},{"errorCode":"X"}])");
    EXPECT_FALSE(service->handleMsgError(nullptr, nullptr));
    // The id is still known, and the renewal awaited: only then is a subscription of another id refused.
    receive(reply(id, subscription("sub-2", "2026-01-01T00:30:00Z", "Active", 1800, "")));
    EXPECT_EQ("handleMsgClientRequest() - subscription OV events renew and ID of subscription is not equeal "
              "old(sub-1), new(sub-2). Message is not processed!\n",
              log().text(2));
}

TEST_F(MessageEnvelopeTest, DeepNestingIsRefusedByTheParser) {
    openSession();
    receive(std::string(100000, '['));
    EXPECT_TRUE(log().contains("onMessage() error on line"));
}

} // namespace
