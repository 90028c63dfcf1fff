#include "TestTelephone.h"

#include "utilities/Contact.h"

using CloudContact = CloudAnswers::Contact;
using OrvaneServiceTypes::DATA_PHONEBOOK;

namespace {

class ContactWriteBack : public TestTelephone {
protected:
    static constexpr const char* carla =
        "<contact><firstname>Carla</firstname><lastname>Clay</lastname><id>7</id></contact>";
    static constexpr const char* carlaBody = "{\"firstName\": \"Carla\", \"lastName\": \"Clay\"}";
    static constexpr const char* noText = "<contact><firstname>\xff</firstname><id>7</id></contact>";
    static constexpr const char* withoutId = "<contact><firstname>Carla</firstname></contact>";

    ContactWriteBack() { withPhonebook(); }

    void connectWithBook(const std::vector<CloudContact>& contacts) {
        withObserver();
        expectToken();
        expectExtension();
        expectGrants();
        expectFullPhonebook("p1", contacts);
        connect();
        forgetRecords();
    }
    /// 250 contacts on five pages.
    void connectWithFullBook() {
        withObserver();
        expectToken();
        expectExtension();
        expectGrants();
        std::string target = path(own("/address-book-sync")) + "?syncType=FSync&perPage=50";
        int id = 1;
        for (int page = 1; page <= 5; ++page) {
            std::vector<CloudContact> contacts;
            for (int index = 0; index < 50; ++index) {
                contacts.push_back({id++, "F", "L", "", "Alive"});
            }
            platform.network.expectGet(target).answers(200, CloudAnswers::addressBook("p1", contacts, page + 1));
            target += "&pageId=" + std::to_string(page + 1);
        }
        connect();
        forgetRecords();
    }
    void forgetRecords() {
        platform.log.clear();
        platform.network.requests.clear();
        observer.clear();
    }
    std::string contactPath(const std::string& id = std::string()) const {
        return path(own("/address-book/contact")) + (id.empty() ? "" : "/" + id);
    }
    Exchange& expectAdd(const std::string& body = carlaBody) {
        return platform.network.expect(HttpClientIfc::HTTP_POST, contactPath(), body);
    }
    Exchange& expectEdit(const std::string& id, const std::string& body) {
        return platform.network.expect(HttpClientIfc::HTTP_PUT, contactPath(id), body);
    }
    Exchange& expectDelete(const std::string& id) {
        return platform.network.expect(HttpClientIfc::HTTP_DELETE, contactPath(id));
    }
    static std::string answer(const CloudContact& contact) { return contact.json(); }
    static std::string record(const CloudContact& contact) {
        Contact serialized;
        serialized.firstname = contact.firstName;
        serialized.lastname = contact.lastName;
        serialized.mobile = contact.mobilePhone;
        serialized.id = std::to_string(contact.id);
        return serialized.serialize();
    }
    std::size_t bookSize() const {
        std::vector<std::string> records;
        service->prepareDataForObservers(records);
        return records.size();
    }
    void expectUserMessage(const std::string& text, OrvaneServiceTypes::UserMsgType type) {
        const auto messages = observer.of("informUserEvent");
        ASSERT_EQ(1u, messages.size());
        EXPECT_EQ(text, messages[0].message);
        EXPECT_EQ(type, messages[0].type);
    }
};

} // namespace

// ---- Adding ------------------------------------------------------------------------------------------------------

TEST_F(ContactWriteBack, AnAddedContactComesBackToTheBookAndTheObservers) {
    connectWithBook({});
    const CloudContact stored{7, "Carla (cloud)", "Clay", "+491", "Alive"};
    expectAdd().answers(200, answer(stored));

    service->addNewContact(carla);

    ASSERT_EQ(2u, observer.events.size());
    EXPECT_EQ("orvaneIncrementalSync", observer.events[0].operation);
    EXPECT_EQ(DATA_PHONEBOOK, observer.events[0].type);
    EXPECT_EQ((std::vector<std::string>{record(stored)}), observer.events[0].data);
    expectUserMessage("OV.Copied.contact.OK", OrvaneServiceTypes::USER_MSG_INFO);
    EXPECT_EQ(1u, bookSize());
    EXPECT_TRUE(logged(4, "addNewContact(" + std::string(carla) + ") - isRunnnig[true], m_sync_phonebook[true]"));
    EXPECT_TRUE(
        logged(6, "addNewContact() sent to OV successfully! Status code[200], responseData[" + answer(stored) + "]"));
}

