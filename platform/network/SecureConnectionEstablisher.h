#pragma once

#include "network/CertificateMgmt.h"

#include <memory>
#include <string>

class CertificateMgmtSvcIfc;
class SecureConnection;

/// Sets up one TLS connection to a server and holds it. Used by one thread at a time. No operation throws; connect
/// is bounded in time.
class SecureConnectionEstablisher {
public:
    /// `certificates` is not owned and may be null: no server is trusted then.
    explicit SecureConnectionEstablisher(CertificateMgmtSvcIfc* certificates);
    virtual ~SecureConnectionEstablisher();
    SecureConnectionEstablisher(const SecureConnectionEstablisher&) = delete;
    SecureConnectionEstablisher& operator=(const SecureConnectionEstablisher&) = delete;

    /// Selects the certificate set of this client.
    void setupClient(CertificateMgmt::eInterface client);

    /// Adds a connection option of the platform's numbering.
    void addOption(int option);

    /// Opens the connection to the server that the URL names: "https://host[:port][/...]", or a bare host with an
    /// optional port (443), IPv6 in brackets. A path is not looked at. False when there is no connection.
    bool connect(const std::string& url);

    /// Name of the server that connect was given, without port and brackets. Empty before connect.
    std::string getServerName() const;
    /// Port of that server in decimal.
    std::string getServerPort() const;
    /// A value that is handed on to HttpClient::send.
    int getConnectionKind() const;

    /// The connection, or null when there is none.
    SecureConnection* getConnection();

private:
    struct Representation;
    std::unique_ptr<Representation> m_representation;
};
