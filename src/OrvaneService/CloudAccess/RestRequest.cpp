#include "OrvaneService/OrvaneService.h"

#include "Log.h"
#include "OrvaneServiceHelper/OrvaneServiceHelper.h"
#include "OrvaneServiceStrings.h"
#include "network/HttpClient.h"
#include "network/SecureConnection.h"
#include "network/SecureConnectionEstablisher.h"
#include "threads/CriticalSection.h"
#include "threads/OSALSleep.h"

namespace {

constexpr int maxResponseLength = 0x100000; ///< bytes in one read
constexpr int maxRequestCount = 3;          ///< follow-ups of one logical request, redirections and retries together
constexpr unsigned maxRetryAfterSeconds = 30;
constexpr int connectionOptions[] = {36, 37};

bool mayFollowRedirection(const std::string& location, int requestCount) {
    if (requestCount == maxRequestCount) {
        ORVANE_LOG(ERROR, "connectionHandler() too many redirects");
        return false;
    }
    ORVANE_LOG(STATUS, "connectionHandler() requestCount[%d] redirectionUrl[%s]", requestCount + 1, location.c_str());
    return true;
}

/// Returns when the wait that the cloud asks for is over; false, at once, when there is to be no further request.
bool waitForRetry(int retryAfterSeconds, int requestCount) {
    // Unsigned: a value that could not be read, -1, is too high as well.
    if (static_cast<unsigned>(retryAfterSeconds) > maxRetryAfterSeconds) {
        ORVANE_LOG(ERROR, "connectionHandler() retry-after value is too high [%d]", retryAfterSeconds);
        return false;
    }
    if (requestCount == maxRequestCount) {
        ORVANE_LOG(ERROR, "connectionHandler() too many requests");
        return false;
    }
    ORVANE_LOG(STATUS, "connectionHandler() requestCount[%d] retryAfter[%d]", requestCount + 1, retryAfterSeconds);
    OSALSleep::secSleep(retryAfterSeconds);
    return true;
}

} // namespace

bool OrvaneService::sendRequest(const std::string& path, HttpClientIfc::HTTPMETHOD method, RestAnswer& answer,
                                const std::string& body) {
    Headers requestHeaders;
    Headers responseHeaders;
    return connectionHandler(path, body, method, answer.responseData, requestHeaders, responseHeaders,
                             answer.statusCode, "", 0);
}

bool OrvaneService::connectionHandler(const std::string& path, std::string body, HttpClientIfc::HTTPMETHOD method,
                                      std::string& responseData, Headers& requestHeaders, Headers& responseHeaders,
                                      StatusCode& statusCode, std::string redirectionUrl, int requestCount) {
    if (!m_interface_status || !m_ov_server_type) {
        ORVANE_LOG(ERROR, "connectionHandler() m_interface_status[%s] m_ov_server_type[%s]",
                   OrvaneLog::text(m_interface_status), OrvaneLog::text(m_ov_server_type));
        return false;
    }
    FollowUp followUp;
    switch (exchange(path, body, method, responseData, requestHeaders, responseHeaders, statusCode, redirectionUrl,
                     followUp)) {
    case Attempt::NO_CONNECTION:
        return false;
    case Attempt::SEND_FAILED:
        ORVANE_LOG(ERROR, "connectionHandler() HttpClient::FAILURE");
        return false;
    case Attempt::READ_FAILED:
        ORVANE_LOG(ERROR, "connectionHandler() HttpClient::FAILURE on reading response");
        return false;
    case Attempt::ANSWERED:
        break;
    }

    // Neither the sleep nor the follow-up request holds m_connectionSem: the follow-up takes it itself.
    switch (statusCode) {
    case HttpClientIfc::STATUS_OK:
    case HttpClientIfc::STATUS_CREATED:
    case HttpClientIfc::STATUS_NO_CONTENT:
    case HttpClientIfc::STATUS_NOT_MODIFIED:
    case HttpClientIfc::STATUS_NOT_FOUND:
        return true;
    case HttpClientIfc::STATUS_MOVED_PERMANENTLY:
    case HttpClientIfc::STATUS_FOUND:
    case HttpClientIfc::STATUS_TEMPORARY_REDIRECT:
        return mayFollowRedirection(followUp.location, requestCount) &&
               connectionHandler(OrvaneServiceHelper::getRedirectionPath(followUp.location), body, method, responseData,
                                 requestHeaders, responseHeaders, statusCode, followUp.location, requestCount + 1);
    case HttpClientIfc::STATUS_TOO_MANY_REQUESTS:
        return waitForRetry(followUp.retryAfterSeconds, requestCount) &&
               connectionHandler(path, body, method, responseData, requestHeaders, responseHeaders, statusCode,
                                 followUp.location, requestCount + 1);
    default: // any code may occur, those without a name too
        ORVANE_LOG(DEBUG, "connectionHandler() unexpected response\n%s\n", responseData.c_str());
        return false;
    }
}