TEST_F(ContactWriteBack, AnAddAnsweredWithCreatedTellsTheUserAndChangesNothing) {
    connectWithBook({});
    expectAdd().answers(201, answer({7, "Carla", "Clay", "", "Alive"}));

    service->addNewContact(carla);

    expectUserMessage("OV.Copied.contact.OK", OrvaneServiceTypes::USER_MSG_INFO);
    EXPECT_EQ(1u, observer.events.size());
    EXPECT_EQ(0u, bookSize());
}

TEST_F(ContactWriteBack, AnAddWhoseAnswerCannotBeReadTellsTheUserOfSuccessAllTheSame) {
    connectWithBook({});
    expectAdd().answers(200, "[");

    service->addNewContact(carla);

    expectUserMessage("OV.Copied.contact.OK", OrvaneServiceTypes::USER_MSG_INFO);
    EXPECT_EQ(1u, observer.events.size());
    EXPECT_TRUE(logged(2, "handlePhonebookRecordResponse() error on line 1:1(1) ']' expected near end of file"));
}

TEST_F(ContactWriteBack, ARefusedAddTellsTheUser) {
    connectWithBook({});
    expectAdd().answers(500, "no");

    service->addNewContact(carla);

    expectUserMessage("OV.Copied.contact.ERROR", OrvaneServiceTypes::USER_MSG_ERROR);
    EXPECT_TRUE(logged(2, "addNewContact() sent to OV failed! Status code[500], responseData[no]"));
    EXPECT_EQ(0u, bookSize());
}

TEST_F(ContactWriteBack, AnAddThatGetsNoAnswerTellsTheUser) {
    connectWithBook({});
    expectAdd().failsToSend();

    service->addNewContact(carla);

    expectUserMessage("OV.Copied.contact.ERROR", OrvaneServiceTypes::USER_MSG_ERROR);
    EXPECT_TRUE(logged(2, "addNewContact() sent to OV failed! Status code[0], responseData[]"));
}

TEST_F(ContactWriteBack, AFullBookTakesNoAddAndSaysNothing) {
    connectWithFullBook();
    ASSERT_EQ(250u, bookSize());

    service->addNewContact(carla);

    EXPECT_TRUE(logged(2, "addNewContact() - max number of contacts exceeded!"));
    EXPECT_TRUE(platform.network.requests.empty());
    EXPECT_TRUE(observer.events.empty());
}

TEST_F(ContactWriteBack, AFullBookDoesNotLookAtWhatIsAdded) {
    connectWithFullBook();

    service->addNewContact(noText);

    EXPECT_TRUE(logged(2, "addNewContact() - max number of contacts exceeded!"));
    EXPECT_FALSE(platform.log.contains("create contact in JSON format failed!"));
}

TEST_F(ContactWriteBack, AFullBookStillTakesEditsAndDeletions) {
    connectWithFullBook();
    const CloudContact edited{7, "Carla", "Clay", "", "Alive"};
    expectEdit("7", carlaBody).answers(200, answer(edited));
    expectDelete("8").answers(200, answer({8, "F", "L", "", "Deleted"}));

    service->updateEditedContact(carla);
    service->deleteSingleContact("8");

    EXPECT_EQ(249u, bookSize());
}

TEST_F(ContactWriteBack, ABookWithOneFreePlaceTakesAnAdd) {
    connectWithFullBook();
    expectDelete("8").answers(200, answer({8, "F", "L", "", "Deleted"}));
    service->deleteSingleContact("8");
    expectAdd().answers(200, answer({1000, "Carla", "Clay", "", "Alive"}));

    service->addNewContact(carla);

    EXPECT_EQ(250u, bookSize());
}

