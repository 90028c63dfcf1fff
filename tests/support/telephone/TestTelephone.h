#pragma once

#include "CloudAnswers.h"
#include "OrvaneService/OrvaneService.h"
#include "RecordingObserver.h"
#include "TestPlatform.h"
#include "data/PldsTags.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>

/// A telephone with the real service in it, on the test platform. Before initialise() the store holds what every
/// telephone has (interface up, server type 7, a MAC address, the server's address); everything else is off.
///
/// Each test ends with the checks that hold for all: no expected request is missing, no semaphore is held.
class TestTelephone : public testing::Test {
protected:
    TestTelephone();
    ~TestTelephone() override;
    void TearDown() override;

    /// Path prefix of every request.
    static constexpr const char* prefix = "/MODEL/MAC1";
    static constexpr const char* server = "cloud.example";
    static constexpr const char* extensionId = "4711";

    // ---- Setting up: before initialise() --------------------------------------------------------------------------

    void switchOn(const std::string& item) { platform.store.set(item, PldsTags::VALUE_TRUE); }
    void withCallLog() { switchOn(PldsTags::ORVANE_API_SYNC_CALL_LOG); }
    void withPhonebook() { switchOn(PldsTags::ORVANE_API_SYNC_PHONEBOOK); }
    void withDnd() { switchOn(PldsTags::ORVANE_API_SYNC_DND); }
    /// The model has shared lines; the prefix of the paths is then "/KD24/MAC1".
    void withSharedLines() { platform.model = "KD24"; }
    /// A function key that watches a colleague.
    void withWatchedColleague(const std::string& keyIndex, const std::string& colleagueExtensionId,
                              const std::string& label = "Colleague");
    void withObserver() { service->subscribe(&observer); }
    /// Shared lines, all synchronisations, one watched colleague and the observer.
    void withEverything();

    /// To be called before a test makes one more service: its semaphores take the members' names.
    void nameSemaphoresOfNextService();

    /// Executable::init on the service; the login is then a pending thread.
    void initialise() { service->init(platform.context); }

    // ---- What the cloud will say ---------------------------------------------------------------------------------

    std::string path(const std::string& restPath) const { return "/" + platform.model + "/MAC1" + restPath; }
    static std::string own(const std::string& resource) { return "/restapi/v1.0/account/~/extension/~" + resource; }
    Exchange& expectToken() {
        return platform.network.expectGet(path("/auth/token")).answers(200, CloudAnswers::token());
    }
    Exchange& expectExtension() {
        return platform.network.expectGet(path(own(""))).answers(200, CloudAnswers::extension());
    }
    Exchange& expectPresence(const std::string& dndStatus = "TakeAllCalls") {
        return platform.network.expectGet(path(own("/presence"))).answers(200, CloudAnswers::presence(dndStatus));
    }
    Exchange& expectColleaguePresence(const std::string& id, const std::string& dndStatus = "TakeAllCalls");
    Exchange& expectGrants(const std::vector<CloudAnswers::GrantedLine>& lines = {}) {
        return platform.network.expectGet(path(own("/grant"))).answers(200, CloudAnswers::grants(lines));
    }
    Exchange& expectFullCallLog(const std::string& syncToken = "c1", const std::vector<CloudAnswers::Call>& calls = {});
    Exchange& expectIncrementalCallLog(const std::string& usedToken, const std::string& syncToken,
                                       const std::vector<CloudAnswers::Call>& calls = {});
    Exchange& expectFullPhonebook(const std::string& syncToken = "p1",
                                  const std::vector<CloudAnswers::Contact>& contacts = {});
    Exchange& expectIncrementalPhonebook(const std::string& usedToken, const std::string& syncToken,
                                         const std::vector<CloudAnswers::Contact>& contacts = {});
    Exchange& expectWebSocketToken() {
        return platform.network.expect(HttpClientIfc::HTTP_POST, path("/restapi/oauth/wstoken"))
            .answers(200, CloudAnswers::webSocketToken());
    }
    /// All that a login asks for, given what is switched on, with empty answers.
    void expectLogin();

    // ---- Acting --------------------------------------------------------------------------------------------------

    /// initialise() and the whole login, answered by the expectations made before (or by expectLogin()).
    void connect();
    /// The same with expectLogin() in front.
    void connectWithEmptyCloud();
    /// The channel up to the session: onOpen and "ConnectionDetails".
    void openChannel(int idleTimeoutSeconds = 60, int recoveryTimeoutSeconds = 120, int recoveryBufferSize = 3);
    void runThreads() { platform.threads.runAll(); }
    /// Moves the clock; what falls due is delivered.
    void pass(long long milliseconds);
    void passSeconds(long long seconds) { pass(seconds * 1000); }

    // ---- Asserting -----------------------------------------------------------------------------------------------

    bool logged(int level, const std::string& text) const { return platform.log.has(level, text); }
    /// The last batch of that operation and type; fails the test when there is none.
    std::vector<std::string> lastBatch(const std::string& operation, OrvaneServiceTypes::DataType type) const;
    /// What holds between any two events: nobody holds a semaphore, every expected request came, no timer is lost, a
    /// service that is logged in has the timer that renews its token, there is one connection at most, and no thread
    /// has waited for itself.
    void checkQuiet();

    TestPlatform platform;
    RecordingObserver observer;
    std::unique_ptr<OrvaneService> service;

private:
    void checkTimers();
};
