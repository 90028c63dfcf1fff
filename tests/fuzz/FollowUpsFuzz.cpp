#include "fuzz/FuzzInput.h"
#include "fuzz/FuzzTelephone.h"

#include <array>
#include <cstdlib>

namespace {

constexpr std::array<int, 8> statuses = {{301, 302, 307, 429, 503, 303, 308, 200}};

} // namespace

/// Each line: a letter for the status, a letter for what happens to the connection, a number to wait or a Location.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    FuzzInput input(data, size);
    FuzzTelephone phone;
    phone.tampering = [&](const ScriptedNetwork::Request&, Exchange& exchange) {
        if (input.atEnd()) {
            return;
        }
        exchange.status = statuses[input.choice(statuses.size())];
        const unsigned connection = input.choice(4);
        exchange.closesAfter = connection == 1;
        exchange.readResult = connection == 2 ? HttpClientIfc::FAILURE : HttpClientIfc::SUCCESS;
        exchange.sendResult = connection == 3 ? HttpClientIfc::FAILURE : HttpClientIfc::SUCCESS;
        exchange.location = input.line();
        exchange.retryAfterSeconds = std::atoi(exchange.location.c_str());
    };
    phone.logIn();
    phone.drive([&] { phone.platform.context.advance(60000); });
    return 0;
}