TEST_F(ContactWriteBack, AContactWithoutAnyFieldIsSentAsAnEmptyObject) {
    connectWithBook({});
    expectAdd("{}").answers(200, answer({7, "", "", "", "Alive"}));

    service->addNewContact("no XML at all");

    EXPECT_EQ(1u, bookSize());
}

TEST_F(ContactWriteBack, AContactThatIsNoTextIsNotSent) {
    connectWithBook({});

    service->addNewContact(noText);

    EXPECT_TRUE(logged(2, "addNewContact() create contact in JSON format failed!")) << platform.log.text(6);
    EXPECT_TRUE(platform.network.requests.empty());
    EXPECT_TRUE(observer.events.empty());
}

TEST_F(ContactWriteBack, OnlyTheEmailIsSentAndNotReadBack) {
    connectWithBook({});
    expectAdd("{\"email\": \"c@example\"}")
        .answers(200, "{\"id\":7,\"availability\":\"Alive\",\"email\":\"c@example\"}");

    service->addNewContact("<contact><email>c@example</email></contact>");

    EXPECT_EQ((std::vector<std::string>{record({7, "", "", "", "Alive"})}),
              lastBatch("orvaneIncrementalSync", DATA_PHONEBOOK));
}

// ---- Editing -----------------------------------------------------------------------------------------------------

TEST_F(ContactWriteBack, AnEditedContactGoesToItsIdAndComesBack) {
    connectWithBook({{7, "Old", "Name", "", "Alive"}});
    const CloudContact stored{7, "Carla", "Clay", "", "Alive"};
    expectEdit("7", carlaBody).answers(200, answer(stored));

    service->updateEditedContact(carla);

    ASSERT_EQ(1u, observer.events.size());
    EXPECT_EQ((std::vector<std::string>{record(stored)}), lastBatch("orvaneIncrementalSync", DATA_PHONEBOOK));
    EXPECT_TRUE(logged(4, "updateEditedContact(" + std::string(carla) + ") - isRunnnig[true], m_sync_phonebook[true]"));
}

TEST_F(ContactWriteBack, AnAnswerEqualToTheBookPublishesNothing) {
    connectWithBook({{7, "Carla", "Clay", "", "Alive"}});
    expectEdit("7", carlaBody).answers(200, answer({7, "Carla", "Clay", "", "Alive"}));

    service->updateEditedContact(carla);

    EXPECT_TRUE(observer.events.empty());
}

TEST_F(ContactWriteBack, AnEditWithoutAnIdIsRefusedBeforeAnyRequest) {
    connectWithBook({});

    service->updateEditedContact(withoutId);

    EXPECT_TRUE(logged(2, "updateEditedContact() create contact in JSON format failed or empty id!"));
    EXPECT_TRUE(platform.network.requests.empty());
}

TEST_F(ContactWriteBack, AnEditThatIsNoTextIsRefusedBeforeAnyRequest) {
    connectWithBook({});

    service->updateEditedContact(noText);

    EXPECT_TRUE(logged(2, "updateEditedContact() create contact in JSON format failed or empty id!"));
    EXPECT_TRUE(platform.network.requests.empty());
}

TEST_F(ContactWriteBack, AFailedEditIsOnlyLogged) {
    connectWithBook({{7, "Old", "Name", "", "Alive"}});
    expectEdit("7", carlaBody).answers(403, "no");

    service->updateEditedContact(carla);

    EXPECT_TRUE(logged(2, "updateEditedContact() sent to OV failed! Status code[403], responseData[no]"));
    EXPECT_TRUE(observer.events.empty());
}

// ---- Deleting ----------------------------------------------------------------------------------------------------

