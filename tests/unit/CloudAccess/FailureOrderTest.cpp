#include "RestTelephone.h"

#include <regex>

using Steps = std::vector<std::string>;

/// Failed logins are repeated after a random time; here it is the shortest.
int rand() noexcept {
    return 0;
}

namespace {

/// What a request that fails does to the platform, step by step.
class FailureOrder : public RestTelephone {
protected:
    /// The steps since platform.steps.begin(), without the connection's address.
    Steps steps() const {
        static const std::regex address("0x[0-9a-f]+");
        Steps found;
        for (const std::string& step : platform.steps.steps()) {
            found.push_back(std::regex_replace(step, address, "X"));
        }
        return found;
    }
    static Steps join(Steps first, const Steps& second) {
        first.insert(first.end(), second.begin(), second.end());
        return first;
    }

    const Steps connecting = {
        "take m_connectionSem", "log 4 clearSecureConnection() force[false] m_secureConnEstablisher[(nil)]",
        "set up client 44",     "connection option 36",
        "connection option 37", "connect cloud.example",
    };
};

TEST_F(FailureOrder, OfAConnectionThatIsRefused) {
    platform.network.connectFails = true;
    platform.steps.begin();

    EXPECT_FALSE(get());

    EXPECT_EQ(join(connecting, {"log 3 connectionHandler() no connection possible.",
                                "log 4 clearSecureConnection() force[true] m_secureConnEstablisher[(nil)]",
                                "give m_connectionSem"}),
              steps());
}

TEST_F(FailureOrder, OfARequestThatCannotBeSent) {
    expectPath().failsToSend();
    platform.steps.begin();

    EXPECT_FALSE(get());

    EXPECT_EQ(join(connecting, {"request GET /path", "close connection",
                                "log 4 clearSecureConnection() force[true] m_secureConnEstablisher[(nil)]",
                                "give m_connectionSem", "log 2 connectionHandler() HttpClient::FAILURE"}),
              steps());
}

TEST_F(FailureOrder, OfAnAnswerThatBreaksOff) {
    expectPath().answers(200, "half").breaksOff();
    platform.steps.begin();

    EXPECT_FALSE(get());

    EXPECT_EQ(join(connecting,
                   {"request GET /path",
                    "log 6 connectionHandler() statusCode[200] result[1] maxResponseLength[1048576] totalLength[4] "
                    "responseData.length[4]",
                    "log 4 clearSecureConnection() force[false] m_secureConnEstablisher[X]", "give m_connectionSem",
                    "log 2 connectionHandler() HttpClient::FAILURE on reading response"}),
              steps());
}

TEST_F(FailureOrder, OfATokenThatIsRefused) {
    withObserver();
    expectToken();
    EXPECT_TRUE(service->getToken());
    expectToken().answers(401, "no").whileAwaited([this] { platform.steps.begin(); });
    observer.reaction = [this](std::vector<std::string>&) {
        platform.steps.add("observer ", std::to_string(observer.events.back().type));
    };
    platform.log.divertedTo = [this](const RecordedLog::Line& line) {
        if (line.level <= 2 || line.text.find("force[true]") != std::string::npos) {
            platform.steps.add("^ running: ", service->isRunning() ? "yes" : "no");
        }
    };

    EXPECT_FALSE(service->getToken());
    platform.log.divertedTo = nullptr;

    EXPECT_EQ((Steps{"log 6 connectionHandler() statusCode[401] result[0] maxResponseLength[1048576] totalLength[2] "
                     "responseData.length[2]",
                     "log 4 clearSecureConnection() force[false] m_secureConnEstablisher[X]", "give m_connectionSem",
                     "log 6 connectionHandler() unexpected response\nno\n", "log 2 getToken() failed", "^ running: yes",
                     "take m_connectionSem", "close connection",
                     "log 4 clearSecureConnection() force[true] m_secureConnEstablisher[(nil)]", "^ running: no",
                     "give m_connectionSem", "take m_observersSem", "observer 6", "give m_observersSem",
                     "log 6 getToken() retVal[false] delay[60000]", "timer create 6 60000", "timer start 6"}),
              steps());
}

} // namespace
