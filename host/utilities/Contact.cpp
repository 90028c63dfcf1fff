#include "utilities/Contact.h"

#include "utilities/ContactFields.h"
#include "utilities/JsonText.h"

std::string Contact::serialize() const {
    std::string text;
    text.reserve(256); // what most contacts need
    for (const ContactField& field : contactFields) {
        text += text.empty() ? "{\"" : ",\"";
        text += field.key;
        text += "\":";
        JsonText::appendValidString(text, this->*field.member);
    }
    text += '}';
    return text;
}
