#pragma once

#include "threads/Threader.h"

/// One kind of worker thread: at most one runs at a time. The thread clears the id first, then the flag, when it
/// ends. Id and flag are plain members that other threads read without a lock.
struct WorkerThread {
    unsigned long id = 0; ///< 0 when there is none
    Threader threader;
    bool running = false;
};
