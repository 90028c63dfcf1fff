#pragma once

#include "network/HttpClientIfc.h"

#include <memory>

/// The telephone's HTTP client.
class HttpClient : public HttpClientIfc {
public:
    HttpClient();
    ~HttpClient() override;
    HttpClient(const HttpClient&) = delete;
    HttpClient& operator=(const HttpClient&) = delete;

    void setServer(const std::string& name, const std::string& port) override;
    void setHttpRequestContentType(const std::string& contentType) override;
    eResult send(SecureConnection* connection, HTTPMETHOD method, int connectionKind, const Headers& headers,
                 const std::string& target, const char* body, std::size_t bodyLength, const std::string& user,
                 const std::string& password, int persistent, int reserved) override;
    eResult readResponse(SecureConnection* connection, std::string& responseData, int maximumLength,
                         eStatusCode& statusCode, int& totalLength, Headers& headers) override;
    eResult readMore(SecureConnection* connection, std::string& chunk, int maximumLength) override;
    const std::string& getLocation() const override;
    int getRetryAfter() const override;

private:
    struct Representation;
    std::unique_ptr<Representation> m_representation;
};
