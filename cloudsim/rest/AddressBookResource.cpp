#include "rest/Resources.h"

#include "base/WholeNumber.h"

namespace cloudsim {
namespace {

constexpr std::int64_t defaultPageSize = 250;
constexpr std::int64_t maximumPageSize = 1000;

/// The members of a contact; nothing when the body is something else.
std::optional<Json> contactMembers(const std::string& body) {
    Json json = fromText(body);
    if (!json.is_object())
        return std::nullopt;
    for (const auto& [key, value] : json.items())
        if (key != "id" && !value.is_string())
            return std::nullopt;
    json.erase("availability");
    json.erase("id");
    return json;
}

HttpResponse unknownContact() {
    return errorResponse(404, "CMN-102", "Contact is not found");
}
HttpResponse badContact() {
    return errorResponse(400, "CMN-101", "Contact cannot be read");
}

} // namespace

HttpResponse syncAddressBook(const RestContext& context) {
    const Query& query = context.request.query;
    const std::string* syncType = lastValue(query, "syncType");
    const std::string* token = lastValue(query, "syncToken");
    std::int64_t pageSize = queryNumber(query, "perPage").value_or(defaultPageSize);
    std::int64_t number = queryNumber(query, "pageId").value_or(1);
    bool incremental = syncType != nullptr && *syncType == "ISync";
    if ((!incremental && syncType != nullptr && *syncType != "FSync") || pageSize < 1 || pageSize > maximumPageSize ||
        number < 1 || number > maximumPageSize)
        return errorResponse(400, "CMN-101", "Parameter value is invalid");
    std::optional<std::string> since;
    if (incremental)
        since = token == nullptr ? "" : *token;

    AddressBook& contacts = context.extension().contacts;
    auto page = contacts.page(since, static_cast<int>(number), static_cast<std::size_t>(pageSize));
    if (!page)
        return errorResponse(400, "ABK-104", "Sync token is not known");
    Json json;
    if (page->nextPage)
        json["nextPageId"] = *page->nextPage;
    json["records"] = page->records;
    json["syncInfo"] = {{"syncType", incremental ? "ISync" : "FSync"},
                        {"syncToken", page->token},
                        {"syncTime", toTimestamp(std::chrono::system_clock::now())}};
    return jsonResponse(json);
}

HttpResponse addContact(const RestContext& context) {
    auto members = contactMembers(context.request.body);
    if (!members)
        return badContact();
    AddressBook& contacts = context.extension().contacts;
    return jsonResponse(*contacts.find(contacts.add(*members)));
}

HttpResponse getContact(const RestContext& context) {
    auto id = wholeNumber<std::int64_t>(context.id);
    const Json* contact = id ? context.extension().contacts.find(*id) : nullptr;
    return contact == nullptr ? unknownContact() : jsonResponse(*contact);
}

HttpResponse editContact(const RestContext& context) {
    auto members = contactMembers(context.request.body);
    if (!members)
        return badContact();
    auto id = wholeNumber<std::int64_t>(context.id);
    AddressBook& contacts = context.extension().contacts;
    if (!id || !contacts.replace(*id, *members))
        return unknownContact();
    return jsonResponse(*contacts.find(*id));
}

HttpResponse deleteContact(const RestContext& context) {
    auto id = wholeNumber<std::int64_t>(context.id);
    auto removed = id ? context.extension().contacts.remove(*id) : std::nullopt;
    return removed ? jsonResponse(*removed) : unknownContact();
}

} // namespace cloudsim
