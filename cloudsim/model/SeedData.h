#pragma once

#include "model/State.h"

#include <random>

namespace cloudsim {

/// Makes up people, numbers and calls that look real. The same seed gives the same data, times apart, which lie before
/// the present. Names and numbers are fictitious: the numbers come from ranges that are kept for fiction.
class SeedData {
public:
    explicit SeedData(std::uint64_t seed);

    /// A company with devices, colleagues and two shared lines. The first device has so many calls and contacts.
    State makeState(int calls, int contacts);

    /// Members of a call that began at that time. The kind selects direction and result, and wraps around.
    Json makeCall(const Extension& owner, WallTime start, int kind);
    Json makeContact();
    /// Adds so many calls, each some time before the one made before it.
    void addCalls(Extension& extension, int count, WallTime before);

    /// A number from `low` to `high`, both included.
    int between(int low, int high);
    std::mt19937_64& random() { return m_random; }

private:
    std::string personName();
    std::string phoneNumber();
    Json outsideParty();

    std::mt19937_64 m_random;
    std::vector<Json> m_acquaintances;
};

} // namespace cloudsim
