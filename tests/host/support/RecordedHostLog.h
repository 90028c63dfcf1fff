#pragma once

#include <string>
#include <vector>

/// The log of a test program: what the host platform wrote, in place of a sink.
namespace RecordedHostLog {

struct Line {
    std::string tag;
    int level = 0;
    std::string text;
};

void clear();
std::vector<Line> lines();
/// Whether a line of that level holds the text.
bool contains(int level, const std::string& text);
/// Whether any line of any level holds the text.
bool mentions(const std::string& text);

} // namespace RecordedHostLog
