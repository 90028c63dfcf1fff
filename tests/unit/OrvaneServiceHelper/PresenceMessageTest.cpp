#include "OrvaneServiceHelper/OrvaneServiceHelper.h"

#include "JsonAllocations.h"
#include "TestPlatform.h"

#include <gtest/gtest.h>

using namespace OrvaneServiceTypes;

namespace {

class PresenceMessage : public testing::Test {
protected:
    TestPlatform platform;
    std::string message;
};

} // namespace

TEST_F(PresenceMessage, HasOneMemberWithOneOfTwoTexts) {
    EXPECT_TRUE(OrvaneServiceHelper::createUserPresenseMsg(true, message));
    EXPECT_EQ("{\"dndStatus\": \"DoNotAcceptAnyCalls\"}", message);

    EXPECT_TRUE(OrvaneServiceHelper::createUserPresenseMsg(false, message));
    EXPECT_EQ("{\"dndStatus\": \"TakeAllCalls\"}", message);
}

TEST_F(PresenceMessage, EveryAllocationThatFailsIsReported) {
    std::size_t allocations = 0;
    {
        const JsonAllocations all(0);
        ASSERT_TRUE(OrvaneServiceHelper::createUserPresenseMsg(true, message));
        allocations = JsonAllocations::count();
    }
    ASSERT_GE(allocations, 3u);
    bool withoutObject = false;
    bool withoutMember = false;
    bool withoutText = false;
    for (std::size_t failing = 1; failing <= allocations; ++failing) {
        platform.log.clear();
        const JsonAllocations one(failing);

        EXPECT_FALSE(OrvaneServiceHelper::createUserPresenseMsg(true, message)) << failing;

        EXPECT_EQ(1u, platform.log.lines().size()) << failing;
        withoutObject |= platform.log.has(6, "createUserPresenseMsg() - cannot allocate json message");
        withoutMember |= platform.log.has(2, "createUserPresenseMsg() - cannot add dndStatus[DoNotAcceptAnyCalls]");
        withoutText |= platform.log.has(2, "createUserPresenseMsg() - message is empty!");
    }
    EXPECT_TRUE(withoutObject);
    EXPECT_TRUE(withoutMember);
    EXPECT_TRUE(withoutText);
}

TEST_F(PresenceMessage, TheFourTextsAreStatuses) {
    DndStatusType status = DND_UNKNOWN;

    EXPECT_TRUE(OrvaneServiceHelper::getDndStatus("TakeAllCalls", status));
    EXPECT_EQ(DND_TAKE_ALL_CALLS, status);
    EXPECT_TRUE(OrvaneServiceHelper::getDndStatus("DoNotAcceptAnyCalls", status));
    EXPECT_EQ(DND_DO_NOT_ACCEPT_ANY_CALLS, status);
    EXPECT_TRUE(OrvaneServiceHelper::getDndStatus("DoNotAcceptDepartmentCalls", status));
    EXPECT_EQ(DND_DO_NOT_ACCEPT_DEPARTMENT_CALLS, status);
    EXPECT_TRUE(OrvaneServiceHelper::getDndStatus("TakeDepartmentCallsOnly", status));
    EXPECT_EQ(DND_TAKE_DEPARTMENT_CALLS_ONLY, status);
}

TEST_F(PresenceMessage, AnyOtherTextIsUnknown) {
    for (const char* text : {"", "takeAllCalls", "TakeAllCalls ", "Unknown", "0"}) {
        DndStatusType status = DND_TAKE_ALL_CALLS;

        EXPECT_FALSE(OrvaneServiceHelper::getDndStatus(text, status)) << text;

        EXPECT_EQ(DND_UNKNOWN, status) << text;
    }
}
