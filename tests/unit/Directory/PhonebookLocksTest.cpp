#include "PhonebookTelephone.h"

using namespace CloudAnswers;

namespace {

/// Which semaphores a synchronisation of the phonebook takes, in which order, and that none of them is left out.
class PhonebookLocks : public PhonebookTelephone {
protected:
    const std::string& traceOfSynchronisation() {
        platform.locks.keepTrace();
        service->getPhonebook();
        return platform.locks.trace();
    }
};

TEST_F(PhonebookLocks, OfTwoPages) {
    connectWith({});
    expectPage(since("p1"), addressBook("p2", {contact(1)}, 1));
    expectPage(since("p1", "&pageId=1"), addressBook("p2", {contact(2)}));

    EXPECT_EQ("m_phonebookSyncTokenSem{} m_connectionSem{request} m_phonebookSyncTokenSem{} m_phonebookResponseSem{} "
              "m_connectionSem{request} m_phonebookSyncTokenSem{} m_phonebookResponseSem{} m_observersSem{}",
              traceOfSynchronisation());
}

TEST_F(PhonebookLocks, OfAnAnswerWithTheStoredToken) {
    connectWith({});
    expectPage(since("p1"), addressBook("p1", {contact(1)}));

    EXPECT_EQ("m_phonebookSyncTokenSem{} m_connectionSem{request} m_phonebookSyncTokenSem{}", traceOfSynchronisation());
}

TEST_F(PhonebookLocks, OfAnAnswerWithoutRecords) {
    connectWith({});
    expectPage(since("p1"), R"({"syncInfo":{"syncToken":"p2"}})");

    EXPECT_EQ("m_phonebookSyncTokenSem{} m_connectionSem{request} m_phonebookSyncTokenSem{} m_phonebookResponseSem{}",
              traceOfSynchronisation());
}

TEST_F(PhonebookLocks, AreNotTakenForASingleRecord) {
    connectWith({});
    Batch records;
    bool publishData = false;
    std::string answer = contact(1).json();
    platform.locks.keepTrace();

    service->handlePhonebookRecordResponse(HttpClientIfc::STATUS_OK, answer, records, publishData);

    EXPECT_TRUE(publishData);
    EXPECT_EQ("", platform.locks.trace());
}

} // namespace
