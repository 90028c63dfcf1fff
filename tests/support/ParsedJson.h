#pragma once

#include <jansson.h>

#include <cstdlib>
#include <string>

/// A JSON text as a tree that lives as long as this object.
class ParsedJson {
public:
    explicit ParsedJson(const std::string& text)
        : root(json_loads(text.c_str(), JSON_DECODE_ANY | JSON_ALLOW_NUL, nullptr)) {}
    ~ParsedJson() { json_decref(root); }
    ParsedJson(const ParsedJson&) = delete;
    ParsedJson& operator=(const ParsedJson&) = delete;

    std::string text() const {
        char* dumped = json_dumps(root, JSON_ENCODE_ANY | JSON_COMPACT);
        const std::string result = dumped == nullptr ? "" : dumped;
        std::free(dumped);
        return result;
    }

    json_t* root;
};
