#include "utilities/Serializer.h"

#include "utilities/JsonText.h"

#include <charconv>

namespace {

void appendSeparator(std::string& text) {
    if (!text.empty()) {
        text += ',';
    }
}

/// Appends one code point as UTF-8.
void appendUtf8(std::string& text, unsigned codePoint) {
    if (codePoint < 0x80) {
        text += static_cast<char>(codePoint);
    } else if (codePoint < 0x800) {
        text += static_cast<char>(0xC0 | (codePoint >> 6));
        text += static_cast<char>(0x80 | (codePoint & 0x3F));
    } else if (codePoint < 0x10000) {
        text += static_cast<char>(0xE0 | (codePoint >> 12));
        text += static_cast<char>(0x80 | ((codePoint >> 6) & 0x3F));
        text += static_cast<char>(0x80 | (codePoint & 0x3F));
    } else {
        text += static_cast<char>(0xF0 | (codePoint >> 18));
        text += static_cast<char>(0x80 | ((codePoint >> 12) & 0x3F));
        text += static_cast<char>(0x80 | ((codePoint >> 6) & 0x3F));
        text += static_cast<char>(0x80 | (codePoint & 0x3F));
    }
}

/// Reads items off the text. Only what this class writes is certain to be read; other escapes of JSON are taken too.
class Reader {
public:
    Reader(const std::string& text, std::size_t position) : m_text(text), m_position(position) {}

    std::size_t position() const { return m_position; }
    bool atEnd() const { return m_position == m_text.size(); }

    /// True when nothing follows, or another item behind a separator.
    bool endOfItem() {
        if (atEnd()) {
            return true;
        }
        return m_text[m_position] == ',' && ++m_position < m_text.size();
    }

    bool readString(std::string& value) {
        if (atEnd() || m_text[m_position] != '"') {
            return false;
        }
        for (++m_position; m_position < m_text.size(); ++m_position) {
            const char character = m_text[m_position];
            if (character == '"') {
                ++m_position;
                return true;
            }
            if (static_cast<unsigned char>(character) < 0x20) {
                return false;
            }
            if (character != '\\') {
                value += character;
            } else if (!readEscape(value)) {
                return false;
            }
        }
        return false;
    }

    bool readInteger(int& value) {
        const char* begin = m_text.data() + m_position;
        const auto [end, error] = std::from_chars(begin, m_text.data() + m_text.size(), value);
        m_position += static_cast<std::size_t>(end - begin);
        return error == std::errc();
    }

private:
    bool readEscape(std::string& value) {
        if (++m_position >= m_text.size()) {
            return false;
        }
        static const std::string letters = "\"\\/bfnrt";
        static const std::string characters = "\"\\/\b\f\n\r\t";
        const std::size_t index = letters.find(m_text[m_position]);
        if (index != std::string::npos) {
            value += characters[index];
            return true;
        }
        unsigned codePoint = 0;
        if (m_text[m_position] != 'u' || !readFourDigits(codePoint)) {
            return false;
        }
        if (codePoint >= 0xD800 && codePoint < 0xDC00) {
            unsigned low = 0;
            if (!readLowSurrogate(low)) {
                return false;
            }
            codePoint = 0x10000 + ((codePoint - 0xD800) << 10) + (low - 0xDC00);
        } else if (codePoint >= 0xDC00 && codePoint < 0xE000) {
            return false;
        }
        appendUtf8(value, codePoint);
        return true;
    }

    bool readLowSurrogate(unsigned& low) {
        if (m_text.compare(m_position + 1, 2, "\\u") != 0) {
            return false;
        }
        m_position += 2;
        return readFourDigits(low) && low >= 0xDC00 && low < 0xE000;
    }

    /// Stands on the "u" before, on the last digit behind.
    bool readFourDigits(unsigned& codePoint) {
        if (m_position + 4 >= m_text.size()) {
            return false;
        }
        const char* begin = m_text.data() + m_position + 1;
        const auto [end, error] = std::from_chars(begin, begin + 4, codePoint, 16);
        m_position += 4;
        return error == std::errc() && end == begin + 4;
    }

    const std::string& m_text;
    std::size_t m_position;
};

template <class Add>
bool readStrings(const std::string& text, Add add) {
    Reader reader(text, 0);
    while (!reader.atEnd()) {
        std::string value;
        if (!reader.readString(value) || !reader.endOfItem()) {
            return false;
        }
        add(std::move(value));
    }
    return true;
}

template <class Container>
std::string serializeAll(const Container& values) {
    std::string text;
    for (const std::string& value : values) {
        Serializer::serialize(text, value, false);
    }
    return text;
}

} // namespace

std::string Serializer::serialize(const std::vector<std::string>& values) {
    return serializeAll(values);
}

std::string Serializer::serialize(const std::set<std::string>& values) {
    return serializeAll(values);
}

void Serializer::serialize(std::string& text, const std::string& value, bool) {
    appendSeparator(text);
    JsonText::appendString(text, value);
}

void Serializer::serialize(std::string& text, int value) {
    appendSeparator(text);
    text += std::to_string(value);
}

bool Serializer::deserialize(const std::string& text, std::set<std::string>& values) {
    values.clear();
    const bool good = readStrings(text, [&values](std::string&& value) { values.insert(std::move(value)); });
    if (!good) {
        values.clear();
    }
    return good;
}

bool Serializer::deserialize(const std::string& text, std::vector<std::string>& values) {
    values.clear();
    const bool good = readStrings(text, [&values](std::string&& value) { values.push_back(std::move(value)); });
    if (!good) {
        values.clear();
    }
    return good;
}

bool Serializer::deserialize(const std::string& text, std::size_t& position, std::string& value) {
    value.clear();
    Reader reader(text, position);
    if (position > text.size() || !reader.readString(value) || !reader.endOfItem()) {
        value.clear();
        return false;
    }
    position = reader.position();
    return true;
}

bool Serializer::deserialize(const std::string& text, std::size_t& position, int& value) {
    Reader reader(text, position);
    int number = 0;
    if (position > text.size() || !reader.readInteger(number) || !reader.endOfItem()) {
        return false;
    }
    position = reader.position();
    value = number;
    return true;
}
