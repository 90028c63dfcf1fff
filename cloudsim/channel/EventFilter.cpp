#include "channel/EventFilter.h"

#include "base/Query.h"
#include "base/WholeNumber.h"

#include <algorithm>

namespace cloudsim {
namespace {

std::optional<EventFilter::Kind> kindOf(const std::vector<std::string>& segments) {
    std::string name;
    for (std::size_t i = 6; i < segments.size(); ++i)
        name += (name.empty() ? "" : "/") + segments[i];
    if (name == "presence")
        return EventFilter::Kind::PRESENCE;
    if (name == "message-store")
        return EventFilter::Kind::MESSAGE_STORE;
    if (name == "presence/dnd")
        return EventFilter::Kind::DND;
    if (name == "presence/line/presence/dnd")
        return EventFilter::Kind::LINE_DND;
    return std::nullopt;
}

} // namespace

bool EventFilter::concerns(const CloudEvent& event) const {
    switch (event.kind) {
    case CloudEvent::Kind::PRESENCE:
        return kind == Kind::PRESENCE && extensionId == event.extensionId;
    case CloudEvent::Kind::MESSAGE_STORE:
        return kind == Kind::MESSAGE_STORE && extensionId == event.extensionId;
    case CloudEvent::Kind::DND:
        return (kind == Kind::DND && extensionId == event.extensionId) ||
               (kind == Kind::LINE_DND && extensionId != event.extensionId);
    }
    return false;
}

std::optional<EventFilter> readFilter(const std::string& text, const State& state, std::int64_t subscriberId) {
    Target target = splitTarget(text);
    auto segments = pathSegments(target.path);
    if (segments.size() < 7 || segments[0] != "restapi" || segments[1] != "v1.0" || segments[2] != "account" ||
        segments[4] != "extension")
        return std::nullopt;
    if (segments[3] != "~" && segments[3] != std::to_string(state.accountId))
        return std::nullopt;
    auto kind = kindOf(segments);
    if (!kind)
        return std::nullopt;
    EventFilter filter{*kind, subscriberId, ""};
    if (segments[5] != "~") {
        auto id = wholeNumber<std::int64_t>(segments[5]);
        if (!id)
            return std::nullopt;
        filter.extensionId = *id;
    }
    filter.text =
        "/restapi/v1.0/account/" + std::to_string(state.accountId) + "/extension/" + std::to_string(filter.extensionId);
    for (std::size_t i = 6; i < segments.size(); ++i)
        filter.text += "/" + segments[i];
    if (!target.queryText.empty())
        filter.text += "?" + target.queryText;
    return filter;
}

bool isPermitted(const EventFilter& filter, const State& state, std::int64_t subscriberId) {
    if (filter.extensionId == subscriberId)
        return true;
    auto subscriber = state.extensions.find(subscriberId);
    if (subscriber == state.extensions.end() || state.extensions.count(filter.extensionId) == 0)
        return false;
    const auto& grants = subscriber->second.grants;
    switch (filter.kind) {
    case EventFilter::Kind::PRESENCE:
    case EventFilter::Kind::DND:
        return true;
    case EventFilter::Kind::MESSAGE_STORE:
        return std::find(grants.begin(), grants.end(), filter.extensionId) != grants.end();
    case EventFilter::Kind::LINE_DND:
        return false;
    }
    return false;
}

} // namespace cloudsim
