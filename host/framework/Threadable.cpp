#include "framework/Threadable.h"

#include "threads/OSALThreadPriority.h"

Threadable::~Threadable() = default;

int Threadable::getThreadPriorityForPlatform() const {
    return OSAL_THREAD_PRIORITY_NORMAL;
}

int Threadable::type() const {
    return 0;
}
