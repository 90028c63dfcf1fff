#include "transport/LineConnection.h"

#include "logging/Logging.h"

#include <pthread.h>
#include <sys/socket.h>
#include <unistd.h>

#include <array>
#include <exception>

namespace {

constexpr const char* logTag = "Orvane Host";
constexpr int logLevelError = 2;

bool sendAll(int socket, const std::string& text) {
    std::size_t sent = 0;
    while (sent < text.size()) {
        const ssize_t count = ::send(socket, text.data() + sent, text.size() - sent, MSG_NOSIGNAL);
        if (count <= 0) {
            return false;
        }
        sent += static_cast<std::size_t>(count);
    }
    return true;
}

} // namespace

LineConnection::LineConnection(int socket, std::string name, LineHandler lineCame, EndHandler ended)
    : m_socket(socket), m_name(std::move(name)), m_lineCame(std::move(lineCame)), m_endedHandler(std::move(ended)),
      m_writer([this] { write(); }), m_reader([this] { read(); }) {}

LineConnection::~LineConnection() {
    end();
    m_reader.join();
    m_writer.join();
    ::close(m_socket);
}

void LineConnection::send(const std::string& line) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_closing) {
        return;
    }
    if (m_waitingBytes + line.size() > mostWaitingBytes) {
        logAppLine(logTag, __FILE__, logLevelError, __LINE__, "%s reads too slowly and is dropped", m_name.c_str());
        m_closing = true;
        ::shutdown(m_socket, SHUT_RDWR);
    } else {
        m_waitingBytes += line.size() + 1;
        m_waiting.push_back(line + "\n");
    }
    m_changed.notify_all();
}

void LineConnection::end() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_closing = true;
    ::shutdown(m_socket, SHUT_RDWR);
    m_changed.notify_all();
}

bool LineConnection::hasEnded() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_ended;
}

void LineConnection::read() {
    pthread_setname_np(pthread_self(), m_name.substr(0, 15).c_str());
    std::string pending;
    std::array<char, 65536> part{};
    for (;;) {
        const ssize_t count = ::recv(m_socket, part.data(), part.size(), 0);
        if (count <= 0) {
            break;
        }
        pending.append(part.data(), static_cast<std::size_t>(count));
        if (!takeLines(pending)) {
            break;
        }
    }
    if (!pending.empty()) {
        logAppLine(logTag, __FILE__, logLevelError, __LINE__, "%s ended within a message of %zu bytes", m_name.c_str(),
                   pending.size());
    }
    end();
    m_endedHandler(*this);
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_ended = true;
}

bool LineConnection::takeLines(std::string& pending) {
    std::size_t begin = 0;
    for (std::size_t end = pending.find('\n'); end != std::string::npos; end = pending.find('\n', begin)) {
        const std::string line = pending.substr(begin, end - begin);
        begin = end + 1;
        try {
            if (!line.empty()) {
                m_lineCame(*this, line);
            }
        } catch (const std::exception& exception) {
            logAppLine(logTag, __FILE__, logLevelError, __LINE__, "%s: a message ended by an exception: %s",
                       m_name.c_str(), exception.what());
        }
    }
    pending.erase(0, begin);
    if (pending.size() > longestLine) {
        logAppLine(logTag, __FILE__, logLevelError, __LINE__, "%s sent a message beyond %zu bytes and is dropped",
                   m_name.c_str(), longestLine);
        pending.clear();
        return false;
    }
    return true;
}

void LineConnection::write() {
    pthread_setname_np(pthread_self(), m_name.substr(0, 15).c_str());
    std::unique_lock<std::mutex> lock(m_mutex);
    for (;;) {
        m_changed.wait(lock, [this] { return m_closing || !m_waiting.empty(); });
        if (m_closing) {
            return;
        }
        const std::string line = std::move(m_waiting.front());
        m_waiting.pop_front();
        lock.unlock();
        const bool sent = sendAll(m_socket, line);
        lock.lock();
        m_waitingBytes -= line.size();
        if (!sent) {
            m_closing = true;
            ::shutdown(m_socket, SHUT_RDWR);
        }
    }
}
