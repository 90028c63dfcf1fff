#include "support/RecordedHostLog.h"

#include "logging/Logging.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <mutex>

namespace {

std::mutex mutex;
std::vector<RecordedHostLog::Line> recorded;

} // namespace

bool loggingOnAppLine(const char*, int) {
    return true;
}

void logAppLine(const char* tag, const char*, int level, int, const char* format, ...) {
    char text[4096];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    const std::lock_guard<std::mutex> lock(mutex);
    recorded.push_back({tag, level, text});
}

void RecordedHostLog::clear() {
    const std::lock_guard<std::mutex> lock(mutex);
    recorded.clear();
}

std::vector<RecordedHostLog::Line> RecordedHostLog::lines() {
    const std::lock_guard<std::mutex> lock(mutex);
    return recorded;
}

bool RecordedHostLog::contains(int level, const std::string& text) {
    const std::vector<Line> now = lines();
    return std::any_of(now.begin(), now.end(), [level, &text](const Line& line) {
        return line.level == level && line.tag == "Orvane Host" && line.text.find(text) != std::string::npos;
    });
}

bool RecordedHostLog::mentions(const std::string& text) {
    const std::vector<Line> now = lines();
    return std::any_of(now.begin(), now.end(),
                       [&text](const Line& line) { return line.text.find(text) != std::string::npos; });
}
