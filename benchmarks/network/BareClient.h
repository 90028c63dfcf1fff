#pragma once

#include <string>

struct ssl_ctx_st;
struct ssl_st;

/// The floor under the service's network: the same exchanges by blocking calls of OpenSSL, and nothing besides.
class BareClient {
public:
    BareClient(int port, const std::string& authorities);
    ~BareClient();
    BareClient(const BareClient&) = delete;
    BareClient& operator=(const BareClient&) = delete;

    /// Body of the answer; the connection stays open.
    std::string request(const std::string& method, const std::string& target);
    /// From here on the connection is a WebSocket.
    void openWebSocket(const std::string& target);
    std::string readFrame();
    void sendFrame(const std::string& text);

private:
    ssl_ctx_st* m_context;
    ssl_st* m_tls;
    int m_socket;
    std::string m_buffer;
};
