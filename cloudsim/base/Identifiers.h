#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace cloudsim {

std::string randomBytes(std::size_t count);
/// Random text of letters and digits; safe in URLs.
std::string randomToken(std::size_t length);
/// A random UUID of version 4.
std::string randomUuid();

std::string toBase64(std::string_view bytes);
/// Throws std::invalid_argument when the text is no base64.
std::string fromBase64(std::string_view text);

std::string sha1(std::string_view bytes);

} // namespace cloudsim
