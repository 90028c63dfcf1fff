#include "admin/AdminResources.h"

#include "base/BadInput.h"
#include "model/AccountData.h"

namespace cloudsim {
namespace {

void addDeviceResources(AdminRouter& router, Cloud& cloud) {
    router.add("GET", "devices", [&cloud](const AdminRequest&) {
        return cloud.state.with([](State& state) { return AdminAnswer{200, toJson(state)["devices"]}; });
    });
    router.add("POST", "devices", [&cloud](const AdminRequest& request) {
        Device device = deviceFromJson(request.object(), "");
        return cloud.state.with([&](State& state) {
            if (state.findExtension(device.extensionId) == nullptr)
                throw BadInput("extensionId: is no extension");
            if (state.findDevice(device.model, device.mac) != nullptr)
                return AdminAnswer{409, {{"error", "the device is there already"}}};
            state.devices.push_back(device);
            return AdminAnswer{201, toJson(device)};
        });
    });
    router.add("PATCH", "devices/{model}/{mac}", [&cloud](const AdminRequest& request) {
        return cloud.state.with([&](State& state) {
            Device* device = state.findDevice(request.captured.at("model"), request.captured.at("mac"));
            if (device == nullptr)
                return notFound("the device");
            Json json = toJson(*device);
            json.merge_patch(request.object());
            Device changed = deviceFromJson(json, "");
            if (state.findExtension(changed.extensionId) == nullptr)
                throw BadInput("extensionId: is no extension");
            *device = changed;
            return AdminAnswer{200, toJson(*device)};
        });
    });
    router.add("DELETE", "devices/{model}/{mac}", [&cloud](const AdminRequest& request) {
        return cloud.state.with([&](State& state) {
            Device* device = state.findDevice(request.captured.at("model"), request.captured.at("mac"));
            if (device == nullptr)
                return notFound("the device");
            state.devices.erase(state.devices.begin() + (device - state.devices.data()));
            return AdminAnswer{};
        });
    });
}

void addExtensionResources(AdminRouter& router, Cloud& cloud) {
    router.add("GET", "extensions", [&cloud](const AdminRequest&) {
        return cloud.state.with([](State& state) { return AdminAnswer{200, toJson(state)["extensions"]}; });
    });
    router.add("POST", "extensions", [&cloud](const AdminRequest& request) {
        Extension extension = extensionFromJson(request.object(), "");
        return cloud.state.with([&](State& state) {
            auto id = extension.id;
            if (!state.extensions.emplace(id, std::move(extension)).second)
                return AdminAnswer{409, {{"error", "the extension is there already"}}};
            return AdminAnswer{201, {{"id", id}}};
        });
    });
    router.add("PATCH", "extensions/{extension}", [&cloud](const AdminRequest& request) {
        return cloud.state.with([&](State& state) {
            Extension* extension = state.findExtension(request.capturedNumber("extension"));
            if (extension == nullptr)
                return notFound("the extension");
            for (const auto& [key, value] : request.object().items()) {
                std::string text = requireText(value, key);
                if (key == "name")
                    extension->name = text;
                else if (key == "number")
                    extension->number = text;
                else if (key == "type")
                    extension->type = text;
                else if (key == "phoneNumber")
                    extension->phoneNumber = text;
                else
                    throw BadInput(key + ": cannot be changed here");
            }
            return AdminAnswer{200, toJson(*extension)};
        });
    });
    router.add("DELETE", "extensions/{extension}", [&cloud](const AdminRequest& request) {
        return cloud.state.with([&](State& state) {
            return state.extensions.erase(request.capturedNumber("extension")) != 0 ? AdminAnswer{}
                                                                                    : notFound("the extension");
        });
    });
}

} // namespace

void addAccountResources(AdminRouter& router, Cloud& cloud) {
    router.add("GET", "data", [&cloud](const AdminRequest&) {
        return cloud.state.with([](State& state) { return AdminAnswer{200, toJson(state)}; });
    });
    router.add("PUT", "data", [&cloud](const AdminRequest& request) {
        State replacement = stateFromJson(request.object());
        return cloud.state.with([&](State& state) {
            state = std::move(replacement);
            return AdminAnswer{};
        });
    });
    router.add("GET", "settings", [&cloud](const AdminRequest&) {
        return cloud.state.with([](State& state) { return AdminAnswer{200, toJson(state.settings)}; });
    });
    router.add("PATCH", "settings", [&cloud](const AdminRequest& request) {
        return cloud.state.with([&](State& state) {
            changeSettings(state.settings, request.object(), "");
            return AdminAnswer{200, toJson(state.settings)};
        });
    });
    router.add("POST", "tokens/expire", [&cloud](const AdminRequest&) {
        return cloud.state.with([](State& state) {
            state.accessTokens.clear();
            state.socketTokens.clear();
            return AdminAnswer{};
        });
    });
    router.add("POST", "sync-tokens/forget", [&cloud](const AdminRequest&) {
        return cloud.state.with([](State& state) {
            for (auto& [id, extension] : state.extensions) {
                extension.calls.forgetTokens();
                extension.contacts.forgetTokens();
            }
            return AdminAnswer{};
        });
    });
    addDeviceResources(router, cloud);
    addExtensionResources(router, cloud);
}

} // namespace cloudsim
