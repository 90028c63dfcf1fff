#include "net/WakeUp.h"

#include <sys/eventfd.h>

#include <cerrno>
#include <cstdint>
#include <system_error>

namespace cloudsim {

WakeUp::WakeUp() : m_descriptor(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    if (!m_descriptor)
        throw std::system_error(errno, std::generic_category(), "no descriptor to wake with");
}

void WakeUp::wake() {
    std::uint64_t one = 1;
    [[maybe_unused]] auto written = ::write(m_descriptor.get(), &one, sizeof one);
}

void WakeUp::clear() {
    std::uint64_t count = 0;
    [[maybe_unused]] auto taken = ::read(m_descriptor.get(), &count, sizeof count);
}

} // namespace cloudsim
