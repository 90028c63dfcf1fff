#include "network/HostConnection.h"

#include "network/NameLookup.h"
#include "network/NetworkControl.h"
#include "network/ServerAddress.h"

#include <boost/asio/executor_work_guard.hpp>
#include <boost/asio/io_context.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/ssl/stream.hpp>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <exception>
#include <utility>
#include <vector>

namespace asio = boost::asio;
using boost::system::error_code;
using tcp = asio::ip::tcp;
using Clock = std::chrono::steady_clock;

namespace {

constexpr std::size_t maximumWriteBytes = 16 * 1024; ///< one TLS record, so that each write is a step forward

bool wouldBlock(const error_code& result) {
    return result == asio::error::would_block || result == asio::error::try_again;
}

Clock::time_point after(int milliseconds) {
    return Clock::now() + std::chrono::milliseconds(milliseconds);
}

} // namespace

/// The context is shared with name look-ups, which may outlive the connection that asked for them.
struct HostConnection::Representation {
    using Stream = asio::ssl::stream<tcp::socket>;

    explicit Representation(TlsContext::Pointer tlsContext)
        : context(std::make_shared<asio::io_context>()), work(context->get_executor()), tls(tlsContext.release()),
          stream(*context, tls) {}

    bool connect(const ServerAddress& server, std::string& error);
    std::vector<std::string> lookUp(const std::string& host, Clock::time_point deadline, std::string& error);
    bool connectSocket(const std::vector<std::string>& addresses, const std::string& port, Clock::time_point deadline,
                       std::string& error);
    void abandon();

    /// Runs one operation to its end: `attempt` tries it without waiting, `start` begins it with the handler it is
    /// given when that would have had to wait. An error with its reason when it failed; the stream is closed when it
    /// was cut short.
    template <typename Attempt, typename Start>
    error_code runStep(Clock::time_point deadline, std::string& error, Attempt attempt, Start start);

    template <typename Start>
    error_code runStep(Clock::time_point deadline, std::string& error, Start start) {
        return runStep(deadline, error, [] { return error_code(asio::error::would_block); }, start);
    }

    /// Waits until the operation that `start` begins has ended, the step is refused or it is late.
    template <typename Start>
    error_code await(const NetworkControl::Step& step, Clock::time_point deadline, const char*& reason, Start start);

    std::shared_ptr<asio::io_context> context;
    asio::executor_work_guard<asio::io_context::executor_type> work;
    asio::ssl::context tls;
    Stream stream;
    bool stepInProgress = false;
    std::atomic<bool> endRequested{false}; ///< by another thread
    bool usable = false;
    bool exchangeInProgress = false;
};

template <typename Attempt, typename Start>
error_code HostConnection::Representation::runStep(Clock::time_point deadline, std::string& error, Attempt attempt,
                                                   Start start) {
    const char* reason = nullptr;
    error_code result = asio::error::operation_aborted;
    {
        const NetworkControl::Step step(NetworkControl::instance(), [this] {
            endRequested = true;
            asio::post(*context, [this] {
                if (stepInProgress) {
                    abandon();
                }
            });
        });
        reason = step.refusal();
        if (reason != nullptr) {
            abandon();
        } else {
            result = attempt();
            if (wouldBlock(result)) {
                result = await(step, deadline, reason, start);
            }
        }
    }
    if (endRequested.exchange(false)) {
        context->restart();
        context->poll(); // a call to end that came too late finds no step
    }
    if (result) {
        error = reason != nullptr ? reason : result.message();
    }
    return result;
}

template <typename Start>
error_code HostConnection::Representation::await(const NetworkControl::Step& step, Clock::time_point deadline,
                                                 const char*& reason, Start start) {
    // Shared with the handler: that of a name look-up may come when nobody waits for it any more.
    struct Outcome {
        bool done = false;
        error_code result;
    };
    const auto outcome = std::make_shared<Outcome>();
    stepInProgress = true;
    context->restart();
    start([outcome](const error_code& ec, auto&&...) {
        outcome->done = true;
        outcome->result = ec;
    });
    while (!outcome->done && reason == nullptr) {
        const bool late = context->run_one_until(deadline) == 0;
        reason = outcome->done ? nullptr : late ? "time limit" : step.refusal();
    }
    if (!outcome->done) {
        abandon();
        context->poll(); // the cancelled operation ends here, and with it the use of the caller's buffer
        outcome->result = asio::error::operation_aborted;
    }
    stepInProgress = false;
    return outcome->result;
}

void HostConnection::Representation::abandon() {
    error_code ignored;
    stream.lowest_layer().close(ignored);
    usable = false;
}

std::vector<std::string> HostConnection::Representation::lookUp(const std::string& host, Clock::time_point deadline,
                                                                std::string& error) {
    const auto found = std::make_shared<NameLookup::Result>();
    const error_code failed = runStep(deadline, error, [this, &host, found](auto handler) {
        NameLookup::start(host, [context = context, found, handler](NameLookup::Result result) {
            asio::post(*context, [found, handler, result = std::move(result)]() mutable {
                *found = std::move(result);
                handler(error_code());
            });
        });
    });
    if (failed) {
        return {};
    }
    error = found->error;
    return found->addresses;
}

