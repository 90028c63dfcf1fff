#include "rest/Resources.h"

namespace cloudsim {
namespace {

Json grantRecord(const Extension& line) {
    Json extension{
        {"id", std::to_string(line.id)}, {"extensionNumber", line.number}, {"type", line.type}, {"name", line.name}};
    return {{"callPickup", true}, {"callMonitoring", false}, {"callOnBehalfOf", true}, {"extension", extension}};
}

} // namespace

HttpResponse getGrants(const RestContext& context) {
    std::int64_t perPage = queryNumber(context.request.query, "perPage").value_or(context.state.settings.grantsPerPage);
    std::int64_t page = queryNumber(context.request.query, "page").value_or(1);
    if (perPage < 1 || page < 1)
        return errorResponse(400, "CMN-101", "Parameter value is invalid");
    const auto& grants = context.extension().grants;
    auto total = static_cast<std::int64_t>(grants.size());
    std::int64_t pages = std::max<std::int64_t>(1, (total + perPage - 1) / perPage);
    if (page > pages)
        return errorResponse(404, "CMN-102", "There is no such page");

    Json json{{"page", page}, {"perPage", perPage}, {"totalPages", pages}, {"totalElements", total}};
    json["records"] = Json::array();
    for (std::int64_t i = (page - 1) * perPage; i < std::min(total, page * perPage); ++i)
        if (const Extension* line = context.state.findExtension(grants[static_cast<std::size_t>(i)]))
            json["records"].push_back(grantRecord(*line));
    return jsonResponse(json);
}

} // namespace cloudsim
