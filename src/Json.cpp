#include "Json.h"

#include "Log.h"

namespace OrvaneJson {

Value parse(const char* operation, const std::string& text) {
    json_error_t error;
    Value root(json_loads(text.c_str(), 0, &error));
    if (!root) {
        ORVANE_LOG(ERROR, "%s() error on line %d:%d(%d) %s", operation, error.line, error.column, error.position,
                   error.text);
    }
    return root;
}

Value parseAnswer(const char* operation, int statusCode, const std::string& responseData) {
    return isAnswerComplete(operation, statusCode, responseData) ? parse(operation, responseData) : nullptr;
}

std::string dump(const json_t* value) {
    // Not json_dumps(): when its buffer cannot grow it leaves a key out and goes on.
    std::string text(json_dumpb(value, nullptr, 0, 0), '\0');
    if (json_dumpb(value, text.data(), text.size(), 0) != text.size()) {
        text.clear();
    }
    return text;
}

bool isAnswerComplete(const char* operation, int statusCode, const std::string& responseData) {
    if (statusCode == 200 && !responseData.empty()) {
        return true;
    }
    ORVANE_LOG(ERROR, "%s() HTTP[%d] responseData:\n%s", operation, statusCode, responseData.c_str());
    return false;
}

} // namespace OrvaneJson
