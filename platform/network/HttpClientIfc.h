#pragma once

#include <cstddef>
#include <map>
#include <string>

class SecureConnection;

/// One HTTP/1.1 exchange over an open connection (RFC 9112), in separate steps: send, readResponse, then readMore
/// for as long as the result is MORE_DATA. One object serves one exchange, on one thread. No step throws; each is
/// bounded in time, and past the bound its result is FAILURE.
class HttpClientIfc {
public:
    enum HTTPMETHOD : int { HTTP_GET = 0, HTTP_POST = 1, HTTP_DELETE = 2, HTTP_PUT = 3 };

    /// The HTTP status code as a number (RFC 9110, section 15); 0 when there is none. Any code may occur.
    enum eStatusCode : int {
        STATUS_NONE = 0,
        STATUS_OK = 200,
        STATUS_CREATED = 201,
        STATUS_NO_CONTENT = 204,
        STATUS_MOVED_PERMANENTLY = 301,
        STATUS_FOUND = 302,
        STATUS_NOT_MODIFIED = 304,
        STATUS_TEMPORARY_REDIRECT = 307,
        STATUS_NOT_FOUND = 404,
        STATUS_TOO_MANY_REQUESTS = 429, ///< RFC 6585, section 4
    };

    enum eResult : int {
        SUCCESS = 0,
        FAILURE = 1,
        MORE_DATA = 2, ///< more of the body is to be read
    };

    using Headers = std::multimap<std::string, std::string>;

    virtual ~HttpClientIfc() = default;

    /// Name and port of the server, for the Host header.
    virtual void setServer(const std::string& name, const std::string& port) = 0;
    virtual void setHttpRequestContentType(const std::string& contentType) = 0;

    /// Sends the request. `body` need not end in a zero byte. The four last arguments belong to the platform.
    /// An empty target is a FAILURE.
    virtual eResult send(SecureConnection* connection, HTTPMETHOD method, int connectionKind, const Headers& headers,
                         const std::string& target, const char* body, std::size_t bodyLength, const std::string& user,
                         const std::string& password, int persistent, int reserved) = 0;

    /// Reads status, headers and the first part of the body, at most `maximumLength` bytes of it. Replaces
    /// `responseData` and `headers`; `totalLength` is the body's announced length, or what was read of a body
    /// without one.
    virtual eResult readResponse(SecureConnection* connection, std::string& responseData, int maximumLength,
                                 eStatusCode& statusCode, int& totalLength, Headers& headers) = 0;

    /// Reads the next part of the body into `chunk`, which it replaces.
    virtual eResult readMore(SecureConnection* connection, std::string& chunk, int maximumLength) = 0;

    /// Location header of the response (RFC 9110, section 10.2.2), empty if there is none.
    virtual const std::string& getLocation() const = 0;

    /// Retry-After header of the response in seconds (RFC 9110, section 10.2.3); -1 when there is none or it cannot
    /// be read; a date counts as the seconds until then.
    virtual int getRetryAfter() const = 0;
};
