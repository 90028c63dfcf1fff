#include "RestTelephone.h"

namespace {

class Extension : public RestTelephone {
protected:
    Extension() {
        expectToken();
        EXPECT_TRUE(service->getToken());
        platform.log.clear();
    }

    void answer(const std::string& body, int answerStatus = 200) {
        expectExtension().answers(answerStatus, body);
        service->getExtension();
    }
    void answerId(const std::string& id) { answer("{\"id\":" + id + "}"); }
};

TEST_F(Extension, IsReadWithTheToken) {
    expectExtension().withHeaders({{"Authorization", "Bearer T1"}}).answers(200, R"({"id":9007199254740993,"x":"y"})");

    service->getExtension();

    EXPECT_EQ("/MODEL/MAC1/restapi/v1.0/account/~/extension/~", platform.network.requests.back().target);
    EXPECT_TRUE(logged(4, "getExtension()"));
    EXPECT_TRUE(logged(6, "handleExtensionResponse() m_userId_old[0] m_userId[9007199254740993][9007199254740993]"));
}

TEST_F(Extension, IsNotReadWhenTheServiceDoesNotRun) {
    service->stop();

    service->getExtension();

    EXPECT_TRUE(logged(4, "getExtension()"));
    EXPECT_EQ(1u, requestCount());
}

TEST_F(Extension, RemembersTheTwoLastAnswers) {
    answerId("1");
    answerId("2");
    answerId("-3");

    EXPECT_TRUE(logged(6, "handleExtensionResponse() m_userId_old[1] m_userId[2][2]"));
    EXPECT_TRUE(logged(6, "handleExtensionResponse() m_userId_old[2] m_userId[-3][-3]"));
}

TEST_F(Extension, KeepsTheIdOfAnAnswerWithoutOne) {
    answerId("1");
    answer("{}");

    EXPECT_TRUE(logged(6, "handleExtensionResponse() m_userId_old[1] m_userId[1][1]"));
}

TEST_F(Extension, KeepsTheIdWhenItIsNoInteger) {
    answerId("1");
    answer(R"({"id":"2"})");

    EXPECT_TRUE(logged(6, "handleExtensionResponse() m_userId_old[1] m_userId[1][1]"));
}

TEST_F(Extension, KeepsTheIdOfAnAnswerThatIsNoObject) {
    answerId("1");
    answer("[]");

    EXPECT_TRUE(logged(6, "handleExtensionResponse() m_userId_old[1] m_userId[1][1]"));
}

TEST_F(Extension, FailsByAStatusOtherThan200) {
    answerId("1");
    answer("gone", 404);
    EXPECT_TRUE(logged(2, "handleExtensionResponse() HTTP[404] responseData:\ngone"));

    answerId("2");
    EXPECT_TRUE(logged(6, "handleExtensionResponse() m_userId_old[1] m_userId[2][2]")) << "nothing was changed";
    EXPECT_TRUE(service->isRunning());
}

TEST_F(Extension, FailsByAnEmptyBody) {
    answer("");

    EXPECT_TRUE(logged(2, "handleExtensionResponse() HTTP[200] responseData:\n"));
}

TEST_F(Extension, FailsByABodyThatDoesNotParse) {
    answerId("1");
    answer("{\"id\":");
    EXPECT_TRUE(platform.log.hasBeginning(2, "handleExtensionResponse() error on line 1:6(6) "));

    answerId("2");
    EXPECT_TRUE(logged(6, "handleExtensionResponse() m_userId_old[1] m_userId[2][2]"));
}

TEST_F(Extension, FailsSilentlyWithoutAnAnswer) {
    answerId("1");
    answer("down", 503);

    EXPECT_FALSE(platform.log.contains("handleExtensionResponse() HTTP"));
    answerId("2");
    EXPECT_TRUE(logged(6, "handleExtensionResponse() m_userId_old[1] m_userId[2][2]"));
}

class User : public Extension {
protected:
    bool changesTo(const std::string& id) {
        expectToken();
        expectExtension().answers(200, "{\"id\":" + id + "}");
        return service->hasUserChanged();
    }
};

TEST_F(User, HasChangedWhenTheTwoLastAnswersDiffer) {
    answerId("1");

    EXPECT_TRUE(changesTo("2"));

    EXPECT_TRUE(logged(6, "hasUserChanged() retVal[true]"));
}

TEST_F(User, HasNotChangedWhenTheTwoLastAnswersAgree) {
    answerId("1");

    EXPECT_FALSE(changesTo("1"));

    EXPECT_TRUE(logged(6, "hasUserChanged() retVal[false]"));
}

TEST_F(User, StillCountsAsChangedWhenTheExtensionCannotBeRead) {
    answerId("1");
    answerId("2");
    expectToken();
    expectExtension().answers(500, "");

    EXPECT_TRUE(service->hasUserChanged());
}

TEST_F(User, IsComparedEvenWhenNoTokenCame) {
    answerId("1");
    expectToken().answers(500, "");

    EXPECT_TRUE(service->hasUserChanged()) << "without a token nobody is asked, and the first answer followed none";

    EXPECT_FALSE(service->isRunning());
}

TEST_F(User, IsNotAskedForWhenTheServiceDoesNotRun) {
    service->stop();

    service->reloadAllDataIfUserChanged();

    EXPECT_TRUE(logged(4, "reloadAllDataIfUserChanged()"));
    EXPECT_EQ(1u, requestCount());
}

TEST_F(User, WhoHadChangedBeforeTheTokenFailedIsLoggedInAnew) {
    answerId("1");
    expectToken().answers(500, "");
    expectToken();
    expectExtension();
    expectGrants();

    service->reloadAllDataIfUserChanged();

    EXPECT_TRUE(logged(4, "reloadAllDataIfUserChanged() user has changed, reloading data"));
    EXPECT_TRUE(service->isRunning());
}

TEST_F(User, ThatIsTheSameKeepsAllData) {
    withObserver();
    answerId("1");
    expectToken();
    expectExtension().answers(200, R"({"id":1})");

    service->reloadAllDataIfUserChanged();

    EXPECT_TRUE(service->isRunning());
    EXPECT_TRUE(observer.events.empty());
    EXPECT_FALSE(platform.log.contains("user has changed"));
}

TEST_F(User, ThatHasChangedBeginsAnew) {
    withObserver();
    answerId("1");
    observer.reaction = [this](std::vector<std::string>&) {
        EXPECT_TRUE(logged(4, "stop()")) << "the service stops before its data go";
    };
    expectToken();
    expectExtension().answers(200, R"({"id":2})");
    expectToken();
    expectExtension().answers(200, R"({"id":2})");
    expectGrants();

    service->reloadAllDataIfUserChanged();

    EXPECT_TRUE(logged(4, "reloadAllDataIfUserChanged() user has changed, reloading data"));
    EXPECT_TRUE(logged(6, "deleteAllData() hotDesking[true]"));
    EXPECT_TRUE(service->isRunning());
    const auto emptied = observer.of("orvaneFullSync");
    ASSERT_EQ(3u, emptied.size()) << "call log and phonebook by the deletion, call log by the start";
    EXPECT_EQ(0, emptied[0].type);
    EXPECT_EQ(5, emptied[1].type);
    EXPECT_EQ(0, emptied[2].type);
    for (const auto& event : emptied) {
        EXPECT_TRUE(event.data.empty());
    }
}

} // namespace
