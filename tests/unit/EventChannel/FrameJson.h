#pragma once

#include <gtest/gtest.h>
#include <jansson.h>

#include <cstdlib>
#include <memory>
#include <string>

/// JSON values of the tests: one owner each, compared as values and not as texts.
namespace TestJson {

struct Release {
    void operator()(json_t* value) const { json_decref(value); }
};
using Value = std::unique_ptr<json_t, Release>;

inline Value parse(const std::string& text) {
    json_error_t error;
    Value value(json_loads(text.c_str(), 0, &error));
    if (!value) {
        ADD_FAILURE() << "no JSON: " << text << "\n" << error.text;
    }
    return value;
}

inline std::string dump(const json_t* value) {
    const std::unique_ptr<char, decltype(&std::free)> text(json_dumps(value, JSON_ENCODE_ANY), &std::free);
    return text ? text.get() : "";
}

inline std::string stringAt(const json_t* object, const char* key) {
    const json_t* value = json_object_get(object, key);
    return json_is_string(value) ? json_string_value(value) : std::string();
}

/// Message id of a sent frame.
inline std::string messageId(const std::string& frame) {
    const Value root = parse(frame);
    return stringAt(json_array_get(root.get(), 0), "messageId");
}

inline ::testing::AssertionResult equal(const std::string& text, const std::string& expected) {
    const Value left = parse(text);
    const Value right = parse(expected);
    if (left && right && json_equal(left.get(), right.get()) == 1) {
        return ::testing::AssertionSuccess();
    }
    return ::testing::AssertionFailure() << "\n  is        " << text << "\n  should be " << expected;
}

/// Compares a sent frame with an expected one in which the message id reads "ID".
inline ::testing::AssertionResult frameEqual(const std::string& frame, std::string expected) {
    const std::string placeholder = "\"ID\"";
    const std::size_t position = expected.find(placeholder);
    if (position == std::string::npos) {
        return ::testing::AssertionFailure() << "no place for the message id in " << expected;
    }
    expected.replace(position, placeholder.size(), "\"" + messageId(frame) + "\"");
    return equal(frame, expected);
}

} // namespace TestJson
