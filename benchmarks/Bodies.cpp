#include "Bodies.h"

namespace Bodies {

namespace {

std::string callRecord(int number, bool deleted) {
    const std::string id = "ATp4mVyyXg3" + std::to_string(100000 + number);
    const bool outbound = number % 3 == 0;
    const bool missed = number % 3 == 1;
    const std::string colleague =
        R"({"extensionNumber":"101","name":"Henrike Sommerfeld","phoneNumber":"+493055501101"})";
    const std::string other = R"({"phoneNumber":"+4930555)" + std::to_string(20000 + number) + R"(","name":"Caller )" +
                              std::to_string(number) + R"(","location":"Berlin"})";
    return R"({"id":")" + id + R"(","sessionId":"98)" + std::to_string(700000 + number) +
           R"(","telephonySessionId":")" + sessionOf(number) +
           R"(","startTime":"2026-11-20T09:41:22.417Z","duration":)" + std::to_string(number % 4000) +
           R"(,"type":"Voice","direction":")" + (outbound ? "Outbound" : "Inbound") +
           R"(","action":"Phone Call","result":")" +
           (outbound ? "Call connected"
            : missed ? "Missed"
                     : "Accepted") +
           (deleted ? R"(","deleted":true)" : R"(","deleted":false)") + R"(,"from":)" + (outbound ? colleague : other) +
           R"(,"to":)" + (outbound ? other : colleague) + "}";
}

std::string contact(int number, bool deleted) {
    const std::string text = std::to_string(number);
    return R"({"id":)" + std::to_string(400000 + number) + R"(,"availability":")" + (deleted ? "Deleted" : "Alive") +
           R"(","firstName":"Annegret )" + text + R"(","lastName":"Bergengruen )" + text +
           R"(","businessPhone":"+49305550)" + std::to_string(1000 + number) + R"(","mobilePhone":"+4917155)" +
           std::to_string(10000 + number) + R"(","homePhone":"+493066)" + std::to_string(10000 + number) +
           R"(","email":"person)" + text + R"(@company.example","company":"Company )" + text +
           R"(","jobTitle":"Consultant"})";
}

template <class Element>
std::string array(int first, int count, bool deleted, Element element) {
    std::string text = "[";
    for (int number = first; number < first + count; ++number) {
        text += (number == first ? "" : ",") + element(number, deleted);
    }
    return text + "]";
}

} // namespace

std::string sessionOf(int number) {
    return "s-0a1b2c3d4e5f6071829" + std::to_string(100000 + number);
}

std::string callLog(int first, int count, bool deleted) {
    return R"({"syncInfo":{"syncType":"ISync","syncToken":"BAsynctoken0123456789","syncTime":"2026-11-20T09:41:22Z"},)"
           R"("records":)" +
           array(first, count, deleted, callRecord) + "}";
}

std::string phonebookPage(int first, int count, const std::string& token, bool deleted) {
    return R"({"syncInfo":{"syncType":"FSync","syncToken":")" + token +
           R"(","syncTime":"2026-11-20T09:41:22Z"},"records":)" + array(first, count, deleted, contact) + "}";
}

std::string ringingFrame() {
    return R"([{"type":"ServerNotification","messageId":"7f3c2a10-9b1d-4c55-8a77-3f0e5d1c2b3a","status":200,)"
           R"("headers":{"RequestId":"7f3c2a10-9b1d-4c55-8a77"}},)"
           R"({"uuid":"3915072883011224490","event":"/restapi/v1.0/account/1/extension/4711/presence)"
           R"(?detailedTelephonyState=true","timestamp":"2026-11-20T09:41:22.417Z",)"
           R"("subscriptionId":"b3a1c7d2-5e6f-4a8b-9c0d-112233445566","ownerId":"4711","body":{"extensionId":"4711",)"
           R"("telephonyStatus":"Ringing","activeCalls":[{"id":"98700001","direction":"Inbound","from":"+493055520001",)"
           R"("fromName":"Caller 1","to":"+493055501101","toName":"Henrike Sommerfeld","telephonyStatus":"Ringing",)"
           R"("sessionId":"98700001","telephonySessionId":"s-0a1b2c3d4e5f6071829100001",)"
           R"("startTime":"2026-11-20T09:41:22.417Z","partyId":"p-0a1b2c3d4e5f6071829100001-1"}],"sequence":118,)"
           R"("presenceStatus":"Busy","userStatus":"Available","dndStatus":"TakeAllCalls"}}])";
}

} // namespace Bodies