bool HostConnection::Representation::connectSocket(const std::vector<std::string>& addresses, const std::string& port,
                                                   Clock::time_point deadline, std::string& error) {
    const auto portNumber = static_cast<unsigned short>(std::stoi(port));
    for (std::size_t index = 0; index < addresses.size(); ++index) {
        error_code failed;
        const asio::ip::address address = asio::ip::make_address(addresses[index], failed);
        if (failed) {
            error = failed.message();
            continue;
        }
        // What is left is shared out, so that an address that does not answer leaves time for the next one.
        const auto share = (deadline - Clock::now()) / static_cast<long>(addresses.size() - index);
        failed = runStep(Clock::now() + share, error, [this, &address, portNumber](auto handler) {
            error_code ignored;
            stream.lowest_layer().close(ignored);
            stream.lowest_layer().async_connect(tcp::endpoint(address, portNumber), handler);
        });
        if (!failed) {
            stream.lowest_layer().set_option(tcp::no_delay(true), failed);
            stream.lowest_layer().non_blocking(true, failed); // what is tried at once must not wait
            error = failed ? failed.message() : std::string();
            return !failed;
        }
        if (NetworkControl::instance().refusal() != nullptr) {
            break;
        }
    }
    return false;
}

bool HostConnection::Representation::connect(const ServerAddress& server, std::string& error) {
    const Clock::time_point deadline = after(NetworkControl::instance().limits().connectMilliseconds);
    if (!TlsContext::expectServer(stream.native_handle(), server)) {
        error = "the server's name cannot be verified";
        return false;
    }
    const std::vector<std::string> addresses =
        server.isIpAddress ? std::vector<std::string>{server.host} : lookUp(server.host, deadline, error);
    if (addresses.empty() || !connectSocket(addresses, server.port, deadline, error)) {
        return false;
    }
    const error_code failed = runStep(
        deadline, error, [this](auto handler) { stream.async_handshake(asio::ssl::stream_base::client, handler); });
    if (failed) {
        error = TlsContext::failureText(stream.native_handle(), error);
        abandon();
        return false;
    }
    usable = true;
    return true;
}

HostConnection::HostConnection(std::unique_ptr<Representation> representation)
    : m_representation(std::move(representation)) {}

HostConnection::~HostConnection() {
    close();
}

std::unique_ptr<HostConnection> HostConnection::open(const ServerAddress& server, TlsContext::Pointer context,
                                                     std::string& error) try {
    auto representation = std::make_unique<Representation>(std::move(context));
    if (!representation->connect(server, error)) {
        return nullptr;
    }
    return std::unique_ptr<HostConnection>(new HostConnection(std::move(representation)));
} catch (const std::exception& failure) {
    error = failure.what();
    return nullptr;
}

bool HostConnection::isOpen() try {
    Representation& my = *m_representation;
    if (!my.usable || my.exchangeInProgress) {
        return false;
    }
    // Reading is the only way to know: readiness alone does not tell a session ticket from the peer's end.
    error_code result;
    char stray = 0;
    my.stream.read_some(asio::buffer(&stray, 1), result);
    if (wouldBlock(result)) {
        return true;
    }
    my.abandon(); // ended, reset, or bytes that nobody asked for
    return false;
} catch (const std::exception&) {
    return false;
}

void HostConnection::close() try {
    Representation& my = *m_representation;
    if (!my.stream.lowest_layer().is_open()) {
        return;
    }
    if (my.usable && NetworkControl::instance().refusal() == nullptr) {
        // Tells the peer, without waiting for its answer.
        my.context->restart();
        my.stream.async_shutdown([](const error_code&) {});
        my.context->poll();
    }
    my.abandon();
    my.context->poll();
} catch (const std::exception&) {
    m_representation->usable = false;
}

bool HostConnection::write(const char* bytes, std::size_t length, std::string& error) try {
    Representation& my = *m_representation;
    if (!my.usable) {
        error = "the connection is closed";
        return false;
    }
    const int progressMilliseconds = NetworkControl::instance().limits().progressMilliseconds;
    std::size_t written = 0;
    while (written < length) {
        const std::size_t part = std::min(length - written, maximumWriteBytes);
        std::size_t moved = 0;
        const error_code failed =
            my.runStep(after(progressMilliseconds), error, [&my, &moved, bytes, written, part](auto handler) {
                my.stream.async_write_some(asio::buffer(bytes + written, part),
                                           [handler, &moved](const error_code& ec, std::size_t count) {
                                               moved = count;
                                               handler(ec);
                                           });
            });
        if (failed) {
            my.abandon();
            return false;
        }
        written += moved;
    }
    return true;
} catch (const std::exception& failure) {
    error = failure.what();
    m_representation->abandon();
    return false;
}

HostConnection::ReadResult HostConnection::readSome(char* bytes, std::size_t capacity, std::size_t& length,
                                                    std::string& error) try {
    Representation& my = *m_representation;
    length = 0;
    if (!my.usable) {
        error = "the connection is closed";
        return ReadResult::FAILED;
    }
    const int progressMilliseconds = NetworkControl::instance().limits().progressMilliseconds;
    // Writing is not tried first: what a full socket does not take of a TLS record would be lost.
    const asio::mutable_buffer room = asio::buffer(bytes, capacity);
    const error_code failed = my.runStep(
        after(progressMilliseconds), error,
        [&my, &length, room] {
            error_code result;
            length = my.stream.read_some(room, result);
            return result;
        },
        [&my, &length, room](auto handler) {
            my.stream.async_read_some(room, [handler, &length](const error_code& ec, std::size_t count) {
                length = count;
                handler(ec);
            });
        });
    if (!failed) {
        return ReadResult::DATA;
    }
    my.abandon();
    return failed == asio::error::eof ? ReadResult::END : ReadResult::FAILED;
} catch (const std::exception& failure) {
    error = failure.what();
    m_representation->abandon();
    return ReadResult::FAILED;
}

void HostConnection::beginExchange() {
    m_representation->exchangeInProgress = true;
}

void HostConnection::endExchange(bool reusable) {
    m_representation->exchangeInProgress = false;
    if (!reusable) {
        close();
    }
}
