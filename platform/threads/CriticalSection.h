#pragma once

#include "threads/Semaphore.h"

/// Holds a semaphore for a scope, without a time limit.
class CriticalSection {
public:
    explicit CriticalSection(Semaphore& semaphore) : m_semaphore(semaphore) { m_semaphore.take(-1); }
    ~CriticalSection() { m_semaphore.give(); }
    CriticalSection(const CriticalSection&) = delete;
    CriticalSection& operator=(const CriticalSection&) = delete;

private:
    Semaphore& m_semaphore;
};
