#include "ChannelTelephone.h"
#include "JsonAllocations.h"

#include <boost/uuid/entropy_error.hpp>

#include <sys/random.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <regex>
#include <set>

namespace {

/// What the next calls of getrandom do; the system's own when nothing is scripted.
struct RandomScript {
    int constantReads = 0; ///< how many reads give 0xFF bytes
    int interruptions = 0;
    int failure = 0; ///< errno
    std::size_t atMost = 256;
};
RandomScript randomScript;

} // namespace

extern "C" ssize_t getrandom(void* buffer, size_t length, unsigned int flags) {
    if (randomScript.interruptions > 0) {
        --randomScript.interruptions;
        errno = EINTR;
        return -1;
    }
    if (randomScript.failure != 0) {
        errno = randomScript.failure;
        return -1;
    }
    const size_t count = std::min(length, randomScript.atMost);
    if (randomScript.constantReads > 0) {
        --randomScript.constantReads;
        std::memset(buffer, 0xFF, count);
        return static_cast<ssize_t>(count);
    }
    return syscall(SYS_getrandom, buffer, count, flags);
}

namespace {

const std::string constantId = "ffffffff-ffff-4fff-bfff-ffffffffffff";

class MessageIdTest : public ChannelTelephone {
protected:
    void SetUp() override { randomScript = RandomScript(); }
    void TearDown() override {
        randomScript = RandomScript();
        ChannelTelephone::TearDown();
    }
    /// A ready session in which every new id collides with one that waits for its answer.
    void openSessionWithCollisions() {
        openSession();
        ASSERT_TRUE(service->storeUuidMessage(constantId));
        randomScript.constantReads = 2;
        clearRecords();
    }
    void expectCollision(const std::string& message) {
        EXPECT_EQ(2, log().count(2, "storeUuidMessage(" + constantId + ") already exists!"));
        EXPECT_EQ(1, log().count(2, message)) << log().text(2);
        EXPECT_TRUE(frames().empty());
        platform.locks.checkNothingHeld();
    }
};

TEST_F(MessageIdTest, AnIdIsARandomUuidInCanonicalForm) {
    const std::regex canonical("[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[89ab][0-9a-f]{3}-[0-9a-f]{12}");
    std::set<std::string> ids;
    for (int count = 0; count < 1000; ++count) {
        const std::string id = service->generateUuid();
        EXPECT_TRUE(std::regex_match(id, canonical)) << id;
        EXPECT_TRUE(ids.insert(id).second) << id;
    }
}

TEST_F(MessageIdTest, VersionAndVariantStandWhateverTheRandomBytesAre) {
    randomScript.constantReads = 1;
    EXPECT_EQ(constantId, service->generateUuid());
}

TEST_F(MessageIdTest, AnInterruptedOrPartialReadGoesOn) {
    randomScript.interruptions = 3;
    randomScript.atMost = 5;
    randomScript.constantReads = 4;
    EXPECT_EQ(constantId, service->generateUuid());
}

TEST_F(MessageIdTest, AnotherFailureIsRaised) {
    randomScript.failure = ENOSYS;
    try {
        service->generateUuid();
        FAIL() << "nothing was raised";
    } catch (const boost::uuids::entropy_error& error) {
        EXPECT_EQ(ENOSYS, static_cast<int>(error.errcode()));
        EXPECT_NE(std::string::npos, std::string(error.what()).find("getrandom")) << error.what();
    }
}

TEST_F(MessageIdTest, AFailureInTheMiddleOfASubscriptionLeavesNoSemaphoreTaken) {
    openSession();
    randomScript.failure = ENOSYS;
    EXPECT_THROW(service->subscribeOvEvents(), boost::uuids::entropy_error);
    platform.locks.checkNothingHeld();
}

TEST_F(MessageIdTest, AnIdIsStoredOnce) {
    EXPECT_TRUE(service->storeUuidMessage("a"));
    EXPECT_FALSE(service->storeUuidMessage("a"));
    EXPECT_TRUE(logged(2, "storeUuidMessage(a) already exists!"));
}

TEST_F(MessageIdTest, AnIdIsFoundOnce) {
    ASSERT_TRUE(service->storeUuidMessage("a"));
    EXPECT_TRUE(service->findUuidMessageAndDeleteIt("a"));
    EXPECT_TRUE(log().lines().empty());
    EXPECT_FALSE(service->findUuidMessageAndDeleteIt("a"));
    EXPECT_TRUE(logged(2, "findUuidMessageAndDeleteIt() uuid[a] not found!"));
}

TEST_F(MessageIdTest, NeitherStopNorACloseForgetsAnId) {
    openSession();
    const std::string id = TestJson::messageId(lastFrame());
    service->onClose(1000, 1000, "bye");
    service->stop();
    EXPECT_TRUE(service->findUuidMessageAndDeleteIt(id));
}

TEST_F(MessageIdTest, ASecondCollisionGivesTheHeartbeatUp) {
    openSessionWithCollisions();
    EXPECT_FALSE(service->sendHeartbeatMsg());
    expectCollision("sendHeartbeatMsg() - uuid already stored!");
    EXPECT_FALSE(isTimerRunning(heartbeatMilliseconds));
}

TEST_F(MessageIdTest, ASecondCollisionGivesTheSubscriptionUp) {
    openSessionWithCollisions();
    EXPECT_FALSE(service->subscribeOvEvents());
    expectCollision("subscribeOvEvents() - uuid already stored!");
}

TEST_F(MessageIdTest, ASecondCollisionGivesTheUpdateUp) {
    openSessionWithCollisions();
    EXPECT_FALSE(service->updateSubscriptionOvEvents());
    expectCollision("updateSubscriptionOvEvents() - uuid already stored!");
}

TEST_F(MessageIdTest, ASecondCollisionGivesTheRenewalUp) {
    openSessionWithCollisions();
    EXPECT_FALSE(service->refreshOvEventsSubscription());
    expectCollision("refreshOvEventsSubscription() - uuid already stored!");
}

TEST_F(MessageIdTest, ASecondCollisionGivesTheCancelUp) {
    openSessionWithCollisions();
    EXPECT_FALSE(service->cancelSubscriptionOvEvents());
    expectCollision("cancelSubscribtionOvEvents() - uuid already stored!");
}

TEST_F(MessageIdTest, WithoutMemoryNoHeartbeatIsSentAndItsIdIsFreeAgain) {
    openSession();
    clearRecords();
    for (std::size_t failing = 1; failing <= 3; ++failing) {
        randomScript.constantReads = 1;
        {
            const JsonAllocations scarce(failing);
            EXPECT_FALSE(service->sendHeartbeatMsg()) << failing;
        }
        EXPECT_TRUE(service->storeUuidMessage(constantId)) << failing;
        EXPECT_TRUE(service->findUuidMessageAndDeleteIt(constantId)) << failing;
    }
    EXPECT_TRUE(frames().empty());
    EXPECT_TRUE(timers().calls.empty());
    EXPECT_FALSE(log().contains("not found!"));
}

TEST_F(MessageIdTest, AfterOneCollisionTheSecondIdIsUsed) {
    openSession();
    ASSERT_TRUE(service->storeUuidMessage(constantId));
    randomScript.constantReads = 1;
    clearRecords();
    EXPECT_TRUE(service->sendHeartbeatMsg());
    EXPECT_EQ(1, log().count(2, "storeUuidMessage(" + constantId + ") already exists!"));
    ASSERT_EQ(1u, frames().size());
    EXPECT_TRUE(service->findUuidMessageAndDeleteIt(TestJson::messageId(lastFrame())));
}

} // namespace
