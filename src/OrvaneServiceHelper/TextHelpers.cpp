#include "OrvaneServiceHelper/OrvaneServiceHelper.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace {

void appendTwoDigits(std::string& text, int value) {
    if (value <= 9) {
        text += '0';
    }
    text += std::to_string(value);
}

constexpr std::array<std::string_view, 15> unsupportedActions = {
    "Unknown",        "Phone Login", "Calling Card", "Text Relay",   "External Application",
    "CallOut-CallMe", "Move",        "FindMe",       "FollowMe",     "RingMe",
    "Ring Directly",  "E911 Update", "Support",      "Incoming Fax", "Outgoing Fax"};

} // namespace

std::string OrvaneServiceHelper::getDurationFromSeconds(const int& seconds) {
    int rest = seconds;
    int hours = 0;
    int minutes = 0;
    // A negative number counts as seconds below ten.
    if (seconds > 0) {
        hours = rest / 3600;
        rest %= 3600;
        minutes = rest / 60;
        rest %= 60;
    }
    std::string duration;
    if (hours != 0) {
        duration = std::to_string(hours) + ":";
    }
    appendTwoDigits(duration, minutes);
    duration += ':';
    appendTwoDigits(duration, rest);
    return duration;
}

bool OrvaneServiceHelper::isActionSupported(const std::string& action) {
    const std::string_view wanted = action;
    return std::find(unsupportedActions.begin(), unsupportedActions.end(), wanted) == unsupportedActions.end();
}

std::string OrvaneServiceHelper::methodToString(METHOD method) {
    switch (method) {
    case GET:
        return "GET";
    case PUT:
        return "PUT";
    case POST:
        return "POST";
    case DELETE:
        return "DELETE";
    case PATCH:
        return "PATCH";
    case OPTIONS:
        return "OPTIONS";
    case HEAD:
        return "HEAD";
    case CONNECT:
        return "CONNECT";
    }
    return "GET";
}

void OrvaneServiceHelper::convertStrVecIntoString(const std::vector<std::string>& in, std::string& out) {
    out.clear();
    for (std::size_t index = 0; index < in.size(); ++index) {
        out += (index == 0 ? "" : ", ") + in[index];
    }
}

void OrvaneServiceHelper::findIntersectionBetweenTwoVectors(std::vector<std::string>& first,
                                                            std::vector<std::string>& second,
                                                            std::vector<std::string>& onlyInFirst) {
    auto element = first.begin();
    while (element != first.end()) {
        const auto same = std::find(second.begin(), second.end(), *element);
        if (same != second.end()) {
            second.erase(same);
            ++element;
        } else {
            onlyInFirst.push_back(*element);
            element = first.erase(element);
        }
    }
}
