#include "TestPlatform.h"

void TestCommunicationsService::subscribe(CommunicationsServiceEventIfc* newListener) {
    TestPlatform::current().steps.add("communications service gains a listener");
    listener = newListener;
}

void TestTeamService::subscribe(TeamServiceEventIfc* newListener) {
    TestPlatform::current().steps.add("team service gains a listener");
    listener = newListener;
}

void TestTeamService::showDoNotDisturb(const std::string& uri, bool active) {
    TestPlatform::current().steps.add("lamp ", uri + (active ? " on" : " off"));
    lamps.emplace_back(uri, active);
    if (reaction) {
        reaction();
    }
}

void TestJournalService::cleanUp() {
    TestPlatform::current().steps.add("journal cleaned");
    ++cleanUps;
}

void TestSecurityLogService::addRecord(std::time_t time, int firstClass, int secondClass, int thirdClass,
                                       int fourthClass, int failure, const std::string& text, const std::string& user,
                                       const std::string& address) {
    TestPlatform::current().steps.add("security log ", text);
    records.push_back({time, {firstClass, secondClass, thirdClass, fourthClass}, failure, text, user, address});
}
