#pragma once

#include "unit/EventChannel/ChannelTelephone.h"

#include <functional>
#include <stdexcept>

/// A telephone with everything switched on, a provider that answers every request, and a fuzzer at any of its inputs.
/// A broken expectation of the test platform (a semaphore that stays taken, an order of locks, a request under a lock)
/// ends the process, as a crash does.
class FuzzTelephone : public ChannelTelephone {
public:
    FuzzTelephone();
    ~FuzzTelephone() override;

    /// Does something to the service. What it may do by its kept behaviour ends the action here: waiting without end
    /// for the phonebook's sync token, giving up on a Location without a path, asking for a page without end while it
    /// has no network.
    void drive(const std::function<void()>& action);
    /// Everything that waits runs: threads, due timers.
    void settle();
    void logIn();
    void openSession();
    void subscribe();

    /// Looks at each request before the provider's own answer goes out; may change it.
    std::function<void(const ScriptedNetwork::Request&, Exchange&)> tampering;

    // What the fuzzers drive directly.
    using ChannelTelephone::connectionDetails;
    using ChannelTelephone::initialise;
    using ChannelTelephone::notification;
    using ChannelTelephone::platform;
    using ChannelTelephone::reply;
    using ChannelTelephone::requestedFilters;
    using ChannelTelephone::service;
    using ChannelTelephone::subscription;

private:
    /// Of a loop that goes on while the telephone has no network.
    struct EndlessLoop : std::runtime_error {
        using std::runtime_error::runtime_error;
    };

    void TestBody() override {}
    void answer(const ScriptedNetwork::Request& request, Exchange& exchange);

    bool m_redirectedToNowhere = false; ///< in the action at hand
    std::size_t m_requests = 0;
    std::size_t m_lines = 0;
};
