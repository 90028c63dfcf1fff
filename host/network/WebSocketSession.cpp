#include "network/WebSocketSession.h"

#include "logging/HostLog.h"
#include "network/FreezableSocket.h"
#include "network/NetworkControl.h"
#include "network/ServerAddress.h"
#include "network/TcpConnector.h"
#include "network/TlsContext.h"
#include "network/TlsContextCache.h"
#include "network/WebSocketKeepAlive.h"

#include <boost/asio/post.hpp>
#include <boost/beast/core/buffers_to_string.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http/message.hpp>
#include <boost/beast/websocket/stream.hpp>

#include <algorithm>
#include <atomic>
#include <deque>
#include <optional>
#include <utility>

namespace asio = boost::asio;
namespace websocket = boost::beast::websocket;
using boost::system::error_code;
using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

namespace {

enum LocalCode : int { NO_STATUS = 1005, ABNORMAL = 1006 };

NetworkControl& control() {
    return NetworkControl::instance();
}

bool hasControlCharacter(const std::string& text) {
    return std::any_of(text.begin(), text.end(), [](unsigned char letter) { return letter < 0x20 || letter == 0x7f; });
}

/// How a lost connection looks from here (RFC 6455, section 7.4).
int localCodeOf(const error_code& failure) {
    if (failure == websocket::error::message_too_big) {
        return websocket::close_code::too_big;
    }
    if (failure == websocket::error::bad_frame_payload) {
        return websocket::close_code::bad_payload;
    }
    if (failure == websocket::condition::protocol_violation) {
        return websocket::close_code::protocol_error;
    }
    return ABNORMAL;
}

class Session final : public WebSocketSession, public std::enable_shared_from_this<Session> {
public:
    Session(const std::shared_ptr<asio::io_context>& context, const std::string& url, Reporter reporter)
        : m_context(*context), m_url(url), m_reporter(std::move(reporter)), m_connector(context),
          m_limitTimer(*context),
          m_keepAlive(
              *context, [this] { sendPing(); }, [this] { report([](WebSocketAppIfc& app) { app.onPongTimeout(); }); }) {
    }

    void begin() override;
    void close() override;
    void interfaceChanged() override;
    void send(const std::string& message) override;

private:
    using Stream = websocket::stream<FreezableTlsStream>;
    enum class State {
        NEW,
        CONNECTING, ///< from the name look-up to the end of the opening handshake
        OPEN,
        CLOSING, ///< one side has sent its close frame, or is about to
        ENDED
    };

    // Establishing
    bool prepare(std::string& error);
    void connect();
    void handshakeTls();
    void handshakeWebSocket();
    void onEstablished();
    void fail(int code, const std::string& text);
    void armLimit(Clock::time_point deadline);
    void onLimit();

    // Traffic
    void readNext();
    void onRead(const error_code& failed);
    void onControlFrame(websocket::frame_type kind);
    void writeNext();
    void sendPing();

    // End
    void startClosing();
    void closeInOrder();
    void end();
    void report(Report report);

    bool isFrozen() const { return !control().isInterfaceUp(); }
    FreezableSocket& socket() { return m_stream->next_layer().next_layer(); }
    asio::io_context& m_context;
    const std::string m_url;
    const Reporter m_reporter;

    State m_state = State::NEW;
    ServerAddress m_server;
    std::optional<asio::ssl::context> m_tls;
    std::optional<Stream> m_stream;
    websocket::response_type m_response;

    TcpConnector m_connector;
    asio::steady_timer m_limitTimer;
    bool m_beginHeld = false;   ///< connecting waits for the interface
    bool m_handshaking = false; ///< the TCP connection stands
    bool m_limitHit = false;

    boost::beast::flat_buffer m_input;
    std::deque<std::string> m_output;
    std::atomic<std::size_t> m_waitingFrames{0};
    bool m_writing = false;
    bool m_closeAfterWriting = false;
    bool m_closeHeld = false; ///< closing waits for the interface

    WebSocketKeepAlive m_keepAlive;
    bool m_pingInProgress = false;

