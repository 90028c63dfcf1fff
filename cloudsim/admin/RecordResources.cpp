#include "admin/AdminResources.h"

#include "base/BadInput.h"
#include "model/AccountData.h"
#include "rest/Resources.h"

#include <algorithm>
#include <limits>
#include <random>

namespace cloudsim {
namespace {

/// Runs the operation on the extension that the query names, or on the first device's.
template <class Operation>
AdminAnswer onExtension(Cloud& cloud, const AdminRequest& request, Operation operation) {
    auto named = request.queryNumber("extension");
    return cloud.state.with([&](State& state) {
        Extension* extension = state.findExtension(named.value_or(state.firstExtensionId()));
        return extension == nullptr ? notFound("the extension") : operation(*extension);
    });
}

int generatedCount(const AdminRequest& request) {
    return static_cast<int>(requireNumber(request.object().value("count", Json()), "count", {0, 100000}));
}

SeedData newSeedData(const AdminRequest& request) {
    const Json& body = request.object();
    return SeedData(body.contains("seed") && body["seed"].is_number_unsigned() ? body["seed"].get<std::uint64_t>()
                                                                               : std::random_device{}());
}

void addCallResources(AdminRouter& router, Cloud& cloud) {
    router.add("GET", "calls", [&cloud](const AdminRequest& request) {
        return onExtension(cloud, request, [](Extension& extension) {
            return AdminAnswer{200, extension.calls.newest(std::numeric_limits<std::size_t>::max())};
        });
    });
    router.add("POST", "calls", [&cloud](const AdminRequest& request) {
        const Json& members = request.object();
        return onExtension(cloud, request, [&](Extension& extension) {
            return AdminAnswer{201, *extension.calls.find(extension.calls.add(members))};
        });
    });
    router.add("POST", "calls/generate", [&cloud](const AdminRequest& request) {
        SeedData data = newSeedData(request);
        int count = generatedCount(request);
        return onExtension(cloud, request, [&](Extension& extension) {
            data.addCalls(extension, count, std::chrono::system_clock::now());
            return AdminAnswer{201, {{"count", count}}};
        });
    });
    router.add("DELETE", "calls", [&cloud](const AdminRequest& request) {
        return onExtension(cloud, request, [](Extension& extension) {
            extension.calls.removeAll();
            return AdminAnswer{};
        });
    });
    router.add("PATCH", "calls/{id}", [&cloud](const AdminRequest& request) {
        const std::string& id = request.captured.at("id");
        const Json& members = request.object();
        return onExtension(cloud, request, [&](Extension& extension) {
            return extension.calls.change(id, members) ? AdminAnswer{200, *extension.calls.find(id)}
                                                       : notFound("the call");
        });
    });
    router.add("DELETE", "calls/{id}", [&cloud](const AdminRequest& request) {
        return onExtension(cloud, request, [&](Extension& extension) {
            return extension.calls.remove(request.captured.at("id")) ? AdminAnswer{} : notFound("the call");
        });
    });
}

void addContactResources(AdminRouter& router, Cloud& cloud) {
    router.add("GET", "contacts", [&cloud](const AdminRequest& request) {
        return onExtension(cloud, request,
                           [](Extension& extension) { return AdminAnswer{200, extension.contacts.all()}; });
    });
    router.add("POST", "contacts", [&cloud](const AdminRequest& request) {
        const Json& members = request.object();
        return onExtension(cloud, request, [&](Extension& extension) {
            return AdminAnswer{201, *extension.contacts.find(extension.contacts.add(members))};
        });
    });
    router.add("POST", "contacts/generate", [&cloud](const AdminRequest& request) {
        SeedData data = newSeedData(request);
        int count = generatedCount(request);
        return onExtension(cloud, request, [&](Extension& extension) {
            for (int i = 0; i < count; ++i)
                extension.contacts.add(data.makeContact());
            return AdminAnswer{201, {{"count", count}}};
        });
    });
    router.add("DELETE", "contacts", [&cloud](const AdminRequest& request) {
        return onExtension(cloud, request, [](Extension& extension) {
            for (const auto& contact : extension.contacts.all())
                extension.contacts.remove(contact["id"]);
            return AdminAnswer{};
        });
    });
    router.add("PATCH", "contacts/{id}", [&cloud](const AdminRequest& request) {
        auto id = request.capturedNumber("id");
        const Json& members = request.object();
        return onExtension(cloud, request, [&](Extension& extension) {
            return extension.contacts.change(id, members) ? AdminAnswer{200, *extension.contacts.find(id)}
                                                          : notFound("the contact");
        });
    });
    router.add("DELETE", "contacts/{id}", [&cloud](const AdminRequest& request) {
        auto id = request.capturedNumber("id");
        return onExtension(cloud, request, [&](Extension& extension) {
            return extension.contacts.remove(id) ? AdminAnswer{} : notFound("the contact");
        });
    });
}

void addPresenceResources(AdminRouter& router, Cloud& cloud) {
    router.add("GET", "presence/{extension}", [&cloud](const AdminRequest& request) {
        auto id = request.capturedNumber("extension");
        return cloud.state.with([&](State& state) {
            Extension* extension = state.findExtension(id);
            return extension == nullptr ? notFound("the extension") : AdminAnswer{200, presenceOf(*extension)};
        });
    });
    router.add("PUT", "presence/{extension}", [&cloud](const AdminRequest& request) {
        auto id = request.capturedNumber("extension");
        std::string status = textMember(request.object(), "dndStatus");
        if (!isDndStatus(status) && !request.queryNumber("unchecked"))
            throw BadInput("dndStatus: is no status");
        std::optional<CloudEvent> event;
        AdminAnswer answer = cloud.state.with([&](State& state) {
            Extension* extension = state.findExtension(id);
            if (extension == nullptr)
                return notFound("the extension");
            extension->dndStatus = status;
            event = dndEvent(*extension);
            return AdminAnswer{200, presenceOf(*extension)};
        });
        if (event)
            cloud.hub.publish(*event);
        return answer;
    });
}

} // namespace

void addRecordResources(AdminRouter& router, Cloud& cloud) {
    addCallResources(router, cloud);
    addContactResources(router, cloud);
    addPresenceResources(router, cloud);
    router.add("GET", "grants", [&cloud](const AdminRequest& request) {
        return onExtension(cloud, request, [](Extension& extension) { return AdminAnswer{200, extension.grants}; });
    });
    router.add("PUT", "grants", [&cloud](const AdminRequest& request) {
        bool readable = request.body.is_array() && std::all_of(request.body.begin(), request.body.end(),
                                                               [](const Json& id) { return id.is_number_integer(); });
        if (!readable)
            throw BadInput("the body must be a list of extension ids");
        auto grants = request.body.get<std::vector<std::int64_t>>();
        return onExtension(cloud, request, [&](Extension& extension) {
            extension.grants = grants;
            return AdminAnswer{200, extension.grants};
        });
    });
}

} // namespace cloudsim
