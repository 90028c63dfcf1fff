#include "EventChannel/ChannelTelephone.h"

#include <cstdlib>
#include <fstream>
#include <regex>

using namespace CloudAnswers;

namespace {

/// Whole roads of the service, step by step, as they stand in roads/*.txt: every log line, semaphore, request, timer,
/// thread, read and write, call of a sibling, frame and publication, and the order of them all. A road that is meant to
/// change is written anew by this test with ORVANE_WRITE_ROADS=1, and its difference is read before it is kept.
class Roads : public ChannelTelephone {
protected:
    Roads() {
        platform.locks.allowAcrossRequests("m_dndSem");
        platform.network.answersUnexpected = [this](const ScriptedNetwork::Request& request, Exchange& exchange) {
            if (request.method == HttpClientIfc::HTTP_DELETE) {
                exchange.answers(204);
                return;
            }
            exchange.answers(200, answerTo(request.target));
            for (const auto& [part, body] : answers) {
                if (request.target.find(part) != std::string::npos) {
                    exchange.answers(200, body);
                }
            }
        };
        observer.reaction = [this](std::vector<std::string>& data) {
            const RecordingObserver::Event& event = observer.events.back();
            platform.steps.add("observer ", event.operation + " " + std::to_string(event.type) + " " + event.message);
            for (const std::string& record : data) {
                platform.steps.add("    ", record);
            }
        };
    }

    /// Logged in, with a session and a confirmed subscription, and a shared line that is ready.
    void liveOn() {
        withEverything();
        connect();
        service->overviewChangedNotification("sip:900@provider.example", "line 900", true, 1, ELineVisualAlert());
        service->onOpen(0);
        receive(connectionDetails(Details()));
        receive(confirmation("2026-01-01T00:00:00Z"));
        receive(contextFrame("wsc-1", 7));
        passSeconds(1);
        platform.steps.begin();
    }
    std::string confirmation(const std::string& creationTime) {
        return reply(TestJson::messageId(lastFrame()),
                     subscription("sub-1", creationTime, "Active", 1800, requestedFilters(lastFrame())));
    }

    /// What differs from run to run, and line breaks inside a step.
    static std::string steady(const std::string& step) {
        static const std::regex random("[0-9a-f]{8}(-[0-9a-f]{4}){3}-[0-9a-f]{12}|0x[0-9a-f]+|\\(nil\\)");
        static const std::regex drawn("\\b3[2-5][0-9]{5}\\b"); // from 90 to 100 % of an hour
        const std::string text = std::regex_replace(std::regex_replace(step, random, "X"), drawn, "3240000..3600000");
        return std::regex_replace(text, std::regex("\n"), "\\n");
    }
    /// What was recorded is what stands in the road's file.
    void expectRoad(const std::string& name) {
        const std::string path = std::string(ROADS) + "/" + name + ".txt";
        std::vector<std::string> steps;
        for (const std::string& step : platform.steps.steps()) {
            steps.push_back(steady(step));
        }
        if (std::getenv("ORVANE_WRITE_ROADS") != nullptr) {
            std::ofstream file(path);
            for (const std::string& step : steps) {
                file << step << "\n";
            }
        }
        std::ifstream file(path);
        ASSERT_TRUE(file) << path;
        std::string line;
        std::size_t at = 0;
        for (; std::getline(file, line); ++at) {
            ASSERT_LT(at, steps.size()) << path << " goes on with: " << line;
            ASSERT_EQ(line, steps[at]) << path << ":" << at + 1;
        }
        EXPECT_EQ(at, steps.size()) << "one more step: " << steps[at];
    }

