#include "OrvaneServiceHelper/OrvaneServiceHelper.h"

#include "Json.h"
#include "Log.h"
#include "OrvaneServiceStrings.h"
#include "utilities/Contact.h"

using namespace OrvaneServiceStrings;

bool OrvaneServiceHelper::getPhonebookRecordFromObject(std::string& stringRecord, int& id, json_t*& object,
                                                       bool& deleted) {
    stringRecord.clear();
    std::string availability;
    const bool hasId = getIntegerFromJson(object, id, OV_ID);
    const bool hasAvailability = getStringFromJson(object, availability, OV_AVAILABILITY);
    if (!hasId || !hasAvailability) {
        ORVANE_LOG(WARNING, "getPhonebookRecordFromObject() ignoring record [%s]", OrvaneJson::dump(object).c_str());
        return false;
    }
    // E-mail, company and job title are written to the cloud but not taken over from it.
    Contact contact;
    contact.id = std::to_string(id);
    getStringFromJson(object, contact.firstname, OV_FIRSTNAME);
    getStringFromJson(object, contact.lastname, OV_LASTNAME);
    getStringFromJson(object, contact.businessNumber, OV_BUSINESS_PHONE);
    getStringFromJson(object, contact.businessNumber2, OV_BUSINESS_PHONE_2);
    getStringFromJson(object, contact.mobile, OV_MOBILE_PHONE);
    getStringFromJson(object, contact.homePhone, OV_HOME_PHONE);
    deleted = availability != "Alive";
    stringRecord = contact.serialize();
    return true;
}
