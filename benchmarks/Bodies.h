#pragma once

#include <string>

/// Bodies and frames of the size and variety that a provider sends.
namespace Bodies {

/// Call log with the calls `first` to `first + count - 1`; `deleted` ones take out what the others brought.
std::string callLog(int first, int count, bool deleted = false);
/// Telephony session of a call of callLog().
std::string sessionOf(int number);
/// Page of an address book. Its sync token is `token`: one that is known already is not looked at any further.
std::string phonebookPage(int first, int count, const std::string& token, bool deleted = false);
/// Presence frame of one call that is still ringing.
std::string ringingFrame();

} // namespace Bodies
