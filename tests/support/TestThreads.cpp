#include "TestThreads.h"

#include "TestPlatform.h"
#include "threads/OSALSleep.h"
#include "threads/Threader.h"

#include <algorithm>
#include <new>

void TestThreads::runNext() {
    if (!m_pending.empty()) {
        run(m_pending.begin()->first);
    }
}

void TestThreads::runAll() {
    while (!m_pending.empty()) {
        runNext();
    }
}

void TestThreads::run(unsigned long id) {
    const Job job = m_pending.at(id);
    m_pending.erase(id);
    m_running.push_back(id);
    try {
        job.runner(job.argument);
    } catch (...) {
        m_running.pop_back();
        throw;
    }
    m_running.pop_back();
}

unsigned long TestThreads::spawn(Job job) {
    job.id = ++m_lastId;
    TestPlatform::current().steps.add("spawn ", std::to_string(job.id) + " " + job.name);
    spawned.push_back(job);
    m_pending.emplace(job.id, job);
    return job.id;
}

void TestThreads::detach(unsigned long id) {
    TestPlatform::current().steps.add("detach ", std::to_string(id));
    for (Job& job : spawned) {
        job.detached = job.detached || job.id == id;
    }
}

void TestThreads::waitFor(unsigned long id, const void* threader) {
    TestPlatform::current().steps.add("wait for ", std::to_string(id));
    waitedFor.push_back(id);
    const auto pending = m_pending.find(id);
    if (pending != m_pending.end()) {
        if (pending->second.threader == threader) {
            run(id);
        }
    } else if (std::find(m_running.begin(), m_running.end(), id) != m_running.end()) {
        waitedForItself.push_back(id);
    }
}

void TestThreads::waitForAllOf(const void* threader) {
    std::vector<unsigned long> ids;
    for (const auto& [id, job] : m_pending) {
        if (job.threader == threader) {
            ids.push_back(id);
        }
    }
    for (const unsigned long id : ids) {
        run(id);
    }
}

struct Threader::Representation {};

Threader::Threader() : m_representation(std::make_unique<Representation>()) {
    int& left = TestPlatform::current().threads.threadersLeft;
    if (left == 0) {
        throw std::bad_alloc();
    }
    left -= left > 0 ? 1 : 0;
}

Threader::~Threader() {
    TestPlatform::current().steps.add("threader ends");
    TestPlatform::current().threads.waitForAllOf(this);
}

bool Threader::spawn(unsigned long& id, Runner runner, void* argument, const std::string& name,
                     OSALThreadPriority priority, int stackSize) {
    TestThreads& threads = TestPlatform::current().threads;
    if (threads.refuse) {
        // A platform may leave anything here when it fails.
        id = 999;
        return false;
    }
    // Stored before the body runs: the thread clears it.
    id = threads.spawn({0, runner, argument, name, priority, stackSize, this});
    if (threads.runAtSpawn) {
        threads.runAll();
    }
    return true;
}

void Threader::detach(unsigned long id) {
    TestPlatform::current().threads.detach(id);
}

void Threader::waitForThreadCompletion(unsigned long id) {
    TestPlatform::current().threads.waitFor(id, this);
}

void OSALSleep::secSleep(int seconds) {
    TestPlatform& platform = TestPlatform::current();
    platform.locks.checkSleep();
    platform.steps.add("sleep ", std::to_string(seconds));
    platform.threads.sleepsSeconds.push_back(seconds);
    platform.context.advanceWithoutExpiries(seconds * 1000LL);
    if (platform.threads.duringSleep) {
        const LockDiscipline::OtherThread meanwhile(platform.locks);
        platform.threads.duringSleep();
    }
}
