// A service whose login takes longer than a thread that it makes.
#include "support/IdleService.h"
#include "threads/Threader.h"

#include <atomic>
#include <chrono>
#include <memory>
#include <thread>

namespace {

class SlowLoginService : public IdleService {
public:
    void init(Context&) override { spawn(m_logins, &SlowLoginService::logIn); }
    bool isRunning() override { return m_running; }

private:
    using Step = void (SlowLoginService::*)();
    struct Work {
        SlowLoginService* service;
        Step step;
    };

    void logIn() {
        Threader helpers;
        helpers.waitForThreadCompletion(spawn(helpers, &SlowLoginService::help));
        // Several times as long as the telephone takes to see that a thread has ended.
        std::this_thread::sleep_for(std::chrono::milliseconds(300));
        m_running = true;
    }
    void help() {}

    unsigned long spawn(Threader& threader, Step step) {
        unsigned long id = 0;
        threader.spawn(id, run, new Work{this, step}, "", OSAL_THREAD_PRIORITY_NORMAL, 0);
        return id;
    }
    static void* run(void* argument) {
        const std::unique_ptr<Work> work(static_cast<Work*>(argument));
        (work->service->*work->step)();
        return nullptr;
    }

    std::atomic<bool> m_running{false};
    Threader m_logins; // waits for its thread first of all
};

} // namespace

extern "C" Service* createOrvaneService() {
    return new SlowLoginService;
}
