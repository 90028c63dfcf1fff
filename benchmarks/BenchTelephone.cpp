#include "BenchTelephone.h"

#include "Bodies.h"

#include <algorithm>
#include <stdexcept>

BenchTelephone::BenchTelephone() {
    platform.log.level = 2;
    withSharedLines();
    subscribeAll();
    service->subscribe(&m_observer);
}

BenchTelephone::~BenchTelephone() {
    service.reset();
}

std::size_t BenchTelephone::takeCallLog(std::string& body) {
    const std::size_t before = m_observer.records;
    std::vector<std::string> records;
    bool fullSync = false;
    service->handleCallLogResponse(HttpClientIfc::STATUS_OK, body, records, fullSync);
    service->publishCallLog(records, fullSync);
    return m_observer.records - before;
}

std::size_t BenchTelephone::takePhonebookPage(std::string& body) {
    const std::size_t before = m_observer.records;
    std::vector<std::string> records;
    int nextPageId = 0;
    bool publish = false;
    service->handlePhonebookResponse(HttpClientIfc::STATUS_OK, body, nextPageId, records, publish);
    if (publish) {
        service->fireOrvaneIncrementalSyncEvent(records, OrvaneServiceTypes::DATA_PHONEBOOK);
    }
    return m_observer.records - before;
}

void BenchTelephone::takeFrame(const std::string& frame) {
    service->onMessage(frame);
}

void BenchTelephone::requireTaken(const std::string& frame) {
    platform.log.level = 6;
    clearRecords();
    takeFrame(frame);
    // A service that was built without log calls has nothing to say either way.
    const bool dispatched = platform.log.lines().empty() ||
                            (platform.log.hasBeginning(6, "onMessage()") && !platform.log.contains("unsupported"));
    clearRecords();
    platform.log.level = 2;
    if (!dispatched) {
        throw std::runtime_error("the presence frame was not taken");
    }
}

void BenchTelephone::loadLines(int count) {
    std::vector<CloudAnswers::GrantedLine> lines;
    for (int line = 0; line < count; ++line) {
        lines.push_back({std::to_string(62264496 + line), "Front desk " + std::to_string(line)});
    }
    platform.network.answersUnexpected = [&lines](const ScriptedNetwork::Request& request, Exchange& exchange) {
        const bool grants = request.target.find("/grant") != std::string::npos;
        exchange.answers(200, grants ? CloudAnswers::grants(lines) : CloudAnswers::callLog("BBsynctoken", {}));
    };
    service->devicesChanged();
    for (const CloudAnswers::GrantedLine& line : lines) {
        service->overviewChangedNotification("sip:" + line.id + "@provider.example", line.name, true, 1,
                                             ELineVisualAlert());
    }
    platform.network.answersUnexpected = nullptr;
    if (service->getBcaLineListSize() != lines.size()) {
        throw std::runtime_error("the shared lines were not taken");
    }
}

void BenchTelephone::forgetRecords() {
    platform.store.writes = {};
    platform.store.reads = {};
    platform.network.requests = {};
    platform.context.calls = {};
    platform.webSocket.frames = {};
}

void BenchTelephone::loadCalls(int count) {
    for (int first = 0; first < count; first += 100) {
        std::string body = Bodies::callLog(first, std::min(100, count - first));
        takeCallLog(body);
    }
}
