#include "PhonebookTelephone.h"

#include "OrvaneServiceHelper/OrvaneServiceHelper.h"
#include "ParsedJson.h"

using namespace CloudAnswers;

namespace {

/// One element of an address book on its way to the record text.
class PhonebookRecord : public PhonebookTelephone {
protected:
    bool read(const std::string& json) {
        ParsedJson element(json);
        return OrvaneServiceHelper::getPhonebookRecordFromObject(text, id, element.root, deleted);
    }

    std::string text = "former";
    int id = -77;
    bool deleted = false;
};

TEST_F(PhonebookRecord, CarriesNamesAndNumbers) {
    ASSERT_TRUE(read(R"({"id":12,"availability":"Alive","firstName":"Anna","lastName":"Doe","businessPhone":"1",
                         "businessPhone2":"2","mobilePhone":"3","homePhone":"4"})"));

    EXPECT_EQ(R"({"firstname":"Anna","lastname":"Doe","businessNumber":"1","businessNumber2":"2","mobile":"3",)"
              R"("homePhone":"4","email":"","company":"","jobTitle":"","id":"12"})",
              text);
    EXPECT_EQ(12, id);
    EXPECT_FALSE(deleted);
}

TEST_F(PhonebookRecord, LeavesMissingFieldsEmpty) {
    ASSERT_TRUE(read(R"({"id":0,"availability":"Alive","firstName":5})"));

    EXPECT_EQ(R"({"firstname":"","lastname":"","businessNumber":"","businessNumber2":"","mobile":"",)"
              R"("homePhone":"","email":"","company":"","jobTitle":"","id":"0"})",
              text);
}

TEST_F(PhonebookRecord, DoesNotTakeOverMailCompanyAndJob) {
    ASSERT_TRUE(read(R"({"id":1,"availability":"Alive","email":"a@b","company":"C","jobTitle":"J"})"));

    EXPECT_EQ(std::string::npos, text.find("a@b"));
    EXPECT_NE(std::string::npos, text.find(R"("email":"","company":"","jobTitle":"")"));
}

TEST_F(PhonebookRecord, SurvivesQuotesLineBreaksAndAnyScript) {
    ASSERT_TRUE(read(R"({"id":1,"availability":"Alive","lastName":"O\"Neil\n\\ \u00e4\u4e2d\ud83d\ude00"})"));

    ParsedJson back(text);
    EXPECT_STREQ("O\"Neil\n\\ \u00e4\u4e2d\U0001F600", json_string_value(json_object_get(back.root, "lastname")));
}

TEST_F(PhonebookRecord, IsDeletedUnlessItIsExactlyAlive) {
    for (const char* availability : {"Deleted", "Purged", "alive", "Alive ", ""}) {
        deleted = false;
        ASSERT_TRUE(read(std::string(R"({"id":1,"availability":")") + availability + "\"}"));
        EXPECT_TRUE(deleted) << availability;
        EXPECT_EQ('{', text.at(0));
    }
}

TEST_F(PhonebookRecord, WrapsAnIdOfMoreThan32Bits) {
    ASSERT_TRUE(read(R"({"id":4294967297,"availability":"Alive"})"));

    EXPECT_EQ(1, id);
    EXPECT_NE(std::string::npos, text.find(R"("id":"1"})"));
}

class RefusedRecord : public PhonebookRecord, public testing::WithParamInterface<const char*> {};

TEST_P(RefusedRecord, IsLoggedAsItCame) {
    EXPECT_FALSE(read(GetParam()));

    EXPECT_EQ("", text);
    EXPECT_TRUE(logged(3, std::string("getPhonebookRecordFromObject() ignoring record [") + GetParam() + "]"));
}

INSTANTIATE_TEST_SUITE_P(All, RefusedRecord,
                         testing::Values("{}", R"({"id": "1", "availability": "Alive"})",
                                         R"({"id": 1.0, "availability": "Alive"})", R"({"availability": "Alive"})",
                                         R"({"id": 1})", R"({"id": 1, "availability": true})"));

/// One record on its way into the book.
class BookEntry : public PhonebookTelephone {
protected:
    void receive(const std::vector<Contact>& all) {
        const std::string next = "p" + std::to_string(++m_number);
        expectPage(since("p" + std::to_string(m_number - 1)), addressBook(next, all));
        refresh();
    }

private:
    int m_number = 1;
};

TEST_F(BookEntry, ThatIsNewIsAddedAndPublished) {
    connectWith({});

    receive({contact(7)});

    EXPECT_EQ((Batch{record(contact(7))}), incrementalBatch());
    EXPECT_TRUE(
        logged(6, "handlePhonebookRecord() add new phonebook record[" + record(contact(7)) + "] with phonebookId[7]"));
}

TEST_F(BookEntry, ThatComesAgainUnchangedIsIgnored) {
    connectWith({contact(7)});

    receive({contact(7)});

    EXPECT_EQ(1u, published());
    EXPECT_TRUE(logged(4, "handlePhonebookRecord() ignoring same entry, not updating [" + record(contact(7)) + "]"));
}

TEST_F(BookEntry, ThatComesTwiceInOneAnswerIsPublishedOnce) {
    connectWith({contact(7), contact(7)});

    EXPECT_EQ((Batch{record(contact(7))}), fullBatch());
}

TEST_F(BookEntry, ThatHasChangedIsReplacedAndPublished) {
    connectWith({contact(7)});

    receive({contact(7, "Other")});

    EXPECT_EQ((Batch{record(contact(7, "Other"))}), incrementalBatch());
    EXPECT_TRUE(logged(4, "handlePhonebookRecord() updating changed record [" + record(contact(7, "Other")) + "]"));
    receive({contact(7, "Other")});
    EXPECT_EQ(2u, published()) << "the book holds the new text";
}

TEST_F(BookEntry, ThatIsDeletedGoesAndIsPublishedAsItsBareId) {
    connectWith({contact(7)});

    receive({gone(7)});

    EXPECT_EQ((Batch{"7"}), incrementalBatch());
    EXPECT_TRUE(logged(4, "handlePhonebookRecord() deleting record [7]"));
    EXPECT_EQ(0u, bookSize());
}

TEST_F(BookEntry, ThatIsDeletedAndUnknownIsDroppedSilently) {
    connectWith({});
    platform.log.clear();

    receive({gone(7)});

    EXPECT_EQ(0u, published());
    EXPECT_FALSE(platform.log.contains("handlePhonebookRecord()"));
}

TEST_F(BookEntry, ThatIsMalformedCostsOnlyItself) {
    connectWith({});
    expectPage(since("p1"), R"({"syncInfo":{"syncToken":"p2"},"records":[7,{"id":"x","availability":"Alive"},)" +
                                contact(7).json() + ",null,[]]}");

    refresh();

    EXPECT_EQ((Batch{record(contact(7))}), incrementalBatch());
    EXPECT_TRUE(logged(3, R"(getPhonebookRecordFromObject() ignoring record [{"id": "x", "availability": "Alive"}])"));
}

/// The answer to a contact's own request, one record object.
class SingleRecord : public PhonebookTelephone {
protected:
    bool handle(int status, std::string body) {
        return service->handlePhonebookRecordResponse(static_cast<HttpClientIfc::eStatusCode>(status), body, records,
                                                      publishData);
    }

