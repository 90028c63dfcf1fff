#pragma once

#include <functional>
#include <string>
#include <vector>

namespace NameLookup {

/// Addresses as text, in the order in which they are to be tried; empty with a reason when there are none.
struct Result {
    std::vector<std::string> addresses;
    std::string error;
};

/// Looks a host's addresses up on a thread of its own and reports there: the system's resolver can neither be bounded
/// in time nor be ended.
void start(const std::string& host, std::function<void(Result)> finished);

} // namespace NameLookup
