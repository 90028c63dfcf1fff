#include "rest/RestRequest.h"

#include <charconv>

namespace cloudsim {

HttpResponse jsonResponse(const Json& json, int status) {
    return {status, {{"Content-Type", "application/json;charset=utf-8"}}, toText(scalarsFirst(json))};
}

HttpResponse errorResponse(int status, const std::string& code, const std::string& message) {
    return jsonResponse({{"errorCode", code}, {"message", message}}, status);
}

std::optional<std::int64_t> queryNumber(const Query& query, const char* key) {
    const std::string* text = lastValue(query, key);
    std::int64_t number = 0;
    if (text == nullptr)
        return std::nullopt;
    auto [end, error] = std::from_chars(text->data(), text->data() + text->size(), number);
    return error == std::errc() && end == text->data() + text->size() ? std::optional(number) : std::nullopt;
}

} // namespace cloudsim
