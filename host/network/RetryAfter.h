#pragma once

#include <ctime>
#include <string>

namespace RetryAfter {

/// Value of a Retry-After header (RFC 9110, section 10.2.3) in seconds from `now`: a number as it stands, a date as
/// the seconds until then, 0 when it has passed. -1 when it is neither.
int seconds(const std::string& value, std::time_t now);

} // namespace RetryAfter
