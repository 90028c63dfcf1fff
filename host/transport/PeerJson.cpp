#include "transport/PeerJson.h"

namespace {

/// Counts the brackets that stand outside of strings, in whatever text.
bool nestsTooDeep(const std::string& text) {
    int depth = 0;
    bool inString = false;
    for (std::size_t position = 0; position < text.size(); ++position) {
        const char character = text[position];
        if (inString && character == '\\') {
            ++position;
        } else if (character == '"') {
            inString = !inString;
        } else if (!inString && (character == '[' || character == '{')) {
            if (++depth > PeerJson::deepestNesting) {
                return true;
            }
        } else if (!inString && (character == ']' || character == '}')) {
            --depth;
        }
    }
    return false;
}

} // namespace

nlohmann::ordered_json PeerJson::parse(const std::string& text) {
    using Json = nlohmann::ordered_json;
    return nestsTooDeep(text) ? Json(Json::value_t::discarded) : Json::parse(text, nullptr, false);
}
