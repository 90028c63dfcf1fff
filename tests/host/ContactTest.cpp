#include "utilities/Contact.h"

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

#include <string>
#include <utility>
#include <vector>

namespace {

using namespace std::string_literals;

std::string utf8(unsigned codePoint) {
    std::string text;
    if (codePoint < 0x80) {
        text += static_cast<char>(codePoint);
    } else if (codePoint < 0x800) {
        text += static_cast<char>(0xC0 + codePoint / 0x40);
    } else if (codePoint < 0x10000) {
        text += static_cast<char>(0xE0 + codePoint / 0x1000);
        text += static_cast<char>(0x80 + codePoint / 0x40 % 0x40);
    } else {
        text += static_cast<char>(0xF0 + codePoint / 0x40000);
        text += static_cast<char>(0x80 + codePoint / 0x1000 % 0x40);
        text += static_cast<char>(0x80 + codePoint / 0x40 % 0x40);
    }
    if (codePoint >= 0x80) {
        text += static_cast<char>(0x80 + codePoint % 0x40);
    }
    return text;
}

std::string firstNameReadBack(const std::string& firstname) {
    Contact contact;
    contact.firstname = firstname;
    return nlohmann::json::parse(contact.serialize()).at("firstname").get<std::string>();
}

TEST(ContactText, CarriesAllFieldsInTheirOrder) {
    Contact contact;
    contact.firstname = "Zoë";
    contact.lastname = "Richter";
    contact.businessNumber = "1";
    contact.businessNumber2 = "2";
    contact.mobile = "3";
    contact.homePhone = "4";
    contact.email = "5";
    contact.company = "6";
    contact.jobTitle = "7";
    contact.id = "8";

    EXPECT_EQ(R"({"firstname":"Zoë","lastname":"Richter","businessNumber":"1","businessNumber2":"2","mobile":"3",)"
              R"("homePhone":"4","email":"5","company":"6","jobTitle":"7","id":"8"})",
              contact.serialize());
}

TEST(ContactText, HasEveryKeyForAnEmptyContact) {
    EXPECT_EQ(R"({"firstname":"","lastname":"","businessNumber":"","businessNumber2":"","mobile":"",)"
              R"("homePhone":"","email":"","company":"","jobTitle":"","id":""})",
              Contact().serialize());
}

TEST(ContactText, KeepsEveryCodePoint) {
    for (unsigned codePoint = 0; codePoint <= 0x10FFFF; codePoint += codePoint < 0x3000 ? 1 : 61) {
        if (codePoint < 0xD800 || codePoint > 0xDFFF) {
            ASSERT_EQ(utf8(codePoint), firstNameReadBack(utf8(codePoint))) << std::hex << codePoint;
        }
    }
}

TEST(ContactText, KeepsQuotesBackslashesLineBreaksAndControlCharacters) {
    const std::string name = "a\"b\\c\nd\re\tf\0g\x01h\x1fi\x7fj/"s;

    EXPECT_EQ(name, firstNameReadBack(name));
}

TEST(ContactText, HasTheReplacementCharacterForEachByteThatIsNoUtf8) {
    const std::string replaced = utf8(0xFFFD);
    const std::vector<std::pair<std::string, std::string>> cases = {
        {"\x80", replaced},                               // continuation alone
        {"a\xC3", "a" + replaced},                        // cut at the end
        {"\xC0\xAF", replaced + replaced},                // overlong slash
        {"\xE0\x80\xAF", replaced + replaced + replaced}, // overlong in three bytes
        {"\xED\xA0\x80", replaced + replaced + replaced}, // surrogate
        {"\xF4\x90\x80\x80", replaced + replaced + replaced + replaced},
        {"\xF5", replaced},
        {"\xC3(", replaced + "("},
    };
    for (const auto& [bytes, expected] : cases) {
        EXPECT_EQ(expected, firstNameReadBack(bytes));
    }
}

TEST(ContactText, IsEqualForEqualContactsOnly) {
    Contact first;
    first.firstname = "a";
    Contact second = first;
    EXPECT_EQ(first.serialize(), second.serialize());

    second.firstname.clear();
    second.lastname = "a";
    EXPECT_NE(first.serialize(), second.serialize());
}

class ContactFromXml : public ::testing::Test {
protected:
    static Contact imported(const std::string& xml) {
        Contact contact;
        contact.firstname = "left over";
        contact.importFromPhonebookXML(xml);
        return contact;
    }

    static void expectEmpty(const std::string& xml) {
        EXPECT_EQ(Contact().serialize(), imported(xml).serialize()) << xml;
    }
};

TEST_F(ContactFromXml, TakesEveryElementInAnyOrder) {
    const Contact contact = imported("<contact><id>8</id><jobTitle>7</jobTitle><company>6</company><email>5</email>"
                                     "<homePhone>4</homePhone><mobile>3</mobile><businessNumber2>2</businessNumber2>"
                                     "<businessNumber>1</businessNumber><lastname>Richter</lastname>"
                                     "<firstname>Zoë</firstname></contact>");

    EXPECT_EQ(R"({"firstname":"Zoë","lastname":"Richter","businessNumber":"1","businessNumber2":"2","mobile":"3",)"
              R"("homePhone":"4","email":"5","company":"6","jobTitle":"7","id":"8"})",
              contact.serialize());
}

TEST_F(ContactFromXml, TakesTheFirstContactOfAPhonebookAndTheFirstElementOfAName) {
    const Contact contact = imported("<?xml version=\"1.0\" encoding=\"UTF-8\"?><phonebook>"
                                     "<contact><firstname>first</firstname><firstname>second</firstname></contact>"
                                     "<contact><lastname>other</lastname></contact></phonebook>");

    EXPECT_EQ("first", contact.firstname);
    EXPECT_EQ("", contact.lastname);
}

TEST_F(ContactFromXml, TrimsValuesAndResolvesReferences) {
    const Contact contact = imported("<contact><firstname> \n A &amp; B&#x2F;&lt;C&gt; \t</firstname>"
                                     "<lastname><![CDATA[ <D> ]]></lastname></contact>");

    EXPECT_EQ("A & B/<C>", contact.firstname);
    EXPECT_EQ("<D>", contact.lastname);
}

TEST_F(ContactFromXml, PassesOverWhatIsUnknown) {
    EXPECT_EQ("a",
              imported("<contact group='x'><!-- note --><fax>1</fax><firstname>a</firstname></contact>").firstname);
}

TEST_F(ContactFromXml, IsEmptyWhenTheTextIsMalformed) {
    for (const char* xml :
         {"", " ", "contact", "<contact>", "<contact><firstname>a</contact>",
          "<contact><firstname>a</firstname></contact>text", "<a/><contact/>",
          "<contact><firstname>a</firstname></contact><contact/>", "<person><firstname>a</firstname></person>",
          "<phonebook/>", "<!DOCTYPE contact [<!ENTITY e \"x\">]><contact><firstname>&e;</firstname></contact>"}) {
        expectEmpty(xml);
    }
    expectEmpty(std::string("<contact><firstname>a</firstname></contact>\0", 44));
}

} // namespace
