#include "OrvaneServiceHelper/OrvaneServiceHelper.h"

#include "Json.h"
#include "Log.h"
#include "OrvaneServiceStrings.h"
#include "utilities/ClientUtils.h"

using namespace OrvaneServiceStrings;

namespace {

/// Adds an object of the entries under `key`, unless there is none.
bool addEntries(json_t* metadata, const char* key, const OrvaneServiceHelper::Multimap& entries) {
    if (entries.empty()) {
        return true;
    }
    OrvaneJson::Value object(json_object());
    json_t* writable = object.get();
    for (const auto& [name, value] : entries) {
        std::vector<std::string> tokens;
        ClientUtils::tokenizeString(value, OV_SEPERATOR, tokens);
        if (!OrvaneServiceHelper::addArrayToJsonObject(&writable, name, tokens)) {
            return false;
        }
    }
    return json_object_set_new(metadata, key, object.release()) == 0;
}

} // namespace

bool OrvaneServiceHelper::createClientRequestMsg(const std::string& messageId, METHOD method, const std::string& path,
                                                 const Multimap& query, const Multimap& headers, json_t* body,
                                                 json_t** message) {
    if (message == nullptr || !json_is_array(*message) || (body != nullptr && !json_is_object(body))) {
        return false;
    }
    OrvaneJson::Value metadata(json_object());
    json_t* writable = metadata.get();
    if (!addValueToJsonObject(&writable, OV_TYPE, "ClientRequest") ||
        !addValueToJsonObject(&writable, OV_MESSAGE_ID, messageId) ||
        !addValueToJsonObject(&writable, "method", methodToString(method)) ||
        !addValueToJsonObject(&writable, "path", path) || !addEntries(writable, "query", query) ||
        !addEntries(writable, OV_HEADERS, headers)) {
        return false;
    }
    if (json_array_append_new(*message, metadata.release()) != 0) {
        return false;
    }
    if (body != nullptr) {
        if (json_array_append(*message, body) != 0) {
            return false;
        }
        // From here on the array owns the body.
        json_decref(body);
    }
    return true;
}

void OrvaneServiceHelper::getHeadersFromMetadata(json_t* metadata, Multimap& headers) {
    json_t* object = nullptr;
    if (!getObjectFromJson(metadata, object, OV_HEADERS)) {
        return;
    }
    for (void* entry = json_object_iter(object); entry != nullptr; entry = json_object_iter_next(object, entry)) {
        const std::string key = json_object_iter_key(entry);
        const json_t* value = json_object_iter_value(entry);
        if (key.empty() || (!json_is_string(value) && !json_is_array(value))) {
            ORVANE_LOG(WARNING,
                       "getHeadersFromMetadata() - key '%s' is empty or the value for this key is neither string nor "
                       "array!",
                       key.c_str());
        } else if (json_is_string(value)) {
            addKeyAndValueIntoMultimap(headers, key, json_string_value(value));
        } else {
            for (std::size_t index = 0; index < json_array_size(value); ++index) {
                const json_t* element = json_array_get(value, index);
                if (json_is_string(element)) {
                    addKeyAndValueIntoMultimap(headers, key, json_string_value(element));
                }
            }
        }
    }
}

int OrvaneServiceHelper::getStatusFromMetadata(json_t* metadata) {
    int status = 0;
    getIntegerFromJson(metadata, status, OV_STATUS);
    return status;
}
