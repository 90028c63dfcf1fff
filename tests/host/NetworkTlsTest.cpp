#include "support/NetworkFixture.h"

#include <openssl/x509_vfy.h>

namespace {

constexpr int warning = 3;

class TlsConnection : public NetworkFixture {
protected:
    static void waitForClient(ScriptedPeer& peer) { peer.waitForEnd(); }

    /// Whether the client takes a server with such a certificate.
    bool connectsTo(const CertificateFiles& files) {
        ScriptedTlsServer::Options options;
        options.certificate = files.certificate;
        options.key = files.key;
        ScriptedTlsServer server(options, waitForClient);
        SecureConnectionEstablisher establisher(&service);
        const bool connected = establisher.connect(server.url());
        EXPECT_EQ(connected, establisher.getConnection() != nullptr);
        return connected;
    }

    static void expectRefusalFor(int verificationError) {
        EXPECT_TRUE(RecordedHostLog::contains(warning, X509_verify_cert_error_string(verificationError)));
    }
};

TEST_F(TlsConnection, OpensToAServerOfATrustedAuthority) {
    ScriptedTlsServer server(serverOptions(), waitForClient);
    SecureConnectionEstablisher establisher(&service);
    establisher.setupClient(CertificateMgmt::ORVANE_SERVICE_CLIENT);
    establisher.addOption(36);
    establisher.addOption(37);

    ASSERT_TRUE(establisher.connect(server.url()));

    ASSERT_NE(establisher.getConnection(), nullptr);
    EXPECT_TRUE(establisher.getConnection()->isOpen());
    EXPECT_EQ(establisher.getServerName(), "127.0.0.1");
    EXPECT_EQ(establisher.getServerPort(), std::to_string(server.port()));
    EXPECT_TRUE(RecordedHostLog::lines().empty());
}

TEST_F(TlsConnection, AsksForTheServersNameButNotForItsAddress) {
    std::string name = "?";
    ScriptedTlsServer server(serverOptions(), [&name](ScriptedPeer& peer) {
        name = peer.requestedName();
        peer.write("x");
        peer.waitForEnd();
    });
    SecureConnectionEstablisher establisher(&service);

    ASSERT_TRUE(establisher.connect("localhost:" + std::to_string(server.port())));
    ASSERT_TRUE(eventually([&establisher] { return !establisher.getConnection()->isOpen(); }));
    EXPECT_EQ(name, "localhost");

    ASSERT_TRUE(establisher.connect(server.url() + "/some/path?with=query"));
    ASSERT_TRUE(eventually([&establisher] { return !establisher.getConnection()->isOpen(); }));
    EXPECT_EQ(name, "");
}

TEST_F(TlsConnection, HasNoNameBeforeConnect) {
    SecureConnectionEstablisher establisher(&service);
    EXPECT_EQ(establisher.getServerName(), "");
    EXPECT_EQ(establisher.getConnection(), nullptr);
}

TEST_F(TlsConnection, RefusesTheCertificateOfAnotherHost) {
    EXPECT_FALSE(connectsTo(certificates().make("otherHost", {"Other", "DNS:other.example.test"}, "authority")));
    expectRefusalFor(X509_V_ERR_IP_ADDRESS_MISMATCH);
}

TEST_F(TlsConnection, RefusesTheCertificateOfAnotherHostForAName) {
    ScriptedTlsServer::Options options;
    const CertificateFiles files =
        certificates().make("otherName", {"localhost", "DNS:other.example.test"}, "authority");
    options.certificate = files.certificate;
    options.key = files.key;
    ScriptedTlsServer server(options, waitForClient);
    SecureConnectionEstablisher establisher(&service);

    EXPECT_FALSE(establisher.connect(server.url("https", "localhost")));
    expectRefusalFor(X509_V_ERR_HOSTNAME_MISMATCH);
    EXPECT_EQ(server.connections(), 0);
}

TEST_F(TlsConnection, RefusesAnAddressThatStandsInTheCertificateAsAName) {
    EXPECT_FALSE(connectsTo(certificates().make("addressAsName", {"127.0.0.1", "DNS:127.0.0.1"}, "authority")));
    expectRefusalFor(X509_V_ERR_IP_ADDRESS_MISMATCH);
}

TEST_F(TlsConnection, RefusesAnotherAuthority) {
    certificates().make("otherAuthority", {"Other Authority", "", -1, 30, true});
    EXPECT_FALSE(connectsTo(certificates().make("foreign", {"Foreign", "IP:127.0.0.1"}, "otherAuthority")));
    expectRefusalFor(X509_V_ERR_UNABLE_TO_GET_ISSUER_CERT_LOCALLY);
}

TEST_F(TlsConnection, RefusesAnExpiredCertificate) {
    EXPECT_FALSE(connectsTo(certificates().make("expired", {"Expired", "IP:127.0.0.1", -10, -1}, "authority")));
    expectRefusalFor(X509_V_ERR_CERT_HAS_EXPIRED);
}

TEST_F(TlsConnection, RefusesACertificateThatIsNotYetValid) {
    EXPECT_FALSE(connectsTo(certificates().make("future", {"Future", "IP:127.0.0.1", 1, 30}, "authority")));
    expectRefusalFor(X509_V_ERR_CERT_NOT_YET_VALID);
}

TEST_F(TlsConnection, RefusesASelfSignedCertificate) {
    EXPECT_FALSE(connectsTo(certificates().make("selfSigned", {"Self", "IP:127.0.0.1"})));
    expectRefusalFor(X509_V_ERR_DEPTH_ZERO_SELF_SIGNED_CERT);
}

TEST_F(TlsConnection, TrustsNobodyWithoutAuthorities) {
    ScriptedTlsServer server(serverOptions(), waitForClient);
    SecureConnectionEstablisher withoutService(nullptr);
    EXPECT_FALSE(withoutService.connect(server.url()));
    service.authorities.clear();
    SecureConnectionEstablisher withoutFile(&service);
    EXPECT_FALSE(withoutFile.connect(server.url()));
    EXPECT_EQ(server.connections(), 0);
}

TEST_F(TlsConnection, RefusesToConnectWithUnreadableFiles) {
    ScriptedTlsServer server(serverOptions(), waitForClient);
    const std::string missing = certificates().path("missing.pem");
    service.authorities = missing;
    SecureConnectionEstablisher establisher(&service);
    EXPECT_FALSE(establisher.connect(server.url()));
    EXPECT_TRUE(RecordedHostLog::contains(warning, missing));

    service.authorities = certificates().authority().certificate;
    service.certificate = certificates().server().certificate;
    EXPECT_FALSE(establisher.connect(server.url())) << "a certificate without its key";
    service.key = certificates().authority().key;
    EXPECT_FALSE(establisher.connect(server.url())) << "a key of another certificate";
    EXPECT_EQ(server.accepted(), 0);
}

TEST_F(TlsConnection, SpeaksTls13AndTls12) {
    for (const int version : {TLS1_2_VERSION, TLS1_3_VERSION}) {
        ScriptedTlsServer::Options options = serverOptions();
        options.highestVersion = version;
        std::string protocol;
        ScriptedTlsServer server(options, [&protocol](ScriptedPeer& peer) {
            protocol = peer.protocol();
            peer.readRequest();
            peer.write("HTTP/1.1 204 No Content\r\n\r\n");
        });
        SecureConnectionEstablisher establisher(&service);
        ASSERT_TRUE(establisher.connect(server.url()));
        EXPECT_EQ(exchange(establisher).status, 204);
        EXPECT_EQ(protocol, version == TLS1_2_VERSION ? "TLSv1.2" : "TLSv1.3");
    }
}

TEST_F(TlsConnection, RefusesTls11) {
    ScriptedTlsServer::Options options = serverOptions();
    options.lowestVersion = TLS1_VERSION;
    options.highestVersion = TLS1_1_VERSION;
    ScriptedTlsServer server(options, waitForClient);
    SecureConnectionEstablisher establisher(&service);

    EXPECT_FALSE(establisher.connect(server.url()));
    EXPECT_EQ(server.connections(), 0);
    EXPECT_EQ(server.accepted(), 1);
}

class ClientCertificate : public TlsConnection, public ::testing::WithParamInterface<int> {
protected:
    ScriptedTlsServer::Options strictOptions() const {
        ScriptedTlsServer::Options options = serverOptions();
        options.clientAuthority = certificates().authority().certificate;
        options.highestVersion = GetParam();
        return options;
    }

