#pragma once

#include <set>
#include <string>
#include <vector>

/// The telephone's text form of strings, integers and sets of strings: the inside of a JSON array (RFC 8259). An
/// item is appended behind "," unless the text is still empty. Bytes from 0x80 on pass as they are; only quotes,
/// backslash and control characters are escaped. The empty set and the empty vector are the empty text.
/// Stateless: any thread may call it.
class Serializer {
public:
    static std::string serialize(const std::vector<std::string>& values);
    static std::string serialize(const std::set<std::string>& values);

    /// Appends one item to `text`. `reserved` is always false.
    static void serialize(std::string& text, const std::string& value, bool reserved);
    static void serialize(std::string& text, int value);

    /// Each clears its output first. False, with the output empty, when the text is not of this form.
    static bool deserialize(const std::string& text, std::set<std::string>& values);
    static bool deserialize(const std::string& text, std::vector<std::string>& values);

    /// Takes the item at `position` and moves `position` behind it and its ",". False, with nothing moved, when no
    /// item of that kind stands there.
    static bool deserialize(const std::string& text, std::size_t& position, std::string& value);
    static bool deserialize(const std::string& text, std::size_t& position, int& value);
};
