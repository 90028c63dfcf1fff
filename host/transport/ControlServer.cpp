#include "transport/ControlServer.h"

#include "logging/HostLog.h"

#include <fcntl.h>
#include <poll.h>
#include <pthread.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <utility>

namespace {

constexpr int retryMilliseconds = 200;
constexpr int lockRetryMilliseconds = 10;
constexpr int mostLockRetries = 100;

bool makeAddress(const std::string& path, sockaddr_un& address) {
    address = sockaddr_un{};
    address.sun_family = AF_UNIX;
    if (path.empty() || path.size() >= sizeof address.sun_path) {
        return false;
    }
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    return true;
}

bool isAnswered(const sockaddr_un& address) {
    // Without blocking: a live process that does not accept has a full queue of clients, and is there all the same.
    const int probe = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (probe < 0) {
        return false;
    }
    const bool answered =
        ::connect(probe, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0 || errno == EAGAIN;
    ::close(probe);
    return answered;
}

/// Keeps telephones that begin at once from taking away each other's sockets. The lock is the folder's own, so that
/// no file is left for other users to stumble over. Whoever holds it for long is no telephone, and not every file
/// system knows locks: it is then done without.
class FolderLock {
public:
    explicit FolderLock(const std::string& path)
        : m_folder(::open(folderOf(path).c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC)) {
        for (int retry = 0; ::flock(m_folder, LOCK_EX | LOCK_NB) != 0 && retry < mostLockRetries; ++retry) {
            if (errno != EWOULDBLOCK) {
                return;
            }
            ::poll(nullptr, 0, lockRetryMilliseconds);
        }
    }
    ~FolderLock() {
        if (m_folder >= 0) {
            ::close(m_folder);
        }
    }
    FolderLock(const FolderLock&) = delete;
    FolderLock& operator=(const FolderLock&) = delete;

private:
    static std::string folderOf(const std::string& path) {
        const std::size_t slash = path.rfind('/');
        return slash == std::string::npos ? "." : path.substr(0, slash + 1);
    }

    const int m_folder;
};

} // namespace

ControlServer::~ControlServer() {
    stop();
}

std::string ControlServer::defaultPath() {
    const char* runtime = std::getenv("XDG_RUNTIME_DIR");
    return std::string(runtime != nullptr && *runtime != '\0' ? runtime : "/tmp") + "/orvane-phone.sock";
}

ControlServer::Listening ControlServer::listen(const std::string& path, LineConnection::LineHandler lineCame,
                                               LineConnection::EndHandler ended, std::string& error) {
    sockaddr_un address{};
    if (!makeAddress(path, address)) {
        error = "no path for a control socket, empty or too long: " + path;
        return Listening::UNUSABLE_PATH;
    }
    const FolderLock lock(path);
    struct stat found{};
    if (::lstat(path.c_str(), &found) == 0) {
        if (!S_ISSOCK(found.st_mode)) {
            error = "there is something else in place of the control socket " + path;
            return Listening::UNUSABLE_PATH;
        }
        if (isAnswered(address)) {
            error = "another telephone listens on " + path;
            return Listening::OCCUPIED;
        }
        ::unlink(path.c_str());
    }
    m_path = path;
    if (!makeSocket(error)) {
        return Listening::UNUSABLE_PATH;
    }
    m_lineCame = std::move(lineCame);
    m_ended = std::move(ended);
    m_thread = std::thread([this] { accept(); });
    return Listening::BEGUN;
}

bool ControlServer::makeSocket(std::string& error) {
    sockaddr_un address{};
    makeAddress(m_path, address);
    const int listener = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (listener < 0) {
        error = std::string("there can be no socket: ") + std::strerror(errno);
        return false;
    }
    // Nobody can connect before listen(), so nobody gets in before the access is limited.
    struct stat made{};
    if (::bind(listener, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 ||
        ::chmod(m_path.c_str(), S_IRUSR | S_IWUSR) != 0 || ::listen(listener, SOMAXCONN) != 0 ||
        ::lstat(m_path.c_str(), &made) != 0) {
        error = "cannot listen on " + m_path + ": " + std::strerror(errno);
        ::close(listener);
        return false;
    }
    m_socket = listener;
    m_device = made.st_dev;
    m_inode = made.st_ino;
    return true;
}

void ControlServer::removeSocket() const {
    struct stat found{};
    if (::lstat(m_path.c_str(), &found) == 0 && found.st_dev == m_device && found.st_ino == m_inode) {
        ::unlink(m_path.c_str());
    }
}

void ControlServer::stop() {
    if (m_socket < 0) {
        return;
    }
    // While it is still answered, so that no other telephone takes the path meanwhile.
    removeSocket();
    m_stopping = true;
    ::shutdown(m_socket, SHUT_RDWR);
    m_thread.join();
    ::close(m_socket);
    m_socket = -1;
    std::list<std::unique_ptr<LineConnection>> connections;
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        connections.swap(m_connections);
    }
    for (const auto& connection : connections) {
        connection->end();
    }
    connections.clear();
}

void ControlServer::accept() {
    pthread_setname_np(pthread_self(), "control");
    while (!m_stopping) {
        pollfd waiting{m_socket, POLLIN, 0};
        ::poll(&waiting, 1, -1);
        const int client = ::accept4(m_socket, nullptr, nullptr, SOCK_CLOEXEC);
        if (client >= 0) {
            welcome(client);
        } else if (errno != EAGAIN && errno != EINTR && errno != ECONNABORTED && !m_stopping) {
            // No descriptors, no memory: the client stays in the queue until there are some.
            HOST_LOG(HostLog::ERROR, "the control socket cannot take a client: %s", std::strerror(errno));
            ::poll(nullptr, 0, retryMilliseconds);
        }
    }
}

void ControlServer::welcome(int client) {
    dropEnded();
    const std::string name = "client-" + std::to_string(++m_connectionCount);
    try {
        auto connection = std::make_unique<LineConnection>(client, name, m_lineCame, m_ended, m_limits);
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_connections.push_back(std::move(connection));
    } catch (const std::exception& exception) {
        HOST_LOG(HostLog::ERROR, "no room for %s: %s", name.c_str(), exception.what());
        ::close(client);
    }
}

void ControlServer::dropEnded() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_connections.remove_if([](const std::unique_ptr<LineConnection>& connection) { return connection->hasEnded(); });
}
