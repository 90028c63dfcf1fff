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

/// The one element of a well-formed document; none when there are several, text beside it, or a document type, which
/// could define entities.
pugi::xml_node rootElement(const pugi::xml_document& document) {
    pugi::xml_node root;
    for (const pugi::xml_node& node : document.children()) {
        const bool isSecond = node.type() == pugi::node_element && root;
        const bool isText =
            node.type() == pugi::node_cdata || (node.type() == pugi::node_pcdata && !trimmed(node.value()).empty());
        if (isSecond || isText || node.type() == pugi::node_doctype) {
            return {};
        }
        if (node.type() == pugi::node_element) {
            root = node;
        }
    }
    return root;
}

} // namespace

void Contact::importFromPhonebookXML(const std::string& xmlData) {
    *this = Contact();
    pugi::xml_document document;
    // As a fragment, so that text beside the root element is seen.
    constexpr unsigned options =
        pugi::parse_default | pugi::parse_doctype | pugi::parse_ws_pcdata | pugi::parse_fragment;
    // The parser would end at a zero byte and call the front well-formed.
    if (xmlData.find('\0') != std::string::npos ||
        !document.load_buffer(xmlData.data(), xmlData.size(), options, pugi::encoding_utf8)) {
        return;
    }
    pugi::xml_node element = rootElement(document);
    if (std::string(element.name()) == "phonebook") {
        element = element.child("contact");
    }
    if (std::string(element.name()) != "contact") {
        return;
    }
    for (const ContactField& field : contactFields) {
        this->*field.member = trimmed(textOf(element.child(field.key)));
    }
}