    Batch records;
    bool publishData = false;
};

TEST_F(SingleRecord, GoesIntoTheBook) {
    EXPECT_TRUE(handle(200, contact(7).json()));

    EXPECT_TRUE(publishData);
    EXPECT_EQ((Batch{record(contact(7))}), records);
    EXPECT_EQ(1u, bookSize());
}

TEST_F(SingleRecord, ThatChangesNothingIsNotPublished) {
    handle(200, contact(7).json());
    publishData = false;

    EXPECT_FALSE(handle(200, contact(7).json()));

    EXPECT_FALSE(publishData);
    EXPECT_EQ(1u, records.size());
}

TEST_F(SingleRecord, ThatChangesNothingLeavesAnEarlierChangeToBePublished) {
    handle(200, contact(7).json());

    EXPECT_FALSE(handle(200, contact(7).json()));

    EXPECT_TRUE(publishData);
}

TEST_F(SingleRecord, NeedsStatus200) {
    EXPECT_FALSE(handle(201, contact(7).json()));

    EXPECT_TRUE(logged(2, "handlePhonebookRecordResponse() HTTP[201] responseData:\n" + contact(7).json()));
    EXPECT_EQ(0u, bookSize());
}

TEST_F(SingleRecord, NeedsABody) {
    EXPECT_FALSE(handle(200, ""));

    EXPECT_TRUE(logged(2, "handlePhonebookRecordResponse() HTTP[200] responseData:\n"));
}

TEST_F(SingleRecord, NeedsToParse) {
    EXPECT_FALSE(handle(200, "{\"id\":"));

    EXPECT_TRUE(platform.log.hasBeginning(2, "handlePhonebookRecordResponse() error on line 1:6(6) "));
}

TEST_F(SingleRecord, NeedsToBeAnObject) {
    EXPECT_FALSE(handle(200, "[]"));

    EXPECT_TRUE(logged(2, "handlePhonebookRecordResponse() records not an object"));
    EXPECT_FALSE(publishData);
}

} // namespace
