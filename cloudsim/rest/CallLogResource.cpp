#include "rest/Resources.h"

namespace cloudsim {
namespace {

constexpr std::int64_t defaultRecordCount = 100;
constexpr std::int64_t maximumRecordCount = 1000;

std::string queryText(const Query& query, const char* key, const char* otherwise) {
    const std::string* value = lastValue(query, key);
    return value == nullptr ? otherwise : *value;
}

bool isMissed(const Json& call) {
    return textMember(call, "direction") == "Inbound" && textMember(call, "result") == "Missed";
}

} // namespace

HttpResponse syncCallLog(const RestContext& context) {
    const Query& query = context.request.query;
    std::string syncType = queryText(query, "syncType", "FSync");
    auto count = queryNumber(query, "recordCount");
    if ((syncType != "FSync" && syncType != "ISync") ||
        (lastValue(query, "recordCount") != nullptr && (!count || *count < 1 || *count > maximumRecordCount)))
        return errorResponse(400, "CMN-101", "Parameter value is invalid");

    CallLog& calls = context.extension().calls;
    auto wanted = static_cast<std::size_t>(count.value_or(defaultRecordCount));
    CallLog::Synchronisation result;
    if (syncType == "FSync") {
        result = calls.full(wanted);
    } else {
        bool withDeleted = queryText(query, "showDeleted", "false") == "true";
        auto changes = calls.changes(queryText(query, "syncToken", ""), wanted, withDeleted);
        if (!changes)
            return errorResponse(400, "CLG-104", "Sync token is not known");
        result = std::move(*changes);
    }
    bool missedOnly = queryText(query, "statusGroup", "All") == "Missed";
    Json records = Json::array();
    for (auto& record : result.records)
        if (!missedOnly || isMissed(record))
            records.push_back(std::move(record));
    Json json;
    json["records"] = std::move(records);
    json["syncInfo"] = {{"syncType", syncType},
                        {"syncToken", result.token},
                        {"syncTime", toTimestamp(std::chrono::system_clock::now())}};
    return jsonResponse(json);
}

HttpResponse deleteCall(const RestContext& context) {
    if (!context.extension().calls.remove(context.id))
        return errorResponse(404, "CMN-102", "Call log record is not found");
    return {204, {}, ""};
}

HttpResponse deleteAllCalls(const RestContext& context) {
    context.extension().calls.removeAll();
    return {204, {}, ""};
}

} // namespace cloudsim
