#pragma once

#include <string>

/// Writing JSON strings (RFC 8259, section 7).
namespace JsonText {

/// Appends the text in quotes. Quotes, backslash and control characters are escaped; bytes from 0x80 on pass.
void appendString(std::string& out, const std::string& text);

/// The text with every byte that is no part of valid UTF-8 (RFC 3629) replaced by U+FFFD.
std::string validUtf8(const std::string& text);

/// Appends validUtf8(text) in quotes.
void appendValidString(std::string& out, const std::string& text);

} // namespace JsonText
