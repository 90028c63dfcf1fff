#include "utilities/JsonText.h"

#include <algorithm>
#include <array>
#include <cstdio>

namespace JsonText {

namespace {

/// Length of the valid UTF-8 sequence at `position`, 0 when there is none.
std::size_t sequenceLength(const std::string& text, std::size_t position) {
    const auto byteAt = [&text](std::size_t index) { return static_cast<unsigned char>(text[index]); };
    const unsigned char lead = byteAt(position);
    if (lead < 0x80) {
        return 1;
    }
    std::size_t length = 0;
    // The second byte is narrower for some leads: no overlong forms, no surrogates, nothing beyond U+10FFFF.
    unsigned char lowest = 0x80;
    unsigned char highest = 0xBF;
    if (lead >= 0xC2 && lead <= 0xDF) {
        length = 2;
    } else if (lead >= 0xE0 && lead <= 0xEF) {
        length = 3;
        lowest = lead == 0xE0 ? 0xA0 : 0x80;
        highest = lead == 0xED ? 0x9F : 0xBF;
    } else if (lead >= 0xF0 && lead <= 0xF4) {
        length = 4;
        lowest = lead == 0xF0 ? 0x90 : 0x80;
        highest = lead == 0xF4 ? 0x8F : 0xBF;
    } else {
        return 0;
    }
    if (position + length > text.size()) {
        return 0;
    }
    for (std::size_t index = position + 1; index < position + length; ++index) {
        if (byteAt(index) < lowest || byteAt(index) > highest) {
            return 0;
        }
        lowest = 0x80;
        highest = 0xBF;
    }
    return length;
}

bool needsEscape(char character) {
    return character == '"' || character == '\\' || static_cast<unsigned char>(character) < 0x20;
}

} // namespace

void appendString(std::string& out, const std::string& text) {
    out += '"';
    for (std::size_t position = 0; position < text.size(); ++position) {
        // Most texts need no escape: they are appended as a whole.
        const std::size_t plainBegin = position;
        while (position < text.size() && !needsEscape(text[position])) {
            ++position;
        }
        out.append(text, plainBegin, position - plainBegin);
        if (position == text.size()) {
            break;
        }
        switch (const char character = text[position]) {
        case '"':
            out += "\\\"";
            break;
        case '\\':
            out += "\\\\";
            break;
        case '\n':
            out += "\\n";
            break;
        case '\r':
            out += "\\r";
            break;
        case '\t':
            out += "\\t";
            break;
        default:
            std::array<char, 8> escape{};
            std::snprintf(escape.data(), escape.size(), "\\u%04x", static_cast<unsigned>(character));
            out += escape.data();
        }
    }
    out += '"';
}

std::string validUtf8(const std::string& text) {
    std::string valid;
    valid.reserve(text.size());
    std::size_t copied = 0;
    for (std::size_t position = 0; position < text.size();) {
        const std::size_t length = sequenceLength(text, position);
        if (length == 0) {
            valid.append(text, copied, position - copied);
            valid += "\xEF\xBF\xBD";
            copied = ++position;
        } else {
            position += length;
        }
    }
    valid.append(text, copied, std::string::npos);
    return valid;
}

void appendValidString(std::string& out, const std::string& text) {
    const bool plain = std::all_of(text.begin(), text.end(), [](char character) {
        return !needsEscape(character) && static_cast<unsigned char>(character) < 0x80;
    });
    if (!plain) {
        appendString(out, validUtf8(text));
        return;
    }
    // Most texts by far: nothing to replace and nothing to escape.
    out += '"';
    out += text;
    out += '"';
}

} // namespace JsonText
