#pragma once

#include "threads/ThreaderIfc.h"

#include <memory>

/// The telephone's thread layer. The destructor waits for the threads that this object made, but not for the
/// calling thread itself.
class Threader : public ThreaderIfc {
public:
    Threader();
    ~Threader() override;
    Threader(const Threader&) = delete;
    Threader& operator=(const Threader&) = delete;

    bool spawn(unsigned long& id, Runner runner, void* argument, const std::string& name, OSALThreadPriority priority,
               int stackSize) override;
    void detach(unsigned long id) override;
    void waitForThreadCompletion(unsigned long id) override;

private:
    struct Representation;
    std::unique_ptr<Representation> m_representation;
};
