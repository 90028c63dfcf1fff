#include "OrvaneServiceHelper/OrvaneServiceHelper.h"

#include "Json.h"
#include "Log.h"
#include "OrvaneServiceStrings.h"
#include "utilities/Contact.h"

#include <array>

using namespace OrvaneServiceStrings;

namespace {

struct Member {
    const char* key;
    std::string Contact::* field;
};

constexpr std::array<Member, 9> members = {{
    {OV_FIRSTNAME, &Contact::firstname},
    {OV_LASTNAME, &Contact::lastname},
    {OV_BUSINESS_PHONE, &Contact::businessNumber},
    {OV_BUSINESS_PHONE_2, &Contact::businessNumber2},
    {OV_MOBILE_PHONE, &Contact::mobile},
    {OV_HOME_PHONE, &Contact::homePhone},
    {OV_COMPANY, &Contact::company},
    {OV_JOBTITLE, &Contact::jobTitle},
    {OV_EMAIL, &Contact::email},
}};

} // namespace

bool OrvaneServiceHelper::createContact(const std::string& xmlData, std::string& json, std::string& id) {
    Contact contact;
    contact.importFromPhonebookXML(xmlData);
    const OrvaneJson::Value object(json_object());
    if (!object) {
        ORVANE_LOG(DEBUG, "createContact() - cannot allocate json message");
        return false;
    }
    json_t* message = object.get();
    for (const Member& member : members) {
        const std::string& value = contact.*member.field;
        if (!value.empty() && !addValueToJsonObject(&message, member.key, value)) {
            ORVANE_LOG(DEBUG, "createContact() - cannot add %s[%s]", member.key, value.c_str());
            return false;
        }
    }
    id = contact.id;
    json = OrvaneJson::dump(message);
    if (json.empty()) {
        ORVANE_LOG(ERROR, "createContact() - contact is empty!");
        return false;
    }
    return true;
}
