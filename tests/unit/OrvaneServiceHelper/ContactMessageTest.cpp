#include "OrvaneServiceHelper/OrvaneServiceHelper.h"

#include "JsonAllocations.h"
#include "TestPlatform.h"

#include <gtest/gtest.h>

namespace {

class ContactMessage : public testing::Test {
protected:
    bool create(const std::string& xmlData) { return OrvaneServiceHelper::createContact(xmlData, json, id); }

    TestPlatform platform;
    std::string json;
    std::string id;
};

} // namespace

TEST_F(ContactMessage, AllFieldsStandInTheirOrder) {
    EXPECT_TRUE(create("<contact><id>7</id><email>e</email><jobTitle>j</jobTitle><company>c</company>"
                       "<homePhone>h</homePhone><mobile>m</mobile><businessNumber2>b2</businessNumber2>"
                       "<businessNumber>b1</businessNumber><lastname>l</lastname><firstname>f</firstname></contact>"));

    EXPECT_EQ(
        "{\"firstName\": \"f\", \"lastName\": \"l\", \"businessPhone\": \"b1\", \"businessPhone2\": \"b2\", "
        "\"mobilePhone\": \"m\", \"homePhone\": \"h\", \"company\": \"c\", \"jobTitle\": \"j\", \"email\": \"e\"}",
        json);
    EXPECT_EQ("7", id);
}

TEST_F(ContactMessage, EmptyFieldsAreLeftOut) {
    EXPECT_TRUE(create("<contact><firstname></firstname><mobile>+491</mobile></contact>"));

    EXPECT_EQ("{\"mobilePhone\": \"+491\"}", json);
    EXPECT_EQ("", id);
}

TEST_F(ContactMessage, TheIdIsNotInTheBody) {
    EXPECT_TRUE(create("<contact><id>7</id></contact>"));

    EXPECT_EQ("{}", json);
    EXPECT_EQ("7", id);
}

TEST_F(ContactMessage, MalformedXmlIsAnEmptyContact) {
    EXPECT_TRUE(create("<contact><firstname>f</firstname"));

    EXPECT_EQ("{}", json);
    EXPECT_EQ("", id);
}

TEST_F(ContactMessage, AnyFirstContactOfAPhonebookCounts) {
    EXPECT_TRUE(create("<phonebook><contact><firstname>f</firstname></contact><contact/></phonebook>"));

    EXPECT_EQ("{\"firstName\": \"f\"}", json);
}

TEST_F(ContactMessage, AFieldThatIsNoTextIsRefused) {
    id = "as it was";

    EXPECT_FALSE(create("<contact><id>7</id><firstname>\xff</firstname></contact>"));

    EXPECT_EQ("", json);
    EXPECT_EQ("as it was", id);
    EXPECT_TRUE(platform.log.has(6, "createContact() - cannot add firstName[\xff]"));
}

TEST_F(ContactMessage, EveryAllocationThatFailsIsReported) {
    const std::string xml = "<contact><id>7</id><firstname>f</firstname></contact>";
    std::size_t allocations = 0;
    {
        const JsonAllocations all(0);
        ASSERT_TRUE(create(xml));
        allocations = JsonAllocations::count();
    }
    ASSERT_GE(allocations, 3u);
    bool withoutObject = false;
    bool withoutMember = false;
    bool withoutText = false;
    for (std::size_t failing = 1; failing <= allocations; ++failing) {
        json.clear();
        id = "as it was";
        platform.log.clear();
        const JsonAllocations one(failing);

        EXPECT_FALSE(create(xml)) << failing;

        EXPECT_EQ("", json);
        EXPECT_EQ(1u, platform.log.lines().size()) << failing;
        withoutObject |= platform.log.has(6, "createContact() - cannot allocate json message");
        withoutMember |= platform.log.has(6, "createContact() - cannot add firstName[f]");
        withoutText |= platform.log.has(2, "createContact() - contact is empty!");
        // The id is known before the text is made.
        EXPECT_EQ(platform.log.has(2, "createContact() - contact is empty!") ? "7" : "as it was", id) << failing;
    }
    EXPECT_TRUE(withoutObject);
    EXPECT_TRUE(withoutMember);
    EXPECT_TRUE(withoutText);
}
