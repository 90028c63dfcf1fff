#pragma once

#include "network/SecureConnection.h"
#include "network/TlsContext.h"

#include <cstddef>
#include <memory>
#include <string>

struct ServerAddress;

/// A TLS connection whose every step runs on the calling thread, is bounded in time, and fails at once when the
/// telephone loses its interface. No operation throws.
class HostConnection final : public SecureConnection {
public:
    /// Connects and verifies the server. Null with the reason in `error` when that fails.
    static std::unique_ptr<HostConnection> open(const ServerAddress& server, TlsContext::Pointer context,
                                                std::string& error);
    ~HostConnection() override;

    /// Also false while an exchange is unfinished: what is still to come belongs to that one.
    bool isOpen() override;
    void close() override;

    enum class ReadResult {
        DATA,
        END, ///< the peer ended the stream in order: nothing was cut off
        FAILED
    };

    /// Writes all bytes. False with the reason in `error` when they did not go out.
    bool write(const char* bytes, std::size_t length, std::string& error);
    /// Reads what there is, at least one byte and at most `capacity`.
    ReadResult readSome(char* bytes, std::size_t capacity, std::size_t& length, std::string& error);

    /// A request is about to be sent.
    void beginExchange();
    /// Its answer is read to the end. Without `reusable` the connection is closed.
    void endExchange(bool reusable);

private:
    struct Representation;
    explicit HostConnection(std::unique_ptr<Representation> representation);
    std::unique_ptr<Representation> m_representation;
};
