#include "network/NameLookup.h"

#include <netdb.h>
#include <sys/socket.h>

#include <memory>
#include <system_error>
#include <thread>

namespace {

NameLookup::Result lookUp(const std::string& host) {
    addrinfo wanted{};
    wanted.ai_family = AF_UNSPEC;
    wanted.ai_socktype = SOCK_STREAM;
    // No AI_ADDRCONFIG: on a machine with nothing but its loopback interface it would hide that one.
    addrinfo* found = nullptr;
    NameLookup::Result result;
    const int failure = getaddrinfo(host.c_str(), nullptr, &wanted, &found);
    if (failure != 0) {
        result.error = gai_strerror(failure);
        return result;
    }
    const std::unique_ptr<addrinfo, void (*)(addrinfo*)> owned(found, freeaddrinfo);
    for (const addrinfo* entry = found; entry != nullptr; entry = entry->ai_next) {
        char text[NI_MAXHOST];
        if (getnameinfo(entry->ai_addr, entry->ai_addrlen, text, sizeof text, nullptr, 0, NI_NUMERICHOST) == 0) {
            result.addresses.emplace_back(text);
        }
    }
    if (result.addresses.empty()) {
        result.error = "no address";
    }
    return result;
}

} // namespace

void NameLookup::start(const std::string& host, std::function<void(Result)> finished) {
    try {
        std::thread([host, finished] { finished(lookUp(host)); }).detach();
    } catch (const std::system_error& failure) {
        finished(Result{{}, failure.what()});
    }
}
