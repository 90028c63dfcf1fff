#pragma once

#include "OrvaneServiceTypes.h"

#include <map>
#include <string>
#include <vector>

/// What a telephone reports, one JSON object a line. Bytes that are no UTF-8 become U+FFFD.
namespace EventLines {

std::string ready(const std::string& controlSocket);
std::string stopped();
std::string subscribed();

/// `operation` is the observer's: orvaneFullSync or orvaneIncrementalSync.
std::string synchronisation(const std::string& operation, int type, const std::vector<std::string>& data);
std::string orvaneEvent(int type);
std::string informUserEvent(const std::string& message, int type);
std::string orvaneVoicemail(const std::map<std::string, OrvaneServiceTypes::Voicemail>& data);

std::string item(const std::string& name, const std::string& value);
std::string lamp(const std::string& uri, bool dnd);
std::string journal();
std::string securityLog(bool success, const std::string& text);

} // namespace EventLines
