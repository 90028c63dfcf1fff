#pragma once

#include <string>
#include <vector>

/// Bodies as the cloud sends them. Builders, so that a test names only what matters to it.
namespace CloudAnswers {

/// One element of a call log. Members left empty are left out.
struct Call {
    std::string id = "call-1";
    std::string action = "Phone Call";
    std::string startTime = "2026-01-02T03:04:05.000Z";
    std::string direction = "Inbound";
    std::string result = "Accepted";
    int durationSeconds = 65;
    std::string sessionId = "s-1";
    std::string fromNumber = "+49301";
    std::string fromName = "Anna";
    std::string toNumber = "+49302";
    std::string toName = "Bert";
    bool deleted = false;
    bool delegated = false;

    Call& withId(std::string value) { return id = std::move(value), sessionId = "s-" + id, *this; }
    Call& inbound(std::string value) { return direction = "Inbound", result = std::move(value), *this; }
    Call& outbound(std::string value) { return direction = "Outbound", result = std::move(value), *this; }
    Call& gone() { return deleted = true, *this; }
    std::string json() const;
};

inline Call call(const std::string& id) {
    return Call().withId(id);
}
inline Call missedCall(const std::string& id) {
    return call(id).inbound("Missed");
}
inline Call dialledCall(const std::string& id, const std::string& number) {
    Call dialled = call(id).outbound("Call connected");
    dialled.toNumber = number;
    return dialled;
}

/// Body of a call log synchronisation.
std::string callLog(const std::string& syncToken, const std::vector<Call>& calls);

/// One element of an address book.
struct Contact {
    int id = 1;
    std::string firstName = "Carla";
    std::string lastName = "Clay";
    std::string mobilePhone;
    std::string availability = "Alive";

    std::string json() const;
};

/// Body of a page of the address book; a nextPageId of 0 is left out.
std::string addressBook(const std::string& syncToken, const std::vector<Contact>& contacts, int nextPageId = 0);

std::string token(const std::string& accessToken = "T1", int expiresInSeconds = 3600);
std::string extension(long long id = 4711);
std::string webSocketToken(const std::string& token = "W1", const std::string& uri = "wss://events.example/ws");
/// Own presence, or that of a colleague when an extension id is given.
std::string presence(const std::string& dndStatus, long long extensionId = 4711);

struct GrantedLine {
    std::string id;
    std::string name;
};
/// Body of a page of grants; a page of 0 leaves page and totalPages out.
std::string grants(const std::vector<GrantedLine>& lines, int page = 0, int totalPages = 0);

/// Record text of a call as the observers are given it.
std::string recordText(const Call& call, const std::string& callType, const std::string& number,
                       const std::string& name, const std::string& lineTag = "Unknown.Name",
                       const std::string& lineNumber = "Unknown.Name");

/// Body of the answer of a provider that has two calls, two shared lines and one contact, to a GET of that target.
std::string answerTo(const std::string& target);

} // namespace CloudAnswers
