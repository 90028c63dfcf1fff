#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

/// The bytes of a fuzzer, taken from the front. Behind their end everything is 0 and empty.
class FuzzInput {
public:
    FuzzInput(const std::uint8_t* data, std::size_t size) : m_data(data), m_size(size) {}

    bool atEnd() const { return m_position >= m_size; }
    /// From 0 to below `count`.
    unsigned choice(unsigned count) { return atEnd() ? 0 : m_data[m_position++] % count; }
    /// The next text up to a line break, so that an input can be read and written by people.
    std::string line() {
        const std::size_t begin = m_position;
        while (!atEnd() && m_data[m_position] != '\n') {
            ++m_position;
        }
        const std::string text(reinterpret_cast<const char*>(m_data) + begin, m_position - begin);
        m_position += atEnd() ? 0 : 1;
        return text;
    }
    std::string rest() {
        const std::string text(reinterpret_cast<const char*>(m_data) + m_position, m_size - m_position);
        m_position = m_size;
        return text;
    }

private:
    const std::uint8_t* m_data;
    std::size_t m_size;
    std::size_t m_position = 0;
};
