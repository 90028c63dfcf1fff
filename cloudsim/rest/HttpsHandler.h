#pragma once

#include "Cloud.h"
#include "net/HttpReader.h"
#include "net/Server.h"
#include "tls/TlsProfiles.h"

namespace cloudsim {

/// Serves the telephones: TLS, then requests one after the other, or an upgrade to the event channel.
class HttpsHandler final : public ConnectionHandler {
public:
    HttpsHandler(Cloud& cloud, TlsProfiles& tls) : m_cloud(cloud), m_tls(tls) {}

    /// Hosts and ports that answers may name: the server's own and the second one.
    void setAddresses(const Address& main, const Address& alternate);
    void serve(Connection& connection) override;

private:
    /// False when the connection is of no further use.
    bool exchange(Connection& connection, const HttpRequest& request, HttpReader& reader);
    bool waitAsTold(Connection& connection, const FaultEngine::Hit& hit);
    HttpResponse replacement(const HttpRequest& request, const FaultActions& actions) const;
    std::string authorityOf(const HttpRequest& request) const;

    Cloud& m_cloud;
    TlsProfiles& m_tls;
    Address m_main;
    Address m_alternate;
};

} // namespace cloudsim
