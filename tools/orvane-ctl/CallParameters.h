#pragma once

#include <nlohmann/json.hpp>

#include <string>
#include <vector>

/// NAME=VALUE, split at the first "="; false when there is none, or no name.
bool splitPair(const std::string& text, std::string& name, std::string& value);

/// A remote method with its parameters, given as NAME=VALUE, in the protocol adapter's form. Methods and parameters
/// that are not known pass as texts. False, with the reason in `error`, when a pair is none or a value does not fit.
bool makeMethod(const std::string& method, const std::vector<std::string>& pairs, nlohmann::ordered_json& message,
                std::string& error);
