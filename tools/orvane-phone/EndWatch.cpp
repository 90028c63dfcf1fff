#include "orvane-phone/EndWatch.h"

#include "orvane-phone/Output.h"
#include "usage/ExitStatus.h"

#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <sys/signalfd.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <system_error>

namespace {

constexpr auto endLimit = std::chrono::milliseconds(1600);
constexpr auto lastLineLimit = std::chrono::milliseconds(200);

/// By the system's own call: what stands before it in a library, such as the last words of a sanitizer, flushes
/// standard output, and waits there as all others do.
[[noreturn]] void leaveAtOnce(int exitStatus) {
    for (;;) {
        ::syscall(SYS_exit_group, exitStatus);
    }
}

/// A descriptor that tells of the signals to end, which the calling thread and those that it makes no longer take.
int blockedSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);
    return ::signalfd(-1, &signals, SFD_CLOEXEC | SFD_NONBLOCK);
}

} // namespace

EndWatch::EndWatch()
    : m_signals(blockedSignals()), m_wake(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)), m_thread([this] { watch(); }) {}

EndWatch::~EndWatch() {
    {
        const std::lock_guard<std::mutex> lock(m_mutex);
        m_done = true;
    }
    ::eventfd_write(m_wake, 1);
    m_thread.join();
    if (m_output != nullptr) {
        m_output->setFailureListener(nullptr);
    }
    ::close(m_wake);
    ::close(m_signals);
}

void EndWatch::enter(Stage stage, Output& output) {
    const std::lock_guard<std::mutex> lock(m_mutex);
    m_stage = stage;
    if (m_output != &output) {
        m_output = &output;
        output.setFailureListener([this] { outputFailed(); });
    }
    if (stage == Stage::COMING_DOWN && !m_limit) {
        m_limit = Clock::now() + endLimit;
        ::eventfd_write(m_wake, 1);
    } else if (stage == Stage::LAST_LINE && !m_asked) {
        // Of a run that ends by itself: a slow reader still gets all of it.
        m_limit.reset();
    }
}

void EndWatch::wait() {
    std::unique_lock<std::mutex> lock(m_mutex);
    m_changed.wait(lock, [this] { return m_asked; });
}

bool EndWatch::waitFor(std::chrono::milliseconds time) {
    std::unique_lock<std::mutex> lock(m_mutex);
    return m_changed.wait_for(lock, time, [this] { return m_asked; });
}

void EndWatch::watch() {
    pthread_setname_np(pthread_self(), "end-watch");
    for (;;) {
        pollfd waiting[] = {{m_signals, POLLIN, 0}, {m_wake, POLLIN, 0}};
        ::poll(waiting, 2, pollMilliseconds());
        eventfd_t wakes = 0;
        ::eventfd_read(m_wake, &wakes);
        signalfd_siginfo signal{};
        const bool came = ::read(m_signals, &signal, sizeof signal) == static_cast<ssize_t>(sizeof signal);

        const std::lock_guard<std::mutex> lock(m_mutex);
        if (m_done) {
            return;
        }
        if (came) {
            signalCame();
        }
        if (m_limit && Clock::now() >= *m_limit) {
            leave("orvane-phone: " + reason() + "\n");
        }
    }
}

void EndWatch::outputFailed() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    askForEnd();
    ::eventfd_write(m_wake, 1);
}

void EndWatch::signalCame() {
    if (m_stage == Stage::PREPARING) {
        leaveAtOnce(GOOD);
    }
    if (m_signalled) {
        leave(std::string());
    }
    m_signalled = true;
    askForEnd();
}

void EndWatch::askForEnd() {
    m_asked = true;
    if (!m_limit) {
        m_limit = Clock::now() + endLimit;
    }
    m_changed.notify_all();
}

std::string EndWatch::reason() const {
    switch (m_stage) {
    case Stage::PREPARING:
    case Stage::STARTING:
        return "the start does not come to its end";
    case Stage::COMING_DOWN:
        return "the service does not come down";
    case Stage::RUNNING:
    case Stage::LAST_LINE:
        break;
    }
    return "nobody takes the output";
}

/// The last lines, if they can be written: whoever reads the outputs may have stopped doing so.
void EndWatch::leave(const std::string& reason) {
    try {
        std::thread([output = m_output, reason] {
            // Not by std::cerr, which waits for standard output first.
            std::fputs(reason.c_str(), stderr);
            output->stopped();
            leaveAtOnce(FAILED);
        }).detach();
    } catch (const std::system_error&) {
        leaveAtOnce(FAILED); // no thread, no lines
    }
    std::this_thread::sleep_for(lastLineLimit);
    leaveAtOnce(FAILED);
}

int EndWatch::pollMilliseconds() {
    const std::lock_guard<std::mutex> lock(m_mutex);
    if (!m_limit) {
        return -1;
    }
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(*m_limit - Clock::now()).count();
    return static_cast<int>(std::max<long long>(left + 1, 0));
}
