#include "channel/ChannelFaults.h"

#include "base/BadInput.h"

#include <limits>

namespace cloudsim {
namespace {

struct Flag {
    const char* name;
    bool ChannelFaults::* member;
};
constexpr Flag flags[] = {{"refuseRecovery", &ChannelFaults::refuseRecovery},
                          {"disabledAsTexts", &ChannelFaults::disabledAsTexts},
                          {"ignoreHeartbeats", &ChannelFaults::ignoreHeartbeats},
                          {"stuckSequence", &ChannelFaults::stuckSequence},
                          {"omitContext", &ChannelFaults::omitContext},
                          {"foreignSubscriptionId", &ChannelFaults::foreignSubscriptionId}};

struct Number {
    const char* name;
    int ChannelFaults::* member;
};
constexpr Number numbers[] = {{"loseReplies", &ChannelFaults::loseReplies},
                              {"replyDelayMilliseconds", &ChannelFaults::replyDelayMilliseconds},
                              {"replyStatus", &ChannelFaults::replyStatus},
                              {"corruptFrames", &ChannelFaults::corruptFrames},
                              {"duplicateFrames", &ChannelFaults::duplicateFrames},
                              {"fragmentBytes", &ChannelFaults::fragmentBytes}};

struct Texts {
    const char* name;
    std::vector<std::string> ChannelFaults::* member;
};
const Texts texts[] = {{"disabledFilters", &ChannelFaults::disabledFilters},
                       {"unansweredFilters", &ChannelFaults::unansweredFilters}};
constexpr const char* connectionDetails = "connectionDetails";

template <class Entry, std::size_t size>
const Entry* named(const Entry (&table)[size], const std::string& name) {
    for (const auto& entry : table)
        if (name == entry.name)
            return &entry;
    return nullptr;
}

void setTexts(std::vector<std::string>& list, const std::string& key, const Json& value) {
    if (!value.is_array())
        throw BadInput(key + ": must be a list of texts");
    for (const auto& entry : value) {
        if (!entry.is_string())
            throw BadInput(key + ": must be a list of texts");
        list.push_back(entry);
    }
}

void set(ChannelFaults& faults, const std::string& key, const Json& value) {
    if (const auto* flag = named(flags, key)) {
        faults.*flag->member = requireFlag(value, key);
    } else if (const auto* number = named(numbers, key)) {
        faults.*number->member = static_cast<int>(requireNumber(value, key, {0, std::numeric_limits<int>::max()}));
    } else if (const auto* list = named(texts, key)) {
        setTexts(faults.*list->member, key, value);
    } else if (key == connectionDetails && value.is_object()) {
        faults.connectionDetails = value;
    } else {
        throw BadInput(key + ": is no fault of the channel");
    }
}

} // namespace

Json toJson(const ChannelFaults& faults) {
    Json json = Json::object();
    for (const auto& flag : flags)
        json[flag.name] = faults.*flag.member;
    for (const auto& number : numbers)
        json[number.name] = faults.*number.member;
    for (const auto& list : texts)
        json[list.name] = faults.*list.member;
    json[connectionDetails] = faults.connectionDetails;
    return json;
}

ChannelFaults channelFaultsFromJson(const Json& json) {
    if (!json.is_object())
        throw BadInput("channel faults are an object");
    ChannelFaults faults;
    for (const auto& [key, value] : json.items())
        set(faults, key, value);
    return faults;
}

} // namespace cloudsim
