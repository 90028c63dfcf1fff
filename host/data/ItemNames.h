#pragma once

#include <optional>
#include <string>
#include <vector>

/// Names of the configuration items as a person writes them: the constant's name in PldsTags, with the index behind
/// it for indexed items ("FUNCTION_KEY_ID100"), or the bare key of an item without a constant.
class ItemNames {
public:
    /// The item's key in the store; empty when there is no such item.
    static std::optional<std::string> keyOf(const std::string& name);

    /// The inverse; an unknown key names itself.
    static std::string nameOf(const std::string& key);

    /// Every name, indexed ones with `index` behind them.
    static std::vector<std::string> forms(const std::string& index);

    static bool isKnownKey(const std::string& key);
};
