#include "net/PlainStream.h"

#include <poll.h>
#include <sys/socket.h>

#include <cerrno>

namespace cloudsim {

Stream::Outcome PlainStream::outcome(long result, short event, std::size_t& count) {
    count = result > 0 ? static_cast<std::size_t>(result) : 0;
    if (result > 0)
        return Outcome::PROGRESS;
    if (result < 0 && (errno == EAGAIN || errno == EWOULDBLOCK || errno == EINTR)) {
        m_wanted = event;
        return Outcome::WOULD_BLOCK;
    }
    return Outcome::ENDED;
}

Stream::Outcome PlainStream::readSome(char* buffer, std::size_t capacity, std::size_t& count) {
    return outcome(::recv(m_socket, buffer, capacity, 0), POLLIN, count);
}

Stream::Outcome PlainStream::writeSome(const char* bytes, std::size_t size, std::size_t& count) {
    return outcome(::send(m_socket, bytes, size, MSG_NOSIGNAL), POLLOUT, count);
}

} // namespace cloudsim
