#pragma once

#include <nlohmann/json.hpp>

#include <string>

/// JSON that another process has sent.
namespace PeerJson {

/// What our own messages need many times over; far below what the stack of a thread bears.
inline constexpr int deepestNesting = 64;

/// The value; discarded when the text is no JSON or nests deeper than that. The depth is bounded here because a value
/// is copied and written again by recursion.
nlohmann::ordered_json parse(const std::string& text);

} // namespace PeerJson
