#pragma once

#include <functional>
#include <string>
#include <vector>

/// One comparison: the service's work, and the least that can be done with the same text.
struct JsonCase {
    std::string name;
    double target;
    std::function<void()> prepare; ///< before each turn of `ours`, not measured
    std::function<void()> ours;
    std::function<void()> floor;
};

/// The cases by themselves; each is told apart by what the service did, and throws when it did something else.
std::vector<JsonCase> jsonCases();
