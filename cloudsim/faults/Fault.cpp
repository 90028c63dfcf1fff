#include "faults/Fault.h"

#include "base/BadInput.h"
#include "base/Identifiers.h"

#include <functional>
#include <map>

namespace cloudsim {
namespace {

// The key is added to what these throw by their caller.
using Reader = std::function<void(FaultActions&, const Json&)>;

std::int64_t number(const Json& value) {
    constexpr std::int64_t maximum = std::int64_t{1} << 31;
    return requireNumber(value, "", {0, maximum});
}

bool truth(const Json& value) {
    return requireFlag(value, "");
}

std::string text(const Json& value) {
    return requireText(value, "");
}

int status(const Json& value) {
    auto code = number(value);
    if (code < 100 || code > 999)
        throw BadInput("must be a status");
    return static_cast<int>(code);
}

std::vector<std::string> texts(const Json& value) {
    if (!value.is_array())
        throw BadInput("must be a list of keys");
    std::vector<std::string> result;
    for (const auto& entry : value)
        result.push_back(text(entry));
    return result;
}

FaultActions::Reset resetMoment(const Json& value) {
    std::string moment = text(value);
    if (moment == "before")
        return FaultActions::Reset::BEFORE;
    if (moment == "in")
        return FaultActions::Reset::IN;
    if (moment == "after")
        return FaultActions::Reset::AFTER;
    throw BadInput("must be \"before\", \"in\" or \"after\"");
}

void addHeaders(FaultActions& actions, const Json& value) {
    if (!value.is_object())
        throw BadInput("must be an object");
    for (const auto& [name, content] : value.items())
        actions.headers.emplace_back(name, text(content));
}

void setRetryAfter(FaultActions& actions, const Json& value) {
    actions.headers.emplace_back("Retry-After", value.is_string() ? text(value) : value.dump());
}

void setBase64Body(FaultActions& actions, const Json& value) {
    try {
        actions.body = fromBase64(text(value));
    } catch (const std::invalid_argument&) {
        throw BadInput("must be base64");
    }
}

using Milliseconds = FaultActions::Milliseconds;

const std::map<std::string, Reader>& readers() {
    static const std::map<std::string, Reader> table{
        {"status", [](FaultActions& a, const Json& v) { a.status = status(v); }},
        {"retryAfter", setRetryAfter},
        {"headers", addHeaders},
        {"body", [](FaultActions& a, const Json& v) { a.body = text(v); }},
        {"bodyBase64", setBase64Body},
        {"bodyJson", [](FaultActions& a, const Json& v) { a.body = toText(v); }},
        {"redirect", [](FaultActions& a, const Json& v) { a.redirect = text(v); }},
        {"emptyAnswer", [](FaultActions& a, const Json& v) { a.emptyAnswer = truth(v); }},
        {"randomBytes", [](FaultActions& a, const Json& v) { a.randomBytes = static_cast<std::size_t>(number(v)); }},
        {"answerStatus", [](FaultActions& a, const Json& v) { a.answerStatus = status(v); }},
        {"missing", [](FaultActions& a, const Json& v) { a.missing = texts(v); }},
        {"wrongTypes", [](FaultActions& a, const Json& v) { a.wrongTypes = texts(v); }},
        {"malformed", [](FaultActions& a, const Json& v) { a.malformed = truth(v); }},
        {"nestedFirst", [](FaultActions& a, const Json& v) { a.nestedFirst = truth(v); }},
        {"hugeBodyBytes",
         [](FaultActions& a, const Json& v) { a.hugeBodyBytes = static_cast<std::size_t>(number(v)); }},
        {"hold", [](FaultActions& a, const Json& v) { a.hold = truth(v); }},
        {"latencyMilliseconds", [](FaultActions& a, const Json& v) { a.latency = Milliseconds(number(v)); }},
        {"jitterMilliseconds", [](FaultActions& a, const Json& v) { a.jitter = Milliseconds(number(v)); }},
        {"bytesPerSecond",
         [](FaultActions& a, const Json& v) { a.bytesPerSecond = static_cast<std::size_t>(number(v)); }},
        {"trickleBytes", [](FaultActions& a, const Json& v) { a.trickleBytes = static_cast<std::size_t>(number(v)); }},
        {"trickleMilliseconds", [](FaultActions& a, const Json& v) { a.trickleInterval = Milliseconds(number(v)); }},
        {"chunkBytes", [](FaultActions& a, const Json& v) { a.chunkBytes = static_cast<std::size_t>(number(v)); }},
        {"cutAfterBytes",
         [](FaultActions& a, const Json& v) { a.cutAfterBytes = static_cast<std::size_t>(number(v)); }},
        {"reset", [](FaultActions& a, const Json& v) { a.reset = resetMoment(v); }},
        {"closeAfter", [](FaultActions& a, const Json& v) { a.closeAfter = truth(v); }},
    };
    return table;
}

} // namespace

bool isFaultAction(const std::string& name) {
    return readers().count(name) != 0;
}

FaultActions faultActionsFromJson(const Json& members) {
    FaultActions actions;
    for (const auto& [key, value] : members.items()) {
        auto reader = readers().find(key);
        if (reader == readers().end())
            continue;
        try {
            reader->second(actions, value);
        } catch (const BadInput& error) {
            throw BadInput(key + ": " + error.what());
        }
    }
    return actions;
}

} // namespace cloudsim
