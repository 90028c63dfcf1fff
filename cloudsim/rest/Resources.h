#pragma once

#include "rest/RestRequest.h"

namespace cloudsim {

// One function a resource and method; each is called with the caller known and the extension present.

HttpResponse getExtension(const RestContext& context);

HttpResponse syncCallLog(const RestContext& context);
HttpResponse deleteCall(const RestContext& context);
HttpResponse deleteAllCalls(const RestContext& context);

HttpResponse getGrants(const RestContext& context);

HttpResponse syncAddressBook(const RestContext& context);
HttpResponse addContact(const RestContext& context);
HttpResponse getContact(const RestContext& context);
HttpResponse editContact(const RestContext& context);
HttpResponse deleteContact(const RestContext& context);

HttpResponse getPresence(const RestContext& context);
HttpResponse changePresence(const RestContext& context);

HttpResponse issueSocketToken(const RestContext& context);

/// The presence of an extension as JSON.
Json presenceOf(const Extension& extension);
/// The event that tells of the extension's DND status.
CloudEvent dndEvent(const Extension& extension);

} // namespace cloudsim
