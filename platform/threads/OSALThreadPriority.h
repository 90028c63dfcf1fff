#pragma once

/// Priority of a thread in the platform's numbering.
enum OSALThreadPriority : int {
    OSAL_THREAD_PRIORITY_LOW = 0,
    OSAL_THREAD_PRIORITY_NORMAL = 1,
    OSAL_THREAD_PRIORITY_HIGH = 2
};