TEST_F(ContactWriteBack, ADeletedContactLeavesTheBookThroughTheAnswer) {
    connectWithBook({{7, "Carla", "Clay", "", "Alive"}});
    const std::string body = answer({7, "Carla", "Clay", "", "Deleted"});
    expectDelete("7").answers(200, body);

    service->deleteSingleContact("7");

    EXPECT_EQ((std::vector<std::string>{"7"}), lastBatch("orvaneIncrementalSync", DATA_PHONEBOOK));
    EXPECT_EQ(0u, bookSize());
    EXPECT_TRUE(logged(4, "deleteSingleContact(7) - isRunnnig[true], m_sync_phonebook[true]"));
    EXPECT_TRUE(
        logged(6, "deleteSingleContact(7) - sent to OV successfully! Status code[200], responseData[" + body + "]"));
    EXPECT_TRUE(observer.of("informUserEvent").empty());
}

TEST_F(ContactWriteBack, ADeletionAnsweredWithoutABodyLeavesTheEntry) {
    connectWithBook({{7, "Carla", "Clay", "", "Alive"}});
    expectDelete("7").answers(204);

    service->deleteSingleContact("7");

    EXPECT_EQ(1u, bookSize());
    EXPECT_TRUE(observer.events.empty());
    EXPECT_TRUE(logged(2, "handlePhonebookRecordResponse() HTTP[204] responseData:\n"));
}

TEST_F(ContactWriteBack, AFailedDeletionIsOnlyLogged) {
    connectWithBook({{7, "Carla", "Clay", "", "Alive"}});
    expectDelete("7").answers(500, "no");

    service->deleteSingleContact("7");

    EXPECT_TRUE(logged(2, "deleteSingleContact(7) - sent to OV failed! Status code[500], responseData[no]"));
    EXPECT_TRUE(observer.events.empty());
    EXPECT_EQ(1u, bookSize());
}

TEST_F(ContactWriteBack, TheIdGoesIntoThePathAsItIsGiven) {
    connectWithBook({});
    expectDelete("a b/../c?x=1").answers(404, "none");
    platform.network.expect(HttpClientIfc::HTTP_DELETE, contactPath() + "/").answers(404, "none");

    service->deleteSingleContact("a b/../c?x=1");
    service->deleteSingleContact("");

    EXPECT_EQ(2u, platform.network.requests.size());
}

// ---- When nothing is sent ----------------------------------------------------------------------------------------

TEST_F(ContactWriteBack, WithThePhonebookOffOnlyTheFirstLineIsLogged) {
    platform.store.set(PldsTags::ORVANE_API_SYNC_PHONEBOOK, PldsTags::VALUE_FALSE);
    withObserver();
    connectWithEmptyCloud();
    forgetRecords();

    service->addNewContact(noText);
    service->updateEditedContact(noText);
    service->deleteSingleContact("c");

    ASSERT_EQ(3u, platform.log.lines().size());
    EXPECT_TRUE(logged(4, "addNewContact(" + std::string(noText) + ") - isRunnnig[true], m_sync_phonebook[false]"));
    EXPECT_TRUE(
        logged(4, "updateEditedContact(" + std::string(noText) + ") - isRunnnig[true], m_sync_phonebook[false]"));
    EXPECT_TRUE(logged(4, "deleteSingleContact(c) - isRunnnig[true], m_sync_phonebook[false]"));
    EXPECT_TRUE(observer.events.empty());
}

TEST_F(ContactWriteBack, AServiceThatIsNotRunningSendsNothing) {
    connectWithFullBook();
    service->stop();
    forgetRecords();

    service->addNewContact(noText);
    service->updateEditedContact(noText);
    service->deleteSingleContact("c");

    ASSERT_EQ(3u, platform.log.lines().size());
    EXPECT_TRUE(logged(4, "addNewContact(" + std::string(noText) + ") - isRunnnig[false], m_sync_phonebook[true]"));
    EXPECT_TRUE(
        logged(4, "updateEditedContact(" + std::string(noText) + ") - isRunnnig[false], m_sync_phonebook[true]"));
    EXPECT_TRUE(logged(4, "deleteSingleContact(c) - isRunnnig[false], m_sync_phonebook[true]"));
    EXPECT_TRUE(observer.events.empty());
}
