#include "orvane-phone/TextWidth.h"

#include "utilities/JsonText.h"

#include <algorithm>
#include <array>
#include <vector>

namespace {

struct Character {
    std::string bytes;
    int columns;
};

struct Range {
    char32_t first;
    char32_t last;
};

constexpr const char* ellipsis = "\xE2\x80\xA6";

bool isIn(char32_t codePoint, const Range* begin, const Range* end) {
    return std::any_of(begin, end,
                       [codePoint](const Range& range) { return codePoint >= range.first && codePoint <= range.last; });
}

/// The ranges that names are made of; a terminal knows more of them, and a rare one costs a crooked column at most.
int columnsOfCharacter(char32_t codePoint) {
    static constexpr std::array<Range, 6> combining = {
        {{0x300, 0x36F}, {0x483, 0x489}, {0x591, 0x5BD}, {0x200B, 0x200F}, {0x20D0, 0x20FF}, {0xFE00, 0xFE0F}}};
    static constexpr std::array<Range, 8> wide = {{{0x1100, 0x115F},
                                                   {0x2E80, 0x303E},
                                                   {0x3041, 0xA4CF},
                                                   {0xAC00, 0xD7A3},
                                                   {0xF900, 0xFAFF},
                                                   {0xFF00, 0xFF60},
                                                   {0x1F300, 0x1FAFF},
                                                   {0x20000, 0x3FFFD}}};
    if (isIn(codePoint, combining.data(), combining.data() + combining.size())) {
        return 0;
    }
    return isIn(codePoint, wide.data(), wide.data() + wide.size()) ? 2 : 1;
}

/// The code point at `position` of a text in UTF-8, and the length of its sequence.
char32_t codePointAt(const std::string& text, std::size_t position, std::size_t& length) {
    const auto lead = static_cast<unsigned char>(text[position]);
    length = lead < 0x80 ? 1 : lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
    char32_t codePoint = length == 1 ? lead : lead & (0xFFU >> (length + 1));
    for (std::size_t index = 1; index < length; ++index) {
        codePoint = codePoint << 6U | (static_cast<unsigned char>(text[position + index]) & 0x3FU);
    }
    return codePoint;
}

bool isControl(char32_t codePoint) {
    return codePoint < 0x20 || (codePoint >= 0x7F && codePoint < 0xA0);
}

std::vector<Character> charactersOf(const std::string& anyText) {
    const std::string text = JsonText::validUtf8(anyText);
    std::vector<Character> characters;
    std::size_t length = 0;
    for (std::size_t position = 0; position < text.size(); position += length) {
        const char32_t codePoint = codePointAt(text, position, length);
        if (isControl(codePoint)) {
            characters.push_back({" ", 1});
        } else {
            characters.push_back({text.substr(position, length), columnsOfCharacter(codePoint)});
        }
    }
    return characters;
}

int sum(const std::vector<Character>& characters) {
    int columns = 0;
    for (const Character& character : characters) {
        columns += character.columns;
    }
    return columns;
}

/// The text in at most that many columns, and how many it takes.
std::string cut(const std::string& text, int columns, int& used) {
    const std::vector<Character> characters = charactersOf(text);
    used = sum(characters);
    const bool whole = used <= columns;
    const int room = whole ? columns : columns - 1;
    std::string fitted;
    used = 0;
    for (const Character& character : characters) {
        if (used + character.columns > room) {
            break;
        }
        fitted += character.bytes;
        used += character.columns;
    }
    if (!whole && columns > 0) {
        fitted += ellipsis;
        ++used;
    }
    return fitted;
}

std::string blanks(int count) {
    return std::string(static_cast<std::size_t>(std::max(0, count)), ' ');
}

} // namespace

int TextWidth::columnsOf(const std::string& text) {
    return sum(charactersOf(text));
}

std::string TextWidth::fit(const std::string& text, int columns) {
    int used = 0;
    const std::string fitted = cut(text, columns, used);
    return fitted + blanks(columns - used);
}

std::string TextWidth::fitRight(const std::string& text, int columns) {
    int used = 0;
    const std::string fitted = cut(text, columns, used);
    return blanks(columns - used) + fitted;
}
