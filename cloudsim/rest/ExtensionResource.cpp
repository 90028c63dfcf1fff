#include "rest/Resources.h"

namespace cloudsim {

HttpResponse getExtension(const RestContext& context) {
    const Extension& extension = context.extension();
    Json json{{"id", extension.id},     {"extensionNumber", extension.number},
              {"name", extension.name}, {"type", extension.type},
              {"status", "Enabled"},    {"account", {{"id", context.state.accountId}}}};
    return jsonResponse(json);
}

} // namespace cloudsim
