#pragma once

#include "net/Stream.h"

namespace cloudsim {

/// TCP as it is. The socket belongs to the caller.
class PlainStream final : public Stream {
public:
    explicit PlainStream(int socket) : m_socket(socket) {}

    Outcome readSome(char* buffer, std::size_t capacity, std::size_t& count) override;
    Outcome writeSome(const char* bytes, std::size_t size, std::size_t& count) override;
    short wantedEvents() const override { return m_wanted; }

private:
    Outcome outcome(long result, short event, std::size_t& count);

    int m_socket;
    short m_wanted = 0;
};

} // namespace cloudsim