OrvaneService::Attempt OrvaneService::exchange(const std::string& path, const std::string& body,
                                               HttpClientIfc::HTTPMETHOD method, std::string& responseData,
                                               Headers& requestHeaders, Headers& responseHeaders,
                                               StatusCode& statusCode, const std::string& redirectionUrl,
                                               FollowUp& followUp) {
    CriticalSection connection(m_connectionSem);
    clearSecureConnection(false);
    // A redirection counts only for a new connection: while the former one is open, the follow-up goes over it.
    if (!m_secureConnEstablisher && !establishConnection(redirectionUrl.empty() ? m_server : redirectionUrl)) {
        ORVANE_LOG(WARNING, "connectionHandler() no connection possible.");
        clearSecureConnection(true);
        return Attempt::NO_CONNECTION;
    }

    bool sent = false;
    HttpClientIfc::eResult readResult = HttpClientIfc::FAILURE;
    {
        HttpClient client;
        client.setServer(m_secureConnEstablisher->getServerName(), m_secureConnEstablisher->getServerPort());
        client.setHttpRequestContentType(OrvaneServiceStrings::OV_CONTENT_TYPE);
        statusCode = HttpClientIfc::STATUS_NONE;
        populateToken(requestHeaders);
        sent = client.send(m_secureConnEstablisher->getConnection(), method,
                           m_secureConnEstablisher->getConnectionKind(), requestHeaders, path, body.data(), body.size(),
                           std::string(), std::string(), 1, 0) != HttpClientIfc::FAILURE;
        if (sent) {
            readResult = readAnswer(client, responseData, responseHeaders, statusCode);
            followUp.location = client.getLocation();
            followUp.retryAfterSeconds = client.getRetryAfter();
        }
    }
    clearSecureConnection(!sent);
    if (!sent) {
        return Attempt::SEND_FAILED;
    }
    return readResult == HttpClientIfc::FAILURE ? Attempt::READ_FAILED : Attempt::ANSWERED;
}

bool OrvaneService::establishConnection(const std::string& url) {
    m_secureConnEstablisher = std::make_unique<SecureConnectionEstablisher>(m_pCertificateMgmtService);
    m_secureConnEstablisher->setupClient(CertificateMgmt::ORVANE_SERVICE_CLIENT);
    for (const int option : connectionOptions) {
        m_secureConnEstablisher->addOption(option);
    }
    return m_secureConnEstablisher->connect(url);
}

HttpClientIfc::eResult OrvaneService::readAnswer(HttpClientIfc& client, std::string& responseData,
                                                 Headers& responseHeaders, StatusCode& statusCode) {
    int totalLength = 0;
    SecureConnection* connection = m_secureConnEstablisher->getConnection();
    HttpClientIfc::eResult result =
        client.readResponse(connection, responseData, maxResponseLength, statusCode, totalLength, responseHeaders);
    ORVANE_LOG(DEBUG,
               "connectionHandler() statusCode[%d] result[%d] maxResponseLength[%d] totalLength[%d] "
               "responseData.length[%d]",
               static_cast<int>(statusCode), static_cast<int>(result), maxResponseLength, totalLength,
               static_cast<int>(responseData.length()));
    while (result == HttpClientIfc::MORE_DATA) {
        std::string chunk;
        result = client.readMore(connection, chunk, maxResponseLength);
        responseData += chunk;
    }
    return result;
}

void OrvaneService::populateToken(Headers& headers) {
    if (m_accessToken.empty() || headers.find("Authorization") != headers.end()) {
        return;
    }
    ORVANE_LOG(DEBUG, "populateToken() m_accessToken[%s]", m_accessToken.c_str());
    headers.emplace("Authorization", "Bearer " + m_accessToken);
}

void OrvaneService::clearSecureConnection(bool force) {
    SecureConnection* connection = m_secureConnEstablisher ? m_secureConnEstablisher->getConnection() : nullptr;
    const bool open = connection != nullptr && connection->isOpen();
    if (force || (connection != nullptr && !open)) {
        if (open) {
            connection->close();
        }
        m_secureConnEstablisher.reset();
    }
    ORVANE_LOG(STATUS, "clearSecureConnection() force[%s] m_secureConnEstablisher[%p]", OrvaneLog::text(force),
               static_cast<void*>(m_secureConnEstablisher.get()));
}
