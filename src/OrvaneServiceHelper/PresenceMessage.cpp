#include "OrvaneServiceHelper/OrvaneServiceHelper.h"

#include "Json.h"
#include "Log.h"
#include "OrvaneServiceStrings.h"

using namespace OrvaneServiceStrings;
using namespace OrvaneServiceTypes;

namespace {

constexpr const char* takeAllCalls = "TakeAllCalls";
constexpr const char* doNotAcceptAnyCalls = "DoNotAcceptAnyCalls";

} // namespace

bool OrvaneServiceHelper::createUserPresenseMsg(bool dnd, std::string& out) {
    const OrvaneJson::Value object(json_object());
    if (!object) {
        ORVANE_LOG(DEBUG, "createUserPresenseMsg() - cannot allocate json message");
        return false;
    }
    json_t* message = object.get();
    const char* status = dnd ? doNotAcceptAnyCalls : takeAllCalls;
    if (!addValueToJsonObject(&message, OV_DND_STATUS, status)) {
        ORVANE_LOG(ERROR, "createUserPresenseMsg() - cannot add %s[%s]", OV_DND_STATUS, status);
        return false;
    }
    out = OrvaneJson::dump(message);
    if (out.empty()) {
        ORVANE_LOG(ERROR, "createUserPresenseMsg() - message is empty!");
        return false;
    }
    return true;
}

bool OrvaneServiceHelper::getDndStatus(const std::string& text, DndStatusType& status) {
    status = DND_UNKNOWN;
    if (text == takeAllCalls) {
        status = DND_TAKE_ALL_CALLS;
    } else if (text == doNotAcceptAnyCalls) {
        status = DND_DO_NOT_ACCEPT_ANY_CALLS;
    } else if (text == "DoNotAcceptDepartmentCalls") {
        status = DND_DO_NOT_ACCEPT_DEPARTMENT_CALLS;
    } else if (text == "TakeDepartmentCallsOnly") {
        status = DND_TAKE_DEPARTMENT_CALLS_ONLY;
    }
    return status != DND_UNKNOWN;
}
