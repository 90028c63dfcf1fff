#include "OrvaneServiceHelper/OrvaneServiceHelper.h"
#include "fuzz/FuzzInput.h"
#include "fuzz/FuzzTelephone.h"
#include "utilities/Contact.h"

#include <jansson.h>

#include <cstdlib>

/// A contact as other services hand it over.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzInput input(data, size);
    const std::string xml = input.rest();
    Contact contact;
    contact.importFromPhonebookXML(xml);
    const std::string text = contact.serialize();
    // Whatever came in, what goes out is JSON.
    json_t* tree = json_loadb(text.data(), text.size(), JSON_ALLOW_NUL, nullptr);
    if (json_object_size(tree) != 10) {
        std::abort();
    }
    json_decref(tree);

    FuzzTelephone phone;
    std::string body;
    std::string id;
    phone.drive([&] { OrvaneServiceHelper::createContact(xml, body, id); });
    return 0;
}
