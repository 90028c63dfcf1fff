#pragma once

#include <string>

/// A value of the JSON library as text on one line. Bytes that are no UTF-8 become U+FFFD, never a reason to fail.
template <class Json>
std::string jsonLine(const Json& value) {
    return value.dump(-1, ' ', false, Json::error_handler_t::replace);
}
