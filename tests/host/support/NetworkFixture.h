#pragma once

#include "network/HttpClient.h"
#include "network/NetworkControl.h"
#include "network/SecureConnection.h"
#include "network/SecureConnectionEstablisher.h"
#include "siblings/CertificateMgmtSvcIfc.h"
#include "support/RecordedHostLog.h"
#include "support/ScriptedTlsServer.h"
#include "support/TestCertificates.h"
#include "threads/TimeScale.h"

#include <gtest/gtest.h>

#include <chrono>
#include <functional>
#include <string>
#include <thread>

/// Names the certificates that the client uses.
class TestCertificateService : public CertificateMgmtSvcIfc {
public:
    std::string getCertificateAuthorities(CertificateMgmt::eInterface) override { return authorities; }
    std::string getClientCertificate(CertificateMgmt::eInterface) override { return certificate; }
    std::string getClientKey(CertificateMgmt::eInterface) override { return key; }

    std::string authorities;
    std::string certificate;
    std::string key;
};

/// One answer as its caller collects it.
struct Answer {
    HttpClientIfc::eResult sent = HttpClientIfc::FAILURE;
    HttpClientIfc::eResult result = HttpClientIfc::FAILURE;
    int status = 0;
    int totalLength = 0;
    int reads = 0;
    std::string body;
    HttpClientIfc::Headers headers;
    std::string location;
    int retryAfterSeconds = 0;
};

/// What a request of a test asks for.
struct Request {
    HttpClientIfc::HTTPMETHOD method = HttpClientIfc::HTTP_GET;
    std::string target = "/";
    std::string body;
    HttpClientIfc::Headers headers;
    int maximumLength = 0x100000;
};

inline Answer exchange(SecureConnectionEstablisher& establisher, const Request& request = {}) {
    Answer answer;
    HttpClient client;
    client.setServer(establisher.getServerName(), establisher.getServerPort());
    client.setHttpRequestContentType("application/json");
    SecureConnection* connection = establisher.getConnection();
    answer.sent = client.send(connection, request.method, establisher.getConnectionKind(), request.headers,
                              request.target, request.body.data(), request.body.size(), "", "", 1, 0);
    if (answer.sent == HttpClientIfc::FAILURE) {
        return answer;
    }
    auto status = HttpClientIfc::STATUS_NONE;
    answer.result =
        client.readResponse(connection, answer.body, request.maximumLength, status, answer.totalLength, answer.headers);
    answer.reads = 1;
    while (answer.result == HttpClientIfc::MORE_DATA) {
        std::string chunk;
        answer.result = client.readMore(connection, chunk, request.maximumLength);
        answer.body += chunk;
        ++answer.reads;
    }
    answer.status = status;
    answer.location = client.getLocation();
    answer.retryAfterSeconds = client.getRetryAfter();
    return answer;
}

/// Certificates that verify, an untouched network and an empty log for every test.
class NetworkFixture : public ::testing::Test {
protected:
    NetworkFixture() {
        RecordedHostLog::clear();
        NetworkControl::instance().setLimits(NetworkControl::Limits());
        NetworkControl::instance().setInterfaceUp(true);
        NetworkControl::instance().resume();
        TimeScale::set(1);
        service.authorities = certificates().authority().certificate;
    }
    ~NetworkFixture() override {
        NetworkControl::instance().setInterfaceUp(true);
        NetworkControl::instance().resume();
        NetworkControl::instance().setCertificates(nullptr);
    }

    static TestCertificates& certificates() {
        static TestCertificates made;
        return made;
    }

    static ScriptedTlsServer::Options serverOptions() {
        ScriptedTlsServer::Options options;
        options.certificate = certificates().server().certificate;
        options.key = certificates().server().key;
        return options;
    }

    static void setLimits(const std::function<void(NetworkControl::Limits&)>& change) {
        NetworkControl::Limits limits;
        change(limits);
        NetworkControl::instance().setLimits(limits);
    }

    TestCertificateService service;
};

/// Polls for something that another thread brings about.
inline bool eventually(const std::function<bool()>& holds, std::chrono::milliseconds limit = std::chrono::seconds(10)) {
    const auto deadline = std::chrono::steady_clock::now() + limit;
    while (!holds()) {
        if (std::chrono::steady_clock::now() > deadline) {
            return false;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(2));
    }
    return true;
}

/// Time that a call took.
inline std::chrono::milliseconds durationOf(const std::function<void()>& call) {
    const auto begin = std::chrono::steady_clock::now();
    call();
    return std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - begin);
}
