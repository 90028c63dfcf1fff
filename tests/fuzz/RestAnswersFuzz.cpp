#include "fuzz/FuzzInput.h"
#include "fuzz/FuzzTelephone.h"

#include <array>

namespace {

/// One exchange of the service, by what its path contains.
struct Kind {
    const char* part;
    HttpClientIfc::HTTPMETHOD method;
};

constexpr std::array<Kind, 13> kinds = {{
    {"/auth/token", HttpClientIfc::HTTP_GET},
    {"/extension/~", HttpClientIfc::HTTP_GET},
    {"/wstoken", HttpClientIfc::HTTP_POST},
    {"/extension/~/call-log-sync", HttpClientIfc::HTTP_GET},
    {"/extension/900/call-log-sync", HttpClientIfc::HTTP_GET},
    {"/grant", HttpClientIfc::HTTP_GET},
    {"/address-book-sync", HttpClientIfc::HTTP_GET},
    {"/extension/~/presence", HttpClientIfc::HTTP_GET},
    {"/extension/5001/presence", HttpClientIfc::HTTP_GET},
    {"/extension/~/presence", HttpClientIfc::HTTP_PUT},
    {"/address-book", HttpClientIfc::HTTP_POST},
    {"/address-book", HttpClientIfc::HTTP_PUT},
    {"/call-log", HttpClientIfc::HTTP_DELETE},
}};

constexpr std::array<int, 6> statuses = {{200, 204, 400, 404, 500, 201}};

} // namespace

/// A letter for the exchange, a letter for the status, a line break, the body.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzInput input(data, size);
    const Kind kind = kinds[input.choice(kinds.size())];
    const int status = statuses[input.choice(statuses.size())];
    input.line();
    const std::string body = input.rest();

    int tampered = 0;
    FuzzTelephone phone;
    phone.tampering = [&](const ScriptedNetwork::Request& request, Exchange& exchange) {
        // Not more often, so that what asks until it is answered comes to its end.
        if (request.method == kind.method && request.target.find(kind.part) != std::string::npos && ++tampered < 8) {
            exchange.answers(status, body);
        }
    };
    phone.subscribe();
    OrvaneService& service = *phone.service;
    phone.drive([&] { service.overviewChangedNotification("line 900", "", true, 1, LINE_VISUAL_ALERT_NONE); });
    phone.drive([&] { service.devicesChanged(); });
    phone.drive([&] { phone.platform.context.advance(60000); });
    phone.drive([&] { service.refreshPhonebookEntries(); });
    phone.settle();
    phone.drive([&] { service.updateUserPresenceStatus(true); });
    phone.drive([&] { service.addNewContact("<contact><firstname>A</firstname></contact>"); });
    phone.drive([&] { service.updateEditedContact("<contact><firstname>A</firstname><id>1</id></contact>"); });
    phone.drive([&] { service.deleteSingleContact("1"); });
    phone.drive([&] { service.deleteCallLogEntry("1"); });
    phone.drive([&] { service.deleteAllCallLogEntries(); });
    return 0;
}
