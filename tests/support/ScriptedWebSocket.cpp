#include "ScriptedWebSocket.h"

#include "TestPlatform.h"

#include <gtest/gtest.h>

void WebSocketThread::setThreader(ThreaderIfc* threader) {
    TestPlatform::current().webSocket.threader = threader;
}

void WebSocketThread::init(WebSocketAppIfc* app, const std::string& url, const std::string& user,
                           const std::string& password) {
    ScriptedWebSocket& webSocket = TestPlatform::current().webSocket;
    EXPECT_EQ("", user);
    EXPECT_EQ("", password);
    webSocket.app = app;
    webSocket.urls.push_back(url);
    webSocket.running = true;
}

WebSocketThread* WebSocketThread::instance() {
    ScriptedWebSocket& webSocket = TestPlatform::current().webSocket;
    return webSocket.running ? &webSocket : nullptr;
}

void WebSocketThread::stop() {
    ScriptedWebSocket& webSocket = TestPlatform::current().webSocket;
    ++webSocket.stops;
    webSocket.running = false;
    if (webSocket.whileStopping) {
        webSocket.whileStopping();
    }
}

void WebSocketThread::terminate() {
    ScriptedWebSocket& webSocket = TestPlatform::current().webSocket;
    ++webSocket.terminations;
    webSocket.running = false;
}
