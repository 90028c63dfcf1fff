#include "CloudAnswers.h"

#include <cstdio>

namespace CloudAnswers {

namespace {

std::string quoted(const std::string& text) {
    return "\"" + text + "\"";
}

std::string member(const std::string& key, const std::string& value) {
    return value.empty() ? std::string() : quoted(key) + ":" + quoted(value);
}

std::string object(const std::vector<std::string>& members) {
    std::string text;
    for (const std::string& one : members) {
        if (!one.empty()) {
            text += (text.empty() ? "" : ",") + one;
        }
    }
    return "{" + text + "}";
}

std::string party(const std::string& key, const std::string& number, const std::string& name) {
    if (number.empty() && name.empty()) {
        return std::string();
    }
    return quoted(key) + ":" + object({member("phoneNumber", number), member("name", name)});
}

template <class Element>
std::string array(const std::vector<Element>& elements) {
    std::string text;
    for (const Element& element : elements) {
        text += (text.empty() ? "" : ",") + element.json();
    }
    return "[" + text + "]";
}

bool contains(const std::string& text, const char* part) {
    return text.find(part) != std::string::npos;
}

} // namespace

std::string Call::json() const {
    return object({member("id", id), member("action", action), member("startTime", startTime),
                   member("direction", direction), member("result", result),
                   "\"duration\":" + std::to_string(durationSeconds), member("telephonySessionId", sessionId),
                   deleted ? "\"deleted\":true" : "", party("from", fromNumber, fromName),
                   party("to", toNumber, toName), delegated ? "\"delegate\":{\"name\":\"Boss\"}" : ""});
}

std::string callLog(const std::string& syncToken, const std::vector<Call>& calls) {
    return "{\"syncInfo\":" + object({member("syncToken", syncToken)}) + ",\"records\":" + array(calls) + "}";
}

std::string Contact::json() const {
    return object({"\"id\":" + std::to_string(id), member("availability", availability), member("firstName", firstName),
                   member("lastName", lastName), member("mobilePhone", mobilePhone)});
}

std::string addressBook(const std::string& syncToken, const std::vector<Contact>& contacts, int nextPageId) {
    return object({nextPageId == 0 ? "" : "\"nextPageId\":" + std::to_string(nextPageId),
                   "\"syncInfo\":" + object({member("syncToken", syncToken)}), "\"records\":" + array(contacts)});
}

std::string token(const std::string& accessToken, int expiresInSeconds) {
    return object({member("accessToken", accessToken), "\"expiresIn\":" + std::to_string(expiresInSeconds)});
}

std::string extension(long long id) {
    return "{\"id\":" + std::to_string(id) + "}";
}

std::string webSocketToken(const std::string& token, const std::string& uri) {
    return object({member("ws_access_token", token), member("uri", uri), "\"expires_in\":300"});
}

std::string presence(const std::string& dndStatus, long long extensionId) {
    return object({member("dndStatus", dndStatus), "\"extension\":{\"id\":" + std::to_string(extensionId) + "}"});
}

std::string grants(const std::vector<GrantedLine>& lines, int page, int totalPages) {
    std::string records;
    for (const GrantedLine& line : lines) {
        records += (records.empty() ? "" : ",") + std::string("{\"extension\":") +
                   object({member("id", line.id), member("extensionNumber", "100"), member("type", "User"),
                           member("name", line.name)}) +
                   "}";
    }
    return object({page == 0 ? "" : "\"page\":" + std::to_string(page),
                   page == 0 ? "" : "\"totalPages\":" + std::to_string(totalPages), "\"records\":[" + records + "]"});
}

std::string recordText(const Call& call, const std::string& callType, const std::string& number,
                       const std::string& name, const std::string& lineTag, const std::string& lineNumber) {
    char duration[16];
    std::snprintf(duration, sizeof duration, "%02d:%02d", call.durationSeconds / 60, call.durationSeconds % 60);
    return "{" + callType + "," + call.id + "," + call.startTime + "," + duration + "," + number + "," + name + "," +
           lineTag + "," + lineNumber + "}";
}

std::string answerTo(const std::string& target) {
    if (contains(target, "/auth/token")) {
        return token();
    }
    if (contains(target, "/wstoken")) {
        return webSocketToken();
    }
    if (contains(target, "/grant")) {
        return grants({{"900", "line 900"}, {"901", "line 901"}});
    }
    if (contains(target, "/call-log-sync")) {
        return callLog("c1", {call("1"), missedCall("2")});
    }
    if (contains(target, "/address-book-sync")) {
        return addressBook("p1", {Contact()});
    }
    if (contains(target, "/address-book")) {
        return Contact().json();
    }
    if (contains(target, "/presence")) {
        return presence("TakeAllCalls", contains(target, "/extension/5001/") ? 5001 : 4711);
    }
    return extension();
}

} // namespace CloudAnswers