    bool m_silent = false;            ///< the owner wants to hear nothing more
    std::deque<Report> m_heldReports; ///< news that wait for the interface
};

// ---- Establishing

bool Session::prepare(std::string& error) {
    const std::optional<ServerAddress> server = ServerAddress::parse(m_url, "wss", error);
    if (!server) {
        return false;
    }
    m_server = *server;
    if (hasControlCharacter(m_server.path)) {
        error = "control character in the URL";
        return false;
    }
    if (m_server.path.empty() || m_server.path.front() != '/') {
        m_server.path.insert(0, "/");
    }
    TlsContext::Pointer context =
        control().tlsContexts().get(control().certificates(), CertificateMgmt::ORVANE_SERVICE_CLIENT, error);
    if (!context) {
        return false;
    }
    m_tls.emplace(context.release());
    m_stream.emplace(m_context, *m_tls);
    m_stream->read_message_max(maximumMessageBytes);
    m_stream->auto_fragment(false);
    m_stream->text(true);
    m_stream->control_callback([this](websocket::frame_type kind, boost::beast::string_view) { onControlFrame(kind); });
    if (!TlsContext::expectServer(m_stream->next_layer().native_handle(), m_server)) {
        error = "the server's name cannot be verified";
        return false;
    }
    return true;
}

void Session::begin() {
    if (m_state != State::NEW) {
        return;
    }
    m_state = State::CONNECTING;
    std::string error;
    if (!prepare(error)) {
        fail(0, error);
    } else if (isFrozen()) {
        m_beginHeld = true;
    } else {
        connect();
    }
}

void Session::connect() {
    m_connector.start(m_server, socket().lowest_layer(), weak_from_this(), [this](const std::string& error) {
        if (error.empty()) {
            handshakeTls();
        } else {
            fail(0, error);
        }
    });
}

void Session::handshakeTls() {
    m_handshaking = true;
    armLimit(m_connector.deadline());
    m_stream->next_layer().async_handshake(
        asio::ssl::stream_base::client, [self = shared_from_this()](const error_code& failed) {
            if (self->m_state != State::CONNECTING) {
                return;
            }
            if (failed) {
                self->fail(failed.value(), TlsContext::failureText(self->m_stream->next_layer().native_handle(),
                                                                   self->m_limitHit ? "time limit" : failed.message()));
            } else {
                self->handshakeWebSocket();
            }
        });
}

void Session::handshakeWebSocket() {
    m_stream->async_handshake(m_response, ServerAddress::hostHeader(m_server.host, m_server.port), m_server.path,
                              [self = shared_from_this()](const error_code& failed) {
                                  if (self->m_state != State::CONNECTING) {
                                      return;
                                  }
                                  if (failed == websocket::error::upgrade_declined) {
                                      const int status = static_cast<int>(self->m_response.result_int());
                                      self->fail(status, "HTTP status " + std::to_string(status));
                                  } else if (failed) {
                                      self->fail(failed.value(), self->m_limitHit ? "time limit" : failed.message());
                                  } else {
                                      self->onEstablished();
                                  }
                              });
}

void Session::onEstablished() {
    m_state = State::OPEN;
    m_limitTimer.cancel();
    report([](WebSocketAppIfc& app) { app.onOpen(0); });
    if (m_state != State::OPEN) {
        return;
    }
    readNext();
    writeNext();
    m_keepAlive.start(weak_from_this());
}

void Session::fail(int code, const std::string& text) {
    HOST_LOG(HostLog::WARNING, "WebSocket to %s refused: %s", m_server.host.empty() ? "?" : m_server.text().c_str(),
             text.c_str());
    report([code, text](WebSocketAppIfc& app) { app.onError(code, text); });
    report([text](WebSocketAppIfc& app) { app.onClose(0, ABNORMAL, text); });
    end();
}

void Session::armLimit(Clock::time_point deadline) {
    m_limitHit = false;
    m_limitTimer.expires_at(deadline);
    m_limitTimer.async_wait([self = shared_from_this()](const error_code& cancelled) {
        if (!cancelled && self->m_limitTimer.expiry() <= Clock::now()) {
            self->onLimit();
        }
    });
}

void Session::onLimit() {
    if (isFrozen()) {
        return; // a lost interface uses up no time: the limit begins anew when it is back
    }
    if (m_state == State::CLOSING) {
        end();
    }
    if (m_state != State::CONNECTING) {
        return;
    }
    m_limitHit = true;
    error_code ignored;
    socket().lowest_layer().close(ignored);
}

// ---- Traffic

void Session::readNext() {
    m_stream->async_read(m_input,
                         [self = shared_from_this()](const error_code& failed, std::size_t) { self->onRead(failed); });
}

void Session::onRead(const error_code& failed) {
    if (failed) {
        if (m_state == State::OPEN) {
            const int localCode = localCodeOf(failed);
            HOST_LOG(HostLog::WARNING, "WebSocket to %s lost: %s", m_server.text().c_str(), failed.message().c_str());
            report([localCode, text = failed.message()](WebSocketAppIfc& app) { app.onClose(0, localCode, text); });
            end();
        } else if (!m_closeHeld && !m_closeAfterWriting) {
            end();
        }
        return;
    }
    const std::string message = boost::beast::buffers_to_string(m_input.data());
    m_input.consume(m_input.size());
    if (m_stream->got_text()) {
        report([message](WebSocketAppIfc& app) { app.onMessage(message); });
    } else {
        HOST_LOG(HostLog::WARNING, "WebSocket: binary message of %zu bytes dropped", message.size());
    }
    if (m_state == State::OPEN) {
        readNext();
    }
}

void Session::onControlFrame(websocket::frame_type kind) {
    if (m_state != State::OPEN) {
        return;
    }
    if (kind == websocket::frame_type::pong) {
        m_keepAlive.pongArrived();
        report([](WebSocketAppIfc& app) { app.onPong(); });
    } else if (kind == websocket::frame_type::close) {
        const int code = m_stream->reason().code;
        const std::string reason(m_stream->reason().reason.c_str(), m_stream->reason().reason.size());
        m_state = State::CLOSING;
        m_keepAlive.stop();
        armLimit(Clock::now() + milliseconds(control().limits().closeMilliseconds));
        // Posted, so that the answer to the peer does not wait for the callback.
        asio::post(m_context, [self = shared_from_this(), code, reason] {
            self->report([code, reason](WebSocketAppIfc& app) {
                app.onClose(code, code == websocket::close_code::none ? NO_STATUS : code, reason);
            });
        });
    }
}

void Session::send(const std::string& message) {
    if (m_waitingFrames.fetch_add(1) >= maximumWaitingFrames) {
        --m_waitingFrames;
        HOST_LOG(HostLog::WARNING, "WebSocket: frame of %zu bytes dropped, %zu are waiting", message.size(),
                 maximumWaitingFrames);
        return;
    }
    asio::post(m_context, [self = shared_from_this(), message] {
        if (self->m_state == State::CLOSING || self->m_state == State::ENDED) {
            --self->m_waitingFrames;
            HOST_LOG(HostLog::WARNING, "WebSocket: frame of %zu bytes dropped, the connection has ended",
                     message.size());
            return;
        }
        self->m_output.push_back(message);
        self->writeNext();
    });
}

void Session::writeNext() {
    const bool mayWrite = m_state == State::OPEN || (m_state == State::CLOSING && m_closeAfterWriting);
    if (!mayWrite || m_writing || m_output.empty()) {
        return;
    }
    m_writing = true;
    m_stream->async_write(asio::buffer(m_output.front()),
                          [self = shared_from_this()](const error_code& failed, std::size_t) {
                              self->m_writing = false;
                              self->m_output.pop_front();
                              --self->m_waitingFrames;
                              if (failed) {
                                  self->socket().close(); // the read in progress ends and reports
                              } else {
                                  self->writeNext();
                              }
                              if (self->m_closeAfterWriting && self->m_state == State::CLOSING && !self->m_writing) {
                                  self->closeInOrder();
                              }
                          });
}

void Session::sendPing() {
    if (m_pingInProgress) {
        return; // the former one is stuck in a full connection
    }
    m_pingInProgress = true;
    m_stream->async_ping({}, [self = shared_from_this()](const error_code&) { self->m_pingInProgress = false; });
}

// ---- End and interface

void Session::close() {
    m_silent = true;
    m_heldReports.clear();
    m_keepAlive.stop();
    if (m_state == State::ENDED || m_state == State::CLOSING) {
        return;
    }
    m_closeAfterWriting = m_state == State::OPEN;
    m_state = State::CLOSING;
    m_connector.stop();
    m_limitTimer.cancel();
    if (isFrozen()) {
        m_closeHeld = true; // the peer must not see anything of a telephone without an interface
    } else {
        startClosing();
    }
}

void Session::startClosing() {
    if (!m_closeAfterWriting) {
        end(); // there is nothing yet that could be closed in order
        return;
    }
    armLimit(Clock::now() + milliseconds(control().limits().closeMilliseconds));
    if (!m_writing) {
        closeInOrder();
    }
}

void Session::closeInOrder() {
    m_closeAfterWriting = false;
    m_stream->async_close(websocket::close_code::normal,
                          [self = shared_from_this()](const error_code&) { self->end(); });
}

void Session::interfaceChanged() {
    if (isFrozen()) {
        return;
    }
    while (!m_heldReports.empty() && !isFrozen()) {
        const Report next = std::move(m_heldReports.front());
        m_heldReports.pop_front();
        m_reporter(next);
    }
    if (m_stream) {
        socket().interfaceChanged();
    }
    if (std::exchange(m_closeHeld, false)) {
        startClosing();
    } else if (m_state == State::CONNECTING && std::exchange(m_beginHeld, false)) {
        connect();
    } else if (m_state == State::CONNECTING) {
        m_connector.interfaceUp();
        if (m_handshaking) {
            armLimit(m_connector.deadline());
        }
    } else if (m_state == State::CLOSING) {
        armLimit(Clock::now() + milliseconds(control().limits().closeMilliseconds));
    } else if (m_state == State::OPEN) {
        m_keepAlive.interfaceUp();
    }
}

void Session::end() {
    m_state = State::ENDED;
    m_connector.stop();
    m_limitTimer.cancel();
    m_keepAlive.stop();
    if (m_stream) {
        socket().close();
    }
    // The frame that is being written goes when its write has ended.
    while (m_output.size() > (m_writing ? 1U : 0U)) {
        m_output.pop_back();
        --m_waitingFrames;
    }
}

void Session::report(Report report) {
    if (m_silent) {
        return;
    }
    if (isFrozen() || !m_heldReports.empty()) {
        m_heldReports.push_back(std::move(report));
    } else {
        m_reporter(report);
    }
}

} // namespace

std::shared_ptr<WebSocketSession> WebSocketSession::make(const std::shared_ptr<asio::io_context>& context,
                                                         const std::string& url, Reporter reporter) {
    return std::make_shared<Session>(context, url, std::move(reporter));
}
