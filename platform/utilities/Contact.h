#pragma once

#include <string>

/// One phonebook contact. A value type.
class Contact {
public:
    std::string firstname;
    std::string lastname;
    std::string businessNumber;
    std::string businessNumber2;
    std::string mobile;
    std::string homePhone;
    std::string email;
    std::string company;
    std::string jobTitle;
    std::string id;

    /// One compact JSON object with all ten fields in this order, under the keys "firstname", "lastname",
    /// "businessNumber", "businessNumber2", "mobile", "homePhone", "email", "company", "jobTitle", "id". Raw UTF-8;
    /// bytes that are none become U+FFFD. Equal contacts give equal texts.
    std::string serialize() const;

    /// Replaces all fields by those of the phonebook XML; a text that is malformed leaves all of them empty. Root
    /// "phonebook" (its first "contact" counts) or "contact"; elements named like the keys above, in any order, the
    /// first of a name counts, values trimmed, what is unknown is passed over.
    void importFromPhonebookXML(const std::string& xmlData);
};
