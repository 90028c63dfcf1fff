#include "transport/LineConnection.h"

#include "logging/ExceptionBoundary.h"
#include "logging/HostLog.h"

#include <pthread.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <exception>

namespace {

enum class Sending { DONE, TIMEOUT, GONE };

Sending sendAll(int socket, const std::string& text) {
    std::size_t sent = 0;
    while (sent < text.size()) {
        const ssize_t count = ::send(socket, text.data() + sent, text.size() - sent, MSG_NOSIGNAL);
        if (count >= 0) {
            sent += static_cast<std::size_t>(count);
        } else if (errno != EINTR) {
            return errno == EAGAIN ? Sending::TIMEOUT : Sending::GONE;
        }
    }
    return Sending::DONE;
}

void limitSending(int socket, int milliseconds) {
    timeval limit{};
    limit.tv_sec = milliseconds / 1000;
    limit.tv_usec = milliseconds % 1000 * 1000;
    ::setsockopt(socket, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
}

void nameThread(const std::string& name) {
    pthread_setname_np(pthread_self(), name.substr(0, 15).c_str());
}

} // namespace

LineConnection::LineConnection(int socket, std::string name, LineHandler lineCame, EndHandler ended, Limits limits)
    : m_socket(socket), m_name(std::move(name)), m_lineCame(std::move(lineCame)), m_endedHandler(std::move(ended)),
      m_limits(limits) {
    limitSending(m_socket, m_limits.sendMilliseconds);
    m_writer = std::thread([this] { write(); });
    try {
        m_reader = std::thread([this] { read(); });
    } catch (const std::exception&) {
        // The destructor of an object that was never whole does not run.
        end();
        m_writer.join();
        throw;
    }
}

LineConnection::~LineConnection() {
    end();
    m_reader.join();
    m_writer.join();
    ::close(m_socket);
}

void LineConnection::shut() {
    m_shut = true;
    ::shutdown(m_socket, SHUT_RDWR);
    m_changed.notify_all();
}

void LineConnection::send(const std::string& line) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (m_shut) {
        return;
    }
    if (m_waitingBytes > 0 && m_waitingBytes + line.size() > m_limits.mostWaitingBytes) {
        HOST_LOG(HostLog::ERROR, "%s reads too slowly and is dropped", m_name.c_str());
        shut();
        return;
    }
    m_waitingBytes += line.size() + 1;
    m_waiting.push_back(line + "\n");
    m_changed.notify_all();
}

void LineConnection::end() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    shut();
}

bool LineConnection::hasEnded() const {
    const std::lock_guard<std::mutex> lock(m_mutex);
    return m_readerEnded && m_writerEnded;
}

void LineConnection::read() {
    nameThread(m_name);
    std::string pending;
    std::array<char, 65536> part{};
    bool readable = true;
    while (readable) {
        const ssize_t count = ::recv(m_socket, part.data(), part.size(), 0);
        if (count < 0 && errno == EINTR) {
            continue;
        }
        readable = count > 0;
        if (readable) {
            pending.append(part.data(), static_cast<std::size_t>(count));
            readable = takeLines(pending);
        }
    }
    if (!pending.empty()) {
        HOST_LOG(HostLog::ERROR, "%s ended within a message of %zu bytes", m_name.c_str(), pending.size());
    }
    m_endedHandler(*this);
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_draining = true;
    m_readerEnded = true;
    m_changed.notify_all();
}

bool LineConnection::takeLines(std::string& pending) {
    std::size_t begin = 0;
    for (std::size_t end = pending.find('\n'); end != std::string::npos; end = pending.find('\n', begin)) {
        take(pending.substr(begin, end - begin));
        begin = end + 1;
    }
    pending.erase(0, begin);
    if (pending.size() <= m_limits.longestLine) {
        return true;
    }
    HOST_LOG(HostLog::ERROR, "%s sent a message beyond %zu bytes and is dropped", m_name.c_str(), m_limits.longestLine);
    send("{\"error\":\"a message may have " + std::to_string(m_limits.longestLine) + " bytes\"}");
    pending.clear();
    return false;
}

void LineConnection::take(const std::string& line) {
    if (line.empty()) {
        return;
    }
    containExceptions([&] { m_lineCame(*this, line); },
                      [this](const char* colon, const char* text) {
                          HOST_LOG(HostLog::ERROR, "%s: a message ended by an exception%s%s", m_name.c_str(), colon,
                                   text);
                      });
}

void LineConnection::write() {
    nameThread(m_name);
    writeLines();
    const std::lock_guard<std::mutex> lock(m_mutex);
    shut();
    m_writerEnded = true;
}

void LineConnection::writeLines() {
    std::unique_lock<std::mutex> lock(m_mutex);
    for (;;) {
        m_changed.wait(lock, [this] { return m_shut || m_draining || !m_waiting.empty(); });
        if (m_shut || m_waiting.empty()) {
            return;
        }
        const std::string line = std::move(m_waiting.front());
        m_waiting.pop_front();
        lock.unlock();
        const Sending sending = sendAll(m_socket, line);
        lock.lock();
        m_waitingBytes -= line.size();
        if (sending == Sending::TIMEOUT) {
            HOST_LOG(HostLog::ERROR, "%s takes nothing and is dropped", m_name.c_str());
        }
        if (sending != Sending::DONE) {
            return;
        }
    }
}
