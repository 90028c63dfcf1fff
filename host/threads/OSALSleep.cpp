#include "threads/OSALSleep.h"

#include "threads/SleepControl.h"
#include "threads/TimeScale.h"

#include <condition_variable>
#include <mutex>

namespace {

struct Sleepers {
    std::mutex mutex;
    std::condition_variable woken;
    bool ended = false;
};

Sleepers& sleepers() {
    // Never destroyed: a thread may sleep to the very end of the process.
    static auto* const instance = new Sleepers;
    return *instance;
}

} // namespace

void OSALSleep::secSleep(int seconds) {
    if (seconds <= 0) {
        return;
    }
    Sleepers& all = sleepers();
    std::unique_lock<std::mutex> lock(all.mutex);
    all.woken.wait_for(lock, TimeScale::scaled(std::chrono::seconds(seconds)), [&all] { return all.ended; });
}

void SleepControl::endSleeps() {
    Sleepers& all = sleepers();
    const std::lock_guard<std::mutex> lock(all.mutex);
    all.ended = true;
    all.woken.notify_all();
}
