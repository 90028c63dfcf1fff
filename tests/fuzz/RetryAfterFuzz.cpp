#include "fuzz/FuzzInput.h"
#include "network/RetryAfter.h"

#include <cstdlib>

/// The text of a Retry-After header.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::time_t now = 1800000000;
    FuzzInput input(data, size);
    const std::string value = input.rest();
    const int seconds = RetryAfter::seconds(value, now);
    // White space around it means nothing, and what is not understood is told from what has passed.
    if (seconds < -1 || RetryAfter::seconds(" \t" + value + " ", now) != seconds) {
        std::abort();
    }
    return 0;
}