    const std::string ownEvents = "/restapi/v1.0/account/1/extension/4711/";
    std::map<std::string, std::string> answers; ///< bodies by a part of the target, instead of the usual ones
};

TEST_F(Roads, FromInitToTheSubscription) {
    withEverything();
    platform.steps.begin();

    connect();
    service->overviewChangedNotification("sip:900@provider.example", "line 900", true, 1, ELineVisualAlert());
    service->onOpen(0);
    receive(connectionDetails(Details()));
    receive(confirmation("2026-01-01T00:00:00Z"));

    expectRoad("start");
}

TEST_F(Roads, OfAPollWithNewChangedAndDeletedCalls) {
    liveOn();
    answers["/~/call-log-sync"] =
        callLog("c2", {dialledCall("3", "+49303"), call("1").inbound("Missed"), missedCall("2").gone(), missedCall("4"),
                       call("5").outbound("Stopped")});
    answers["/900/call-log-sync"] = callLog("l2", {call("11"), missedCall("12")});

    passSeconds(60);
    passSeconds(60);

    expectRoad("poll");
}

TEST_F(Roads, OfACallThatEnds) {
    liveOn();

    receive(notification(ownEvents + "presence?detailedTelephonyState=true", extensionId,
                         R"({"activeCalls":[{"telephonyStatus":"NoCall","telephonySessionId":"s-3"}]})"));
    answers["/~/call-log-sync"] = callLog("c2", {call("3")});
    passSeconds(10);

    expectRoad("call-ends");
}

TEST_F(Roads, OfEventsOfVoicemailAndPresence) {
    liveOn();
    const std::string status = R"("dndStatus":"DoNotAcceptAnyCalls"})";

    receive(notification(ownEvents + "message-store?direction=Inbound&type=Voicemail", extensionId,
                         R"({"extensionId":4711})"));
    receive(notification("/restapi/v1.0/account/1/extension/900/message-store?direction=Inbound&type=Voicemail", "900",
                         R"({"extensionId":900})"));
    receive(notification(ownEvents + "presence/dnd", extensionId, R"({"extensionId":"4711",)" + status));
    receive(notification(ownEvents + "presence/line/presence/dnd", extensionId, R"({"extensionId":"5001",)" + status));
    receive(notification(ownEvents + "fax", extensionId, "{}"));

    expectRoad("events");
}

TEST_F(Roads, OfTheSubscriptionsRenewal) {
    liveOn();

    service->timerEvent(runningTimer(renewalMilliseconds));
    receive(confirmation("2026-01-01T00:30:00Z"));
    service->cancelSubscriptionOvEvents();
    service->updateSubscriptionOvEvents();

    expectRoad("renewal");
}

TEST_F(Roads, OfASilentChannel) {
    liveOn();

    service->timerEvent(runningTimer(idleMilliseconds));
    const std::string id = TestJson::messageId(lastFrame());
    service->timerEvent(runningTimer(heartbeatMilliseconds));
    receive(R"([{"type":"Heartbeat","messageId":")" + id + R"("}])");
    receive(R"([{"type":"Error","messageId":"7"},[{"errorCode":"E-1","message":"text"}]])");

    expectRoad("heartbeat");
}

TEST_F(Roads, OfALostPong) {
    liveOn();

    service->onPongTimeout();
    service->updateSubscriptionOvEvents();
    platform.context.deliverDue();
    runThreads();
    service->onOpen(0);
    Details details;
    details.recoveryState = "Successful";
    receive(connectionDetails(details));

    expectRoad("lost-pong");
}

TEST_F(Roads, OfARecoveryThatTheProviderRefuses) {
    liveOn();

    service->onPongTimeout();
    platform.context.deliverDue();
    runThreads();
    service->onOpen(0);
    Details details;
    details.recoveryState = "Failed";
    receive(connectionDetails(details));

    expectRoad("recovery-fails");
}

TEST_F(Roads, OfAnAbnormalClose) {
    liveOn();

    service->onError(5, "broken");
    service->onClose(0, 1006, "gone");
    passSeconds(30);
    runThreads();

    expectRoad("abnormal-close");
}

TEST_F(Roads, OfAnInterfaceThatGoesAndComesBack) {
    liveOn();

    interfaceChanges("down");
    service->refreshCallLogEntries();
    runThreads();
    passSeconds(130);
    interfaceChanges("up");
    runThreads();

    expectRoad("interface");
}

TEST_F(Roads, OfAnInterfaceThatComesBackInTime) {
    liveOn();

    interfaceChanges("down");
    passSeconds(10);
    interfaceChanges("up");

    expectRoad("interface-in-time");
    runThreads();
}

TEST_F(Roads, OfAnInterfaceThatGoesBeforeTheChannelStands) {
    withEverything();
    connect();
    platform.steps.begin();

    interfaceChanges("down");
    interfaceChanges("up");

    expectRoad("interface-early");
    runThreads();
}

TEST_F(Roads, OfAChangeOfTheServer) {
    liveOn();

    platform.dataManager.deliverGroup({{PldsTags::ORVANE_API_SERVER_ADDRESS, "other.example"},
                                       {PldsTags::ORVANE_API_SYNC_INTERVAL, "120"},
                                       {PldsTags::ORVANE_API_SYNC_PHONEBOOK, PldsTags::VALUE_FALSE}});
    runThreads();

    expectRoad("new-server");
}

TEST_F(Roads, OfAServerThatIsTakenAway) {
    liveOn();

    platform.dataManager.deliverGroup({{PldsTags::ORVANE_API_SERVER_ADDRESS, ""}});
    runThreads();

    expectRoad("no-server");
}

TEST_F(Roads, OfTheDoNotDisturbSwitch) {
    liveOn();

    service->updateUserPresenceStatus(true);
    platform.dataManager.deliver(PldsTags::ORVANE_API_SYNC_DND, PldsTags::VALUE_FALSE);
    runThreads();
    platform.dataManager.deliver(PldsTags::ORVANE_API_SYNC_DND, PldsTags::VALUE_TRUE);
    runThreads();

    expectRoad("do-not-disturb");
}

TEST_F(Roads, OfContactsThatAreWrittenBack) {
    liveOn();

    service->addNewContact("<contact><firstname>Dora</firstname></contact>");
    platform.network.expect(HttpClientIfc::HTTP_POST, path(own("/address-book/contact")), R"({"firstName": "Emil"})")
        .answers(403, "no");
    service->addNewContact("<contact><firstname>Emil</firstname></contact>");
    service->updateEditedContact("<contact><id>1</id><firstname>Dora</firstname></contact>");
    service->deleteSingleContact("1");

    expectRoad("contacts");
}

TEST_F(Roads, OfCallsThatAreSeenAndDeleted) {
    liveOn();

    service->ageMissedCall("2");
    service->ageMissedCalls({"2", "12"});
    service->isMissedCallViewed("2");
    service->deleteCallLogEntry("2");
    service->deleteAllCallLogEntries();

    expectRoad("deletion");
}

TEST_F(Roads, OfViewedCallsInFullSynchronisations) {
    liveOn();

    service->ageMissedCalls({"1", "2", "77"});
    service->clearSyncTokens();
    passSeconds(60);
    passSeconds(60);

    expectRoad("viewed-calls");
}

TEST_F(Roads, OfRefreshesOnDemand) {
    liveOn();

    service->refreshCallLogEntries();
    service->refreshPhonebookEntries();
    service->refreshVoicemailEntries();
    runThreads();
    service->clearSyncTokens();

    expectRoad("refresh");
}

TEST_F(Roads, OfAnotherUser) {
    liveOn();
    expectToken();
    platform.network.expectGet(path(own(""))).answers(200, extension(9999));

    service->reloadAllData();
    passSeconds(1);
    runThreads();

    expectRoad("another-user");
}

TEST_F(Roads, OfWaitingMessages) {
    liveOn();

    service->sipVoicemailStatusProcessed("sip:4711@provider.example", "own", true);
    service->sipVoicemailStatusProcessed("sip:900", "line 900", true);
    service->sipVoicemailStatusProcessed("sip:900", "line 900", false);
    service->sipVoicemailStatusProcessed("sip:4711@provider.example", "own", false);

    expectRoad("message-waiting");
}

TEST_F(Roads, OfSharedLinesThatComeAndGo) {
    liveOn();
    answers["/grant"] = grants({{"901", "line 901"}, {"902", "line 902"}});

    service->devicesChanged();
    service->systemStatusChange("Enabled", "info");

    expectRoad("shared-lines");
}

TEST_F(Roads, OfFunctionKeys) {
    answers["/5001/presence"] = presence("DoNotAcceptAnyCalls", 5001);
    liveOn();

    withWatchedColleague("101", "5002");
    platform.store.change(PldsTags::FUNCTION_KEY_ID + "101", "59");
    platform.store.change(PldsTags::FUNCTION_KEY_ID + "101", "59");
    platform.store.change(PldsTags::FUNCTION_KEY_ID + "101", "1");
    platform.store.change(PldsTags::FUNCTION_KEY_ID + "100", "1");

    expectRoad("function-keys");
}

TEST_F(Roads, OfTheRenewalOfTheToken) {
    liveOn();
    platform.context.stopTimer(runningTimer(pollingMilliseconds));
    platform.context.stopTimer(runningTimer(idleMilliseconds));
    platform.context.stopTimer(runningTimer(renewalMilliseconds));
    platform.steps.begin();

    passSeconds(3600);

    expectRoad("token");
}

TEST_F(Roads, OfASecondObserver) {
    RecordingObserver second;
    second.reaction = [this](std::vector<std::string>&) { platform.steps.add("second observer"); };
    liveOn();

    service->subscribe(&second);
    passSeconds(60);
    service->unsubscribe(&second);

    expectRoad("second-observer");
}

TEST_F(Roads, OfResetAndEnd) {
    liveOn();

    service->unsubscribe(&observer);
    service->resetUserData();
    platform.dataManager.deliverGroup({{PldsTags::ORVANE_API_SERVER_ADDRESS, "new.example"}});
    runThreads();
    service.reset();

    expectRoad("end");
}

} // namespace
