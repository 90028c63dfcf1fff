#pragma once

#include <memory>

/// A counting semaphore. A re-entrant one belongs to the thread that took it, which may take it again and gives it
/// back as often. Any thread may call both operations at any time.
class Semaphore {
public:
    Semaphore(int initialCount, int maximumCount, bool reentrant);
    ~Semaphore();
    Semaphore(const Semaphore&) = delete;
    Semaphore& operator=(const Semaphore&) = delete;

    /// Waits at most that long, for ever with -1. True when taken.
    bool take(int timeoutMilliseconds);

    /// Gives back; allowed on a thread that did not take it unless it is re-entrant. Beyond the maximum it does
    /// nothing.
    void give();

private:
    struct Representation;
    std::unique_ptr<Representation> m_representation;
};
