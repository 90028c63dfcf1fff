#pragma once

#include "base/Json.h"
#include "net/HttpMessage.h"

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace cloudsim {

/// What is done to one exchange. Members that are not set change nothing.
struct FaultActions {
    enum class Reset { NONE, BEFORE, IN, AFTER };
    using Milliseconds = std::chrono::milliseconds;

    // Instead of the answer that the provider would give.
    std::optional<int> status;
    std::optional<std::string> body;
    std::string redirect; ///< "same", "relative", "port" or a Location as it is
    bool emptyAnswer = false;
    std::size_t randomBytes = 0;

    // To the answer that the provider gives.
    std::optional<int> answerStatus;
    std::vector<std::string> missing;
    std::vector<std::string> wrongTypes;
    bool malformed = false;
    bool nestedFirst = false;
    std::size_t hugeBodyBytes = 0;
    Headers headers;

    // To the way in which it is sent.
    bool hold = false;
    Milliseconds latency{0};
    Milliseconds jitter{0};
    std::size_t bytesPerSecond = 0;
    std::size_t trickleBytes = 0;
    Milliseconds trickleInterval{0};
    std::size_t chunkBytes = 0;
    std::optional<std::size_t> cutAfterBytes;
    Reset reset = Reset::NONE;
    bool closeAfter = false;

    bool replacesAnswer() const { return status || body || !redirect.empty() || emptyAnswer || randomBytes > 0; }
};

/// Reads the actions among the members. Throws BadInput for values that cannot be.
FaultActions faultActionsFromJson(const Json& members);
/// The names of all actions.
bool isFaultAction(const std::string& name);

} // namespace cloudsim
