#include "fuzz/FuzzTelephone.h"

#include <cstdio>
#include <cstdlib>

namespace {

constexpr std::size_t mostRequests = 200; ///< of one action; a page that names the next can go on without end
constexpr std::size_t mostLines = 20000;

bool contains(const std::string& text, const char* part) {
    return text.find(part) != std::string::npos;
}

} // namespace

FuzzTelephone::FuzzTelephone() {
    testing::GTEST_FLAG(break_on_failure) = true;
    platform.log.divertedTo = [this](const RecordedLog::Line&) {
        if (++m_lines > mostLines) {
            throw EndlessLoop("no end");
        }
    };
    platform.network.answersUnexpected = [this](const ScriptedNetwork::Request& request, Exchange& exchange) {
        answer(request, exchange);
    };
    platform.locks.allowAcrossRequests("m_dndSem");
    platform.locks.allowLeftTaken("m_phonebookSyncTokenSem");
    withEverything();
}

FuzzTelephone::~FuzzTelephone() {
    settle();
    service.reset();
}

void FuzzTelephone::answer(const ScriptedNetwork::Request& request, Exchange& exchange) {
    if (++m_requests > mostRequests) {
        exchange.answers(404);
        return;
    }
    if (request.method == HttpClientIfc::HTTP_DELETE && contains(request.target, "/call-log")) {
        exchange.answers(204);
    } else {
        exchange.answers(200, CloudAnswers::answerTo(request.target));
    }
    if (tampering) {
        tampering(request, exchange);
    }
    const std::size_t host = exchange.location.rfind("//");
    m_redirectedToNowhere |= host != std::string::npos && exchange.location.find('/', host + 2) == std::string::npos;
}

void FuzzTelephone::drive(const std::function<void()>& action) {
    m_requests = 0;
    m_lines = 0;
    m_redirectedToNowhere = false;
    const auto hasNetwork = [this] {
        return platform.store.get(PldsTags::INTERFACE_STATUS) == "up" &&
               platform.store.get(PldsTags::SERVER_TYPE) == "7";
    };
    try {
        action();
    } catch (const WouldBlockForEver& block) {
        if (block.semaphore != "m_phonebookSyncTokenSem") {
            std::fprintf(stderr, "%s\n", block.what());
            std::abort();
        }
    } catch (const EndlessLoop&) {
        if (hasNetwork()) {
            std::fprintf(stderr, "a loop without end\n");
            std::abort();
        }
    } catch (const std::out_of_range& exception) {
        // A Location without a path, which the platform's thread boundary catches.
        if (!m_redirectedToNowhere) {
            std::fprintf(stderr, "%s\n", exception.what());
            std::abort();
        }
    }
    platform.locks.checkNothingHeld();
}

void FuzzTelephone::settle() {
    for (int round = 0; platform.threads.pendingCount() > 0 && round < 20; ++round) {
        drive([this] { platform.threads.runNext(); });
    }
    drive([this] { platform.context.deliverDue(); });
}

void FuzzTelephone::logIn() {
    drive([this] { initialise(); });
    settle();
}

void FuzzTelephone::openSession() {
    logIn();
    drive([this] { service->onOpen(0); });
    drive([this] { service->onMessage(connectionDetails(Details())); });
}

void FuzzTelephone::subscribe() {
    openSession();
    if (platform.webSocket.frames.empty()) {
        return; // the login did not come that far
    }
    const std::string request = platform.webSocket.frames.back();
    const std::string granted =
        subscription("sub-1", "2026-01-01T00:00:00Z", "Active", 1800, requestedFilters(request));
    drive([&] { service->onMessage(reply(TestJson::messageId(request), granted)); });
}
