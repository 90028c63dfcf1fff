#include "rest/RestRequest.h"

#include "base/WholeNumber.h"

namespace cloudsim {

HttpResponse jsonResponse(const Json& json, int status) {
    return {status, {{"Content-Type", "application/json;charset=utf-8"}}, toText(scalarsFirst(json))};
}

HttpResponse errorResponse(int status, const std::string& code, const std::string& message) {
    return jsonResponse({{"errorCode", code}, {"message", message}}, status);
}

std::optional<std::int64_t> queryNumber(const Query& query, const char* key) {
    const std::string* text = lastValue(query, key);
    return text == nullptr ? std::nullopt : wholeNumber<std::int64_t>(*text);
}

} // namespace cloudsim
