#pragma once

#include "CloudAnswers.h"
#include "OrvaneServiceIfc.h"
#include "RecordingObserver.h"
#include "TestPlatform.h"
#include "framework/Service.h"
#include "network/WebSocketAppIfc.h"

#include <memory>
#include <string>

/// A telephone on the test platform that loads the service's shared library as a framework does.
class LoadedTelephone {
public:
    LoadedTelephone();
    /// Takes the service down and unloads the library.
    ~LoadedTelephone();
    LoadedTelephone(const LoadedTelephone&) = delete;
    LoadedTelephone& operator=(const LoadedTelephone&) = delete;

    /// Whether the process has the library in it.
    static bool isLoaded();

    bool isRunning() { return m_calls != nullptr && m_calls->isRunning(); }
    /// What the cloud will answer to a login, with so many calls and contacts.
    void expectLogin(int calls, int contacts);
    void initialise() { m_service->init(platform.context); }
    void runLogin() { platform.threads.runAll(); }
    /// The polling timer expires; the cloud answers with that many new calls.
    void poll(int newCalls);
    /// A frame on the event channel.
    void receive(const std::string& frame) { m_webSocket->onMessage(frame); }
    /// With the library still loaded.
    void destroyService();
    /// Forgets what the test platform has recorded: what is left of the heap is the service's.
    void forgetRecords();

    TestPlatform platform;
    RecordingObserver observer;

private:
    std::vector<CloudAnswers::Call> newCalls(int count);

    void* m_library;
    std::unique_ptr<Service> m_service;
    OrvaneServiceIfc* m_calls = nullptr;
    WebSocketAppIfc* m_webSocket = nullptr;
    int m_lastCall = 0;
    int m_lastSyncToken = 0;
};
