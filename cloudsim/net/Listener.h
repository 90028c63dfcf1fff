#pragma once

#include "net/FileDescriptor.h"

#include <cstdint>
#include <string>
#include <string_view>

namespace cloudsim {

struct Address {
    std::string host; ///< without brackets
    std::uint16_t port = 0;
};

/// Reads "HOST:PORT", an IPv6 host in brackets. Throws BadInput.
Address parseAddress(std::string_view text);
/// The inverse, with brackets where they belong.
std::string toText(const Address& address);

/// A listening TCP socket.
class Listener {
public:
    /// Port 0 takes a free one. Throws BadInput when the address cannot be had.
    explicit Listener(const Address& address);
    /// From then on connections are refused, even while somebody still waits for one.
    ~Listener();
    Listener(const Listener&) = delete;
    Listener& operator=(const Listener&) = delete;

    /// With the port that was taken.
    const Address& address() const { return m_address; }
    int descriptor() const { return m_socket.get(); }
    /// Empty when nobody waits any more. The socket does not block.
    FileDescriptor accept();

private:
    FileDescriptor m_socket;
    Address m_address;
};

} // namespace cloudsim
