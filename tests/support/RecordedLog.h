#pragma once

#include <functional>
#include <string>
#include <vector>

/// The log as the service wrote it.
class RecordedLog {
public:
    struct Line {
        std::string tag;
        std::string source;
        int level;
        std::string text;
    };

    /// Takes each line instead of the record.
    std::function<void(const Line&)> divertedTo;

    /// The most detailed level that is written; lines beyond it are neither built nor recorded.
    int level = 6;

    const std::vector<Line>& lines() const { return m_lines; }
    void add(Line line);
    void clear() { m_lines.clear(); }

    /// How many lines of that level have exactly this text.
    int count(int lineLevel, const std::string& text) const;
    bool has(int lineLevel, const std::string& text) const { return count(lineLevel, text) > 0; }
    /// Whether a line of that level begins like this; for lines that end in what the test cannot know.
    bool hasBeginning(int lineLevel, const std::string& beginning) const;
    /// Whether any line, of whatever level, contains this text.
    bool contains(const std::string& part) const;
    /// Everything of a level, for a failure's message.
    std::string text(int lineLevel) const;

private:
    std::vector<Line> m_lines;
};
