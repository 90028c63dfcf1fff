#include "network/HttpClient.h"

#include "logging/HostLog.h"
#include "network/HostConnection.h"
#include "network/HttpRequestText.h"
#include "network/HttpResponseReader.h"
#include "network/NetworkControl.h"
#include "network/RetryAfter.h"
#include "network/ServerAddress.h"

#include <algorithm>
#include <climits>
#include <ctime>
#include <exception>
#include <optional>

struct HttpClient::Representation {
    std::string server;
    std::string port;
    std::string contentType;
    std::optional<HttpResponseReader> reader;
    std::string location;
    int retryAfterSeconds = -1;

    eResult readPart(HostConnection& connection, std::string& part, int maximumLength);
};

namespace {

HttpClientIfc::eResult failed(const char* step, const std::string& error) {
    HOST_LOG(HostLog::WARNING, "%s failed: %s", step, error.c_str());
    return HttpClientIfc::FAILURE;
}

HostConnection* hostConnection(SecureConnection* connection) {
    return dynamic_cast<HostConnection*>(connection);
}

HttpResponseReader::Source readFrom(HostConnection& connection) {
    return [&connection](char* bytes, std::size_t capacity, std::size_t& length, std::string& error) {
        switch (connection.readSome(bytes, capacity, length, error)) {
        case HostConnection::ReadResult::DATA:
            return HttpResponseReader::Input::DATA;
        case HostConnection::ReadResult::END:
            return HttpResponseReader::Input::END;
        case HostConnection::ReadResult::FAILED:
            break;
        }
        return HttpResponseReader::Input::FAILED;
    };
}

int clampToInt(long long length) {
    return static_cast<int>(std::min<long long>(length, INT_MAX));
}

} // namespace

HttpClient::HttpClient() : m_representation(std::make_unique<Representation>()) {}

HttpClient::~HttpClient() = default;

void HttpClient::setServer(const std::string& name, const std::string& port) {
    m_representation->server = name;
    m_representation->port = port;
}

void HttpClient::setHttpRequestContentType(const std::string& contentType) {
    m_representation->contentType = contentType;
}

HttpClientIfc::eResult HttpClient::send(SecureConnection* connection, HTTPMETHOD method, int, const Headers& headers,
                                        const std::string& target, const char* body, std::size_t bodyLength,
                                        const std::string&, const std::string&, int persistent, int) try {
    Representation& my = *m_representation;
    HostConnection* host = hostConnection(connection);
    if (host == nullptr) {
        return failed("send", "no connection");
    }
    HttpRequestText request;
    request.method = method;
    request.target = target;
    request.host = ServerAddress::hostHeader(my.server, my.port);
    request.contentType = my.contentType;
    request.bodyLength = bodyLength;
    request.persistent = persistent != 0;
    std::string error;
    std::optional<std::string> text = request.compose(headers, error);
    if (!text) {
        return failed("send", error);
    }
    if (bodyLength > 0) {
        text->append(body, bodyLength);
    }
    host->beginExchange();
    return host->write(text->data(), text->size(), error) ? SUCCESS : failed("send", error);
} catch (const std::exception& failure) {
    return failed("send", failure.what());
}

HttpClientIfc::eResult HttpClient::readResponse(SecureConnection* connection, std::string& responseData,
                                                int maximumLength, eStatusCode& statusCode, int& totalLength,
                                                Headers& headers) try {
    Representation& my = *m_representation;
    responseData.clear();
    headers.clear();
    totalLength = 0;
    HostConnection* host = hostConnection(connection);
    if (host == nullptr || maximumLength <= 0) {
        return failed("read", host == nullptr ? "no connection" : "no room for the body");
    }
    my.reader.emplace(readFrom(*host), NetworkControl::instance().limits().bodyBytes);
    std::string error;
    if (!my.reader->readHeader(error)) {
        return failed("read", error);
    }
    statusCode = static_cast<eStatusCode>(my.reader->status());
    headers = my.reader->headers();
    my.location = my.reader->header("Location");
    my.retryAfterSeconds = RetryAfter::seconds(my.reader->header("Retry-After"), std::time(nullptr));
    const eResult result = my.readPart(*host, responseData, maximumLength);
    const long long announced = my.reader->announcedLength();
    totalLength = clampToInt(announced >= 0 ? announced : static_cast<long long>(responseData.size()));
    return result;
} catch (const std::exception& failure) {
    return failed("read", failure.what());
}

HttpClientIfc::eResult HttpClient::readMore(SecureConnection* connection, std::string& chunk, int maximumLength) try {
    Representation& my = *m_representation;
    chunk.clear();
    HostConnection* host = hostConnection(connection);
    if (host == nullptr || maximumLength <= 0 || !my.reader || my.reader->isDone()) {
        return failed("read", "nothing to read");
    }
    return my.readPart(*host, chunk, maximumLength);
} catch (const std::exception& failure) {
    return failed("read", failure.what());
}

HttpClientIfc::eResult HttpClient::Representation::readPart(HostConnection& connection, std::string& part,
                                                            int maximumLength) {
    std::string error;
    if (!reader->readBody(part, static_cast<std::size_t>(maximumLength), error)) {
        return failed("read", error);
    }
    if (!reader->isDone()) {
        return MORE_DATA;
    }
    connection.endExchange(reader->isReusable());
    return SUCCESS;
}

const std::string& HttpClient::getLocation() const {
    return m_representation->location;
}

int HttpClient::getRetryAfter() const {
    return m_representation->retryAfterSeconds;
}
