#pragma once

#include <cstddef>
#include <string>

namespace cloudsim {

/// A byte stream over a socket that does not block.
class Stream {
public:
    enum class Outcome {
        PROGRESS,
        WOULD_BLOCK, ///< wait for `wantedEvents`
        ENDED
    };

    virtual ~Stream() = default;

    /// Finishes what has to be said before the first byte; repeated until it makes progress.
    virtual Outcome handshake() { return Outcome::PROGRESS; }
    virtual Outcome readSome(char* buffer, std::size_t capacity, std::size_t& count) = 0;
    virtual Outcome writeSome(const char* bytes, std::size_t size, std::size_t& count) = 0;
    /// Tells the peer that nothing more comes.
    virtual void sayGoodbye() {}
    /// The events for poll() behind the last WOULD_BLOCK.
    virtual short wantedEvents() const = 0;
    /// Bytes that were received and not yet read lie in the stream itself, out of poll()'s sight.
    virtual bool hasBufferedInput() const { return false; }
    /// The common name in the peer's certificate; empty without one.
    virtual std::string peerName() const { return {}; }
};

} // namespace cloudsim
