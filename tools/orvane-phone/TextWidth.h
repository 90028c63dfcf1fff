#pragma once

#include <string>

/// Texts in columns of a terminal. Bytes that are no UTF-8, and control characters, are replaced by U+FFFD and a blank.
namespace TextWidth {

/// Columns that the text takes: wide characters two, combining ones none.
int columnsOf(const std::string& text);

/// The text in exactly that many columns, filled with blanks, or cut with "…" as its last character.
std::string fit(const std::string& text, int columns);

/// The same at the right edge.
std::string fitRight(const std::string& text, int columns);

} // namespace TextWidth
