#include "data/ItemNames.h"

#include "data/PldsTags.h"

#include <algorithm>
#include <utility>

namespace {

struct Item {
    std::string name;
    std::string key;
    bool indexed;
};

const std::vector<Item>& items() {
    static const std::vector<Item> all = {
        {"INTERFACE_STATUS", PldsTags::INTERFACE_STATUS, false},
        {"SERVER_TYPE", PldsTags::SERVER_TYPE, false},
        {"MAC_ADDRESS", PldsTags::MAC_ADDRESS, false},
        {"FUNCTION_KEY_ID", PldsTags::FUNCTION_KEY_ID, true},
        {"FUNCTION_KEY_LABEL", PldsTags::FUNCTION_KEY_LABEL, true},
        {"BLF_DEST", PldsTags::BLF_DEST, true},
        {"LAST_DIALLED_NUMBER", PldsTags::LAST_DIALLED_NUMBER, false},
        {"CALL_DND_ACTIVATED", PldsTags::CALL_DND_ACTIVATED, false},
        {"ORVANE_API_SERVER_ADDRESS", PldsTags::ORVANE_API_SERVER_ADDRESS, false},
        {"ORVANE_API_SYNC_CALL_LOG", PldsTags::ORVANE_API_SYNC_CALL_LOG, false},
        {"ORVANE_API_SYNC_PHONEBOOK", PldsTags::ORVANE_API_SYNC_PHONEBOOK, false},
        {"ORVANE_API_SYNC_INTERVAL", PldsTags::ORVANE_API_SYNC_INTERVAL, false},
        {"ORVANE_API_SYNC_DND", PldsTags::ORVANE_API_SYNC_DND, false},
        {"ORVANE_API_VIEWED_MISSED_CALL_IDS", PldsTags::ORVANE_API_VIEWED_MISSED_CALL_IDS, false},
        {"missed-logg-count", "missed-logg-count", false},
    };
    return all;
}

bool isIndex(const std::string& text) {
    return !text.empty() && text.size() <= 9 &&
           std::all_of(text.begin(), text.end(), [](char digit) { return digit >= '0' && digit <= '9'; });
}

/// What stands behind `front` in `text`, if that is an index.
std::optional<std::string> indexBehind(const std::string& text, const std::string& front) {
    if (text.compare(0, front.size(), front) != 0) {
        return std::nullopt;
    }
    std::string index = text.substr(front.size());
    return isIndex(index) ? std::optional<std::string>(std::move(index)) : std::nullopt;
}

/// A text of one column in the other column's words; an index goes along.
std::optional<std::string> translated(const std::string& text, std::string Item::* from, std::string Item::* to) {
    for (const Item& item : items()) {
        if (!item.indexed && text == item.*from) {
            return item.*to;
        }
        if (item.indexed) {
            if (const auto index = indexBehind(text, item.*from)) {
                return item.*to + *index;
            }
        }
    }
    return std::nullopt;
}

} // namespace

std::optional<std::string> ItemNames::keyOf(const std::string& name) {
    return translated(name, &Item::name, &Item::key);
}

std::string ItemNames::nameOf(const std::string& key) {
    return translated(key, &Item::key, &Item::name).value_or(key);
}

std::vector<std::string> ItemNames::forms(const std::string& index) {
    std::vector<std::string> all;
    all.reserve(items().size());
    for (const Item& item : items()) {
        all.push_back(item.indexed ? item.name + index : item.name);
    }
    return all;
}

bool ItemNames::isKnownKey(const std::string& key) {
    return std::any_of(items().begin(), items().end(), [&key](const Item& item) {
        return item.indexed ? indexBehind(key, item.key).has_value() : key == item.key;
    });
}
