#include "RecordedLog.h"

#include "TestPlatform.h"
#include "logging/Logging.h"

#include <algorithm>
#include <cstdarg>
#include <cstdio>

void RecordedLog::add(Line line) {
    TestPlatform::current().steps.add("log ", std::to_string(line.level) + " " + line.text);
    if (divertedTo) {
        divertedTo(line);
    } else {
        m_lines.push_back(std::move(line));
    }
}

int RecordedLog::count(int lineLevel, const std::string& text) const {
    return static_cast<int>(std::count_if(m_lines.begin(), m_lines.end(), [&](const Line& line) {
        return line.level == lineLevel && line.text == text;
    }));
}

bool RecordedLog::hasBeginning(int lineLevel, const std::string& beginning) const {
    return std::any_of(m_lines.begin(), m_lines.end(), [&](const Line& line) {
        return line.level == lineLevel && line.text.compare(0, beginning.length(), beginning) == 0;
    });
}

bool RecordedLog::contains(const std::string& part) const {
    return std::any_of(m_lines.begin(), m_lines.end(),
                       [&](const Line& line) { return line.text.find(part) != std::string::npos; });
}

std::string RecordedLog::text(int lineLevel) const {
    std::string all;
    for (const Line& line : m_lines) {
        if (line.level == lineLevel) {
            all += line.text + "\n";
        }
    }
    return all;
}

bool loggingOnAppLine(const char*, int level) {
    return level <= TestPlatform::current().log.level;
}

void logAppLine(const char* tag, const char* file, int level, int, const char* format, ...) {
    std::va_list arguments;
    va_start(arguments, format);
    std::va_list measured;
    va_copy(measured, arguments);
    const int length = std::vsnprintf(nullptr, 0, format, measured);
    va_end(measured);
    std::string text(static_cast<std::size_t>(length), '\0');
    std::vsnprintf(text.data(), text.size() + 1, format, arguments);
    va_end(arguments);
    TestPlatform::current().log.add({tag, file, level, std::move(text)});
}
