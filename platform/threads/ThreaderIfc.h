#pragma once

#include "threads/OSALThreadPriority.h"

#include <string>

/// Makes threads. Any thread may call it. Thread ids are never 0 and never used again.
class ThreaderIfc {
public:
    using Runner = void* (*)(void* argument);

    virtual ~ThreaderIfc() = default;

    /// Starts a thread that runs `runner(argument)`. `id` is stored before the runner begins, so the runner may
    /// clear it. False, with `id` left alone, when no thread could be made. `name` is for the platform's own lists;
    /// with an empty one the platform makes up a name. `stackSize` is in the platform's own unit; 0 is its default.
    virtual bool spawn(unsigned long& id, Runner runner, void* argument, const std::string& name,
                       OSALThreadPriority priority, int stackSize) = 0;

    /// Nobody will ask for the thread's result. The thread may still be waited for.
    virtual void detach(unsigned long id) = 0;

    /// Returns when the thread has ended; at once for 0, an unknown id, or the calling thread itself, which is
    /// logged.
    virtual void waitForThreadCompletion(unsigned long id) = 0;
};
