#pragma once

#include "model/State.h"

namespace cloudsim {

/// The account as JSON, in the form that account files have.
Json toJson(const State& state);
/// Replaces all data. Throws BadInput with the place of the fault ("extensions[0].calls[2].duration: ...").
State stateFromJson(const Json& json);
/// Reads an account file. Throws BadInput, the file's name included.
State readAccountFile(const std::string& path);

Json toJson(const Device& device);
Device deviceFromJson(const Json& json, const std::string& place);
/// With calls, contacts and grants.
Json toJson(const Extension& extension);
Extension extensionFromJson(const Json& json, const std::string& place);

Json toJson(const Settings& settings);
/// Changes the named settings. Throws BadInput for unknown ones and wrong types.
void changeSettings(Settings& settings, const Json& members, const std::string& place);

/// Whether the text is one of the four that a status may have.
bool isDndStatus(const std::string& text);

} // namespace cloudsim
