#pragma once

#include "transport/ControlServer.h"

#include <gtest/gtest.h>

#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstring>
#include <memory>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

inline constexpr auto patience = std::chrono::seconds(20);

/// Things that happen on the server's threads, to be waited for.
class Happenings {
public:
    void add(const std::string& happening) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_all.push_back(happening);
        m_changed.notify_all();
    }
    bool waitFor(const std::string& happening) {
        std::unique_lock<std::mutex> lock(m_mutex);
        return m_changed.wait_for(lock, patience,
                                  [&] { return std::find(m_all.begin(), m_all.end(), happening) != m_all.end(); });
    }
    bool waitForCount(std::size_t count) {
        std::unique_lock<std::mutex> lock(m_mutex);
        return m_changed.wait_for(lock, patience, [&] { return m_all.size() >= count; });
    }
    std::vector<std::string> all() {
        const std::lock_guard<std::mutex> lock(m_mutex);
        return m_all;
    }

private:
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::vector<std::string> m_all;
};

class Client {
public:
    explicit Client(const std::string& path) : m_socket(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
        m_connected = ::connect(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
        const timeval limit{20, 0};
        ::setsockopt(m_socket, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
        ::setsockopt(m_socket, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
    }
    ~Client() { close(); }
    Client(const Client&) = delete;
    Client& operator=(const Client&) = delete;

    bool isConnected() const { return m_connected; }
    /// False when the server takes no more.
    bool send(const std::string& bytes) {
        std::size_t sent = 0;
        while (sent < bytes.size()) {
            const ssize_t count = ::send(m_socket, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
            if (count <= 0) {
                return false;
            }
            sent += static_cast<std::size_t>(count);
        }
        return true;
    }
    void sendNoMore() { ::shutdown(m_socket, SHUT_WR); }
    void close() {
        if (m_socket >= 0) {
            ::close(m_socket);
        }
        m_socket = -1;
    }
    /// One line without its end; "(end)" when the server has closed, "(nothing)" when nothing came in time.
    std::string readLine() {
        for (;;) {
            const std::size_t end = m_pending.find('\n');
            if (end != std::string::npos) {
                const std::string line = m_pending.substr(0, end);
                m_pending.erase(0, end + 1);
                return line;
            }
            char part[65536];
            const ssize_t count = ::recv(m_socket, part, sizeof part, 0);
            if (count < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
                return "(nothing)";
            }
            if (count <= 0) {
                return "(end)";
            }
            m_pending.append(part, static_cast<std::size_t>(count));
        }
    }

private:
    int m_socket;
    bool m_connected = false;
    std::string m_pending;
};

class Transport : public testing::Test {
protected:
    void SetUp() override {
        char name[] = "/tmp/orvane-transport-XXXXXX";
        m_folder = ::mkdtemp(name);
        m_path = m_folder + "/socket";
    }
    void TearDown() override {
        if (m_server) {
            m_server->stop();
        }
        ::unlink(m_path.c_str());
        ::rmdir(m_folder.c_str());
    }

    /// As a telephone that was killed leaves it.
    void leaveAStaleSocket() const {
        const int stale = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
        sockaddr_un address{};
        address.sun_family = AF_UNIX;
        std::memcpy(address.sun_path, m_path.c_str(), m_path.size() + 1);
        ASSERT_EQ(0, ::bind(stale, reinterpret_cast<const sockaddr*>(&address), sizeof address));
        ::close(stale);
    }

    /// A server that answers every line by "got " and the line.
    void serve(LineConnection::Limits limits = {}) {
        serve(
            [this](LineConnection& connection, const std::string& line) {
                m_lines.add(line);
                connection.send("got " + line);
            },
            limits);
    }
    void serve(LineConnection::LineHandler handler, LineConnection::Limits limits = {}) {
        m_server = std::make_unique<ControlServer>(limits);
        std::string error;
        ASSERT_EQ(ControlServer::Listening::BEGUN,
                  m_server->listen(
                      m_path, std::move(handler),
                      [this](LineConnection& connection) { m_ended.add(connection.name()); }, error))
            << error;
    }

    std::string m_folder;
    std::string m_path;
    Happenings m_lines;
    Happenings m_ended;
    std::unique_ptr<ControlServer> m_server;
};
