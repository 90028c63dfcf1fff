#include "network/SecureConnectionEstablisher.h"

#include "logging/HostLog.h"
#include "network/HostConnection.h"
#include "network/NetworkControl.h"
#include "network/ServerAddress.h"
#include "network/TlsContextCache.h"

#include <exception>
#include <utility>

namespace {

constexpr int tlsConnection = 1; ///< the only kind of connection that this platform makes

} // namespace

struct SecureConnectionEstablisher::Representation {
    CertificateMgmtSvcIfc* certificates = nullptr;
    CertificateMgmt::eInterface client = CertificateMgmt::ORVANE_SERVICE_CLIENT;
    ServerAddress server;
    std::unique_ptr<HostConnection> connection;
};

SecureConnectionEstablisher::SecureConnectionEstablisher(CertificateMgmtSvcIfc* certificates)
    : m_representation(std::make_unique<Representation>()) {
    m_representation->certificates = certificates;
}

SecureConnectionEstablisher::~SecureConnectionEstablisher() = default;

void SecureConnectionEstablisher::setupClient(CertificateMgmt::eInterface client) {
    m_representation->client = client;
}

void SecureConnectionEstablisher::addOption(int) {
    // Options choose among the telephone's kinds of TLS connections; there is one kind here.
}

bool SecureConnectionEstablisher::connect(const std::string& url) try {
    Representation& my = *m_representation;
    my.connection.reset();
    my.server = ServerAddress();
    std::string error;
    const std::optional<ServerAddress> server = ServerAddress::parse(url, "https", error);
    if (!server) {
        HOST_LOG(HostLog::WARNING, "connection refused: no server address, %s", error.c_str());
        return false;
    }
    my.server = *server;
    if (const char* refusal = NetworkControl::instance().refusal()) {
        error = refusal;
    } else if (TlsContext::Pointer context =
                   NetworkControl::instance().tlsContexts().get(my.certificates, my.client, error)) {
        my.connection = HostConnection::open(my.server, std::move(context), error);
    }
    if (!my.connection) {
        HOST_LOG(HostLog::WARNING, "connection to %s refused: %s", my.server.text().c_str(), error.c_str());
    }
    return my.connection != nullptr;
} catch (const std::exception& failure) {
    HOST_LOG(HostLog::WARNING, "connection refused: %s", failure.what());
    return false;
}

std::string SecureConnectionEstablisher::getServerName() const {
    return m_representation->server.host;
}

std::string SecureConnectionEstablisher::getServerPort() const {
    return m_representation->server.port;
}

int SecureConnectionEstablisher::getConnectionKind() const {
    return tlsConnection;
}

SecureConnection* SecureConnectionEstablisher::getConnection() {
    return m_representation->connection.get();
}