    /// Whether a request comes through: with TLS 1.3 the client learns of a refusal only after its handshake.
    bool requestSucceeds(ScriptedTlsServer& server) {
        SecureConnectionEstablisher establisher(&service);
        return establisher.connect(server.url()) && exchange(establisher).status == 204;
    }
};

TEST_P(ClientCertificate, IsPresentedWhenTheServerAsks) {
    const CertificateFiles client = certificates().make("client", {"Desk Telephone", ""}, "authority");
    service.certificate = client.certificate;
    service.key = client.key;
    std::string name;
    ScriptedTlsServer server(strictOptions(), [&name](ScriptedPeer& peer) {
        name = peer.clientName();
        peer.readRequest();
        peer.write("HTTP/1.1 204 No Content\r\n\r\n");
    });

    EXPECT_TRUE(requestSucceeds(server));
    EXPECT_EQ(name, "Desk Telephone");
}

TEST_P(ClientCertificate, IsMissedByAServerThatRequiresIt) {
    ScriptedTlsServer server(strictOptions(), waitForClient);
    EXPECT_FALSE(requestSucceeds(server));
    EXPECT_EQ(server.connections(), 0);
    EXPECT_FALSE(RecordedHostLog::lines().empty());
}

INSTANTIATE_TEST_SUITE_P(BothVersions, ClientCertificate, ::testing::Values(TLS1_2_VERSION, TLS1_3_VERSION));

TEST_F(TlsConnection, RefusesAnythingButHttps) {
    ScriptedTlsServer server(serverOptions(), waitForClient);
    SecureConnectionEstablisher establisher(&service);
    EXPECT_FALSE(establisher.connect(server.url("http")));
    EXPECT_FALSE(establisher.connect("/relative/location"));
    EXPECT_FALSE(establisher.connect(""));
    EXPECT_EQ(server.accepted(), 0);
    EXPECT_EQ(establisher.getServerName(), "");
}

TEST_F(TlsConnection, ReportsARefusedPort) {
    SecureConnectionEstablisher establisher(&service);
    EXPECT_FALSE(establisher.connect("127.0.0.1:" + std::to_string(unusedPort())));
    EXPECT_TRUE(RecordedHostLog::contains(warning, "Connection refused"));
    EXPECT_EQ(RecordedHostLog::lines().size(), 1U);
}

TEST_F(TlsConnection, ReportsANameWithoutAnAddress) {
    // A label of more than 63 letters can have no address, which the resolver knows without asking anybody.
    const std::string host(70, 'a');
    SecureConnectionEstablisher establisher(&service);
    EXPECT_FALSE(establisher.connect(host));
    EXPECT_TRUE(RecordedHostLog::contains(warning, host + ":443 refused"));
}

TEST_F(TlsConnection, GivesUpOnAServerThatDoesNotShakeHands) {
    ScriptedTlsServer::Options options = serverOptions();
    options.handshake = false;
    ScriptedTlsServer server(options, waitForClient);
    setLimits([](NetworkControl::Limits& limits) { limits.connectMilliseconds = 200; });
    SecureConnectionEstablisher establisher(&service);

    bool connected = true;
    const auto took = durationOf([&] { connected = establisher.connect(server.url()); });

    EXPECT_FALSE(connected);
    EXPECT_GE(took.count(), 200);
    EXPECT_LT(took.count(), 2'000);
    EXPECT_TRUE(RecordedHostLog::contains(warning, "time limit"));
}

TEST_F(TlsConnection, ConnectingAnewDropsTheFormerConnection) {
    std::atomic<int> ended{0};
    ScriptedTlsServer server(serverOptions(), [&ended](ScriptedPeer& peer) { ended += peer.waitForEnd() ? 1 : 0; });
    SecureConnectionEstablisher establisher(&service);
    ASSERT_TRUE(establisher.connect(server.url()));
    ASSERT_TRUE(establisher.connect(server.url()));
    EXPECT_TRUE(eventually([&ended] { return ended == 1; }));
    EXPECT_TRUE(establisher.getConnection()->isOpen());
}

} // namespace
