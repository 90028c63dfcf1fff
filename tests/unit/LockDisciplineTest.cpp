#include "TestPlatform.h"
#include "threads/CriticalSection.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>

namespace {

/// The rules that all other tests lean on.
class LockDisciplineTest : public testing::Test {
protected:
    /// Takes `inner` while `outer` is held.
    void take(const char* outer, const char* inner) {
        platform.locks.nameNext({outer, inner});
        Semaphore outerSemaphore(1, 1, false);
        Semaphore innerSemaphore(1, 1, false);
        CriticalSection outerSection(outerSemaphore);
        CriticalSection innerSection(innerSemaphore);
    }

    TestPlatform platform;
};

TEST_F(LockDisciplineTest, AnOrderThatIsDrawnIsLetThrough) {
    take("m_dndSem", "m_fpkPresenceMapSem");
    take("m_callLogResponseSem", "m_telephonySessionsSem");
}

TEST_F(LockDisciplineTest, ItsReverseFails) {
    EXPECT_NONFATAL_FAILURE(take("m_fpkPresenceMapSem", "m_dndSem"), "m_fpkPresenceMapSem is held while m_dndSem");
}

TEST_F(LockDisciplineTest, APairThatIsDrawnNowhereFailsInEitherOrder) {
    EXPECT_NONFATAL_FAILURE(take("m_callLogSyncTokenSem", "m_callLogResponseSem"), "there is no such order");
    EXPECT_NONFATAL_FAILURE(take("m_callLogResponseSem", "m_callLogSyncTokenSem"), "there is no such order");
    EXPECT_NONFATAL_FAILURE(take("m_callLogSyncTokenSem", "m_telephonySessionsSem"), "there is no such order");
}

TEST_F(LockDisciplineTest, TheConnectionIsTakenUnderTheSwitchOnlyWhereThatIsHeldAcrossRequests) {
    EXPECT_NONFATAL_FAILURE(take("m_dndSem", "m_connectionSem"), "m_dndSem is held while m_connectionSem");

    platform.locks.allowAcrossRequests("m_dndSem");
    take("m_dndSem", "m_connectionSem");
}

TEST_F(LockDisciplineTest, AnObserverMayCallWhatItLikes) {
    take("m_observersSem", "m_callLogSem");
    EXPECT_NONFATAL_FAILURE(take("m_callLogSem", "m_observersSem"), "m_callLogSem is held while m_observersSem");
}

TEST_F(LockDisciplineTest, WhatAnotherThreadHoldsIsNotInTheWay) {
    platform.locks.nameNext({"m_connectionSem", "m_callLogSem"});
    Semaphore connection(1, 1, false);
    Semaphore callLog(1, 1, false);
    CriticalSection section(connection);
    {
        const LockDiscipline::OtherThread meanwhile(platform.locks);
        CriticalSection ofTheOther(callLog);
    }
    EXPECT_NONFATAL_FAILURE(CriticalSection ofThisOne(callLog), "m_connectionSem is held while m_callLogSem");
}

} // namespace
