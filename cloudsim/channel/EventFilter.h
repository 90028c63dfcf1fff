#pragma once

#include "model/State.h"
#include "rest/RestRequest.h"

#include <optional>
#include <string>

namespace cloudsim {

/// What a subscriber wants to be told.
struct EventFilter {
    enum class Kind { PRESENCE, MESSAGE_STORE, DND, LINE_DND };
    Kind kind = Kind::PRESENCE;
    std::int64_t extensionId = 0;
    std::string text; ///< with account and extension named

    bool concerns(const CloudEvent& event) const;
};

/// Reads a filter for a subscriber. "~" stands for the subscriber's own account and extension. Nothing when there are
/// no such events.
std::optional<EventFilter> readFilter(const std::string& text, const State& state, std::int64_t subscriberId);
/// Whether the subscriber may have these events.
bool isPermitted(const EventFilter& filter, const State& state, std::int64_t subscriberId);

} // namespace cloudsim
