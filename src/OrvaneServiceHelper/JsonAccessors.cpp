#include "OrvaneServiceHelper/OrvaneServiceHelper.h"

#include "OrvaneServiceStrings.h"

#include <cstring>

using namespace OrvaneServiceStrings;

namespace {

bool isString(const json_t* value) {
    return json_is_string(value);
}
bool isInteger(const json_t* value) {
    return json_is_integer(value);
}
bool isBoolean(const json_t* value) {
    return json_is_boolean(value);
}
bool isObject(const json_t* value) {
    return json_is_object(value);
}
bool isArray(const json_t* value) {
    return json_is_array(value);
}

/// The first characters tell most keys apart, without a call.
bool isSameKey(const char* key, const char* wanted) {
    return *key == *wanted && std::strcmp(key, wanted) == 0;
}

/// Depth first through nested objects, in each object's own key order. A matching key of another type is searched
/// like any other key. Null or anything but an object holds nothing.
template <bool (*hasWantedType)(const json_t*)>
json_t* findValue(json_t* object, const char* key) {
    for (void* entry = json_object_iter(object); entry != nullptr; entry = json_object_iter_next(object, entry)) {
        json_t* value = json_object_iter_value(entry);
        if (hasWantedType(value) && isSameKey(json_object_iter_key(entry), key)) {
            return value;
        }
        if (json_is_object(value)) {
            json_t* nested = findValue<hasWantedType>(value, key);
            if (nested != nullptr) {
                return nested;
            }
        }
    }
    return nullptr;
}

bool isWritable(json_t** object) {
    return object != nullptr && json_is_object(*object);
}

} // namespace

bool OrvaneServiceHelper::getStringFromJson(json_t*& object, std::string& out, const char* key) {
    const json_t* value = findValue<isString>(object, key);
    if (value != nullptr) {
        out.assign(json_string_value(value), json_string_length(value));
    }
    return value != nullptr;
}

bool OrvaneServiceHelper::getIntegerFromJson(json_t*& object, int& out, const char* key) {
    const json_t* value = findValue<isInteger>(object, key);
    if (value != nullptr) {
        out = static_cast<int>(json_integer_value(value));
    }
    return value != nullptr;
}

bool OrvaneServiceHelper::getLongLongIntegerFromJson(json_t*& object, long long& out, const char* key) {
    const json_t* value = findValue<isInteger>(object, key);
    if (value != nullptr) {
        out = json_integer_value(value);
    }
    return value != nullptr;
}

bool OrvaneServiceHelper::getBooleanFromJson(json_t*& object, bool& out, const char* key) {
    const json_t* value = findValue<isBoolean>(object, key);
    if (value != nullptr) {
        out = json_is_true(value);
    }
    return value != nullptr;
}

bool OrvaneServiceHelper::getObjectFromJson(json_t*& object, json_t*& out, const char* key) {
    json_t* value = findValue<isObject>(object, key);
    if (value != nullptr) {
        out = value;
    }
    return value != nullptr;
}

bool OrvaneServiceHelper::getArrayFromJson(json_t*& object, json_t*& out, const char* key) {
    json_t* value = findValue<isArray>(object, key);
    if (value != nullptr) {
        out = value;
    }
    return value != nullptr;
}

std::string OrvaneServiceHelper::getNameFromInfoObject(json_t*& info) {
    std::string name;
    getStringFromJson(info, name, OV_NAME);
    return name;
}

std::string OrvaneServiceHelper::getNumberFromInfoObject(json_t*& info) {
    std::string number;
    if (!getStringFromJson(info, number, OV_PHONE_NUMBER) && !getStringFromJson(info, number, OV_EXTENSION_NUMBER)) {
        number = UNKNOWN_NUMBER;
    }
    return number;
}

bool OrvaneServiceHelper::addValueToJsonObject(json_t** object, const std::string& key, const std::string& value) {
    if (!isWritable(object)) {
        return false;
    }
    json_t* text = json_string(value.c_str());
    return text != nullptr && json_object_set_new(*object, key.c_str(), text) == 0;
}

bool OrvaneServiceHelper::addArrayToJsonObject(json_t** object, const std::string& key,
                                               const std::vector<std::string>& values) {
    if (!isWritable(object) || values.empty()) {
        return false;
    }
    if (values.size() == 1) {
        return addValueToJsonObject(object, key, values.front());
    }
    json_t* array = json_array();
    for (const std::string& value : values) {
        // A null element is refused by the append.
        if (json_array_append_new(array, json_string(value.c_str())) != 0) {
            json_decref(array);
            return false;
        }
    }
    return json_object_set_new(*object, key.c_str(), array) == 0;
}
