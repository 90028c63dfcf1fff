#pragma once

#include <jansson.h>

#include <memory>
#include <string>

/// Ownership of Jansson values, and the two tests that every response handler begins with.
namespace OrvaneJson {

struct Release {
    void operator()(json_t* value) const { json_decref(value); }
};

/// Owns one reference.
using Value = std::unique_ptr<json_t, Release>;

/// Parses a response body. A failure is logged in the name of `operation`; the result is then null.
Value parse(const char* operation, const std::string& text);

/// The same behind isAnswerComplete(): what the body of a successful exchange holds, null for any other.
Value parseAnswer(const char* operation, int statusCode, const std::string& responseData);

/// Text of a value with the dump flags 0, empty when there is none.
std::string dump(const json_t* value);

/// Whether an exchange brought status 200 and a body. If not, that is logged in the name of `operation`.
bool isAnswerComplete(const char* operation, int statusCode, const std::string& responseData);

} // namespace OrvaneJson
