#pragma once

#include "threads/Threader.h"

class OrvaneService;

/// One kind of worker thread: at most one runs at a time. The thread clears the id first, then the flag, when it
/// ends. Id and flag are plain members that other threads read without a lock.
struct WorkerThread {
    unsigned long id = 0; ///< 0 when there is none
    Threader threader;
    bool running = false;

    /// Starts `runner(service)`; false when no thread could be made.
    template <void* (*runner)(OrvaneService*)>
    bool spawn(OrvaneService* service) {
        return threader.spawn(
            id, [](void* argument) { return runner(static_cast<OrvaneService*>(argument)); }, service, "",
            OSAL_THREAD_PRIORITY_NORMAL, 0);
    }

    void detach() { threader.detach(id); }

    /// To be called by the thread itself at its end.
    void ended() {
        id = 0;
        running = false;
    }
};
