#pragma once

#include <string>

namespace StandardOutput {

/// Writes and flushes. False, behind one line on standard error, when standard output does not take it all.
bool write(const std::string& program, const std::string& text);

} // namespace StandardOutput
