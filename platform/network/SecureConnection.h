#pragma once

/// One open TLS connection. Owned by its SecureConnectionEstablisher; used by one thread at a time.
class SecureConnection {
public:
    virtual ~SecureConnection() = default;

    /// Whether the connection can still carry a request: false once the peer has closed or reset it. Sends nothing
    /// and does not wait.
    virtual bool isOpen() = 0;

    /// Shuts the connection; harmless when it is closed already.
    virtual void close() = 0;
};
