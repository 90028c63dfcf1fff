#include "utilities/Contact.h"

#include "utilities/ContactFields.h"

#include <pugixml.hpp>

namespace {

std::string trimmed(const std::string& text) {
    const char* blanks = " \t\r\n";
    const std::size_t first = text.find_first_not_of(blanks);
    return first == std::string::npos ? std::string() : text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

/// All character data of an element, CDATA sections included.
std::string textOf(const pugi::xml_node& element) {
    std::string text;
    for (const pugi::xml_node& child : element.children()) {
        if (child.type() == pugi::node_pcdata || child.type() == pugi::node_cdata) {
            text += child.value();
        }
    }
    return text;
}

bool hasDocumentType(const pugi::xml_document& document) {
    for (const pugi::xml_node& node : document.children()) {
        if (node.type() == pugi::node_doctype) {
            return true;
        }
    }
    return false;
}

} // namespace

void Contact::importFromPhonebookXML(const std::string& xmlData) {
    *this = Contact();
    pugi::xml_document document;
    const pugi::xml_parse_result parsed =
        document.load_buffer(xmlData.data(), xmlData.size(),
                             pugi::parse_default | pugi::parse_doctype | pugi::parse_ws_pcdata, pugi::encoding_utf8);
    // A document type could define entities; a contact needs none.
    if (!parsed || hasDocumentType(document)) {
        return;
    }
    pugi::xml_node element = document.child("contact");
    if (!element) {
        element = document.child("phonebook").child("contact");
    }
    for (const ContactField& field : contactFields) {
        this->*field.member = trimmed(textOf(element.child(field.key)));
    }
}
