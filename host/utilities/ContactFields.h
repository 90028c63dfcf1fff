#pragma once

#include "utilities/Contact.h"

#include <array>
#include <string>

/// One field of a contact with its key in the serialised text and in phonebook XML.
struct ContactField {
    const char* key;
    std::string Contact::* member;
};

constexpr std::array<ContactField, 10> contactFields = {{
    {"firstname", &Contact::firstname},
    {"lastname", &Contact::lastname},
    {"businessNumber", &Contact::businessNumber},
    {"businessNumber2", &Contact::businessNumber2},
    {"mobile", &Contact::mobile},
    {"homePhone", &Contact::homePhone},
    {"email", &Contact::email},
    {"company", &Contact::company},
    {"jobTitle", &Contact::jobTitle},
    {"id", &Contact::id},
}};
