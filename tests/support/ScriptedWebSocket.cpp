#include "ScriptedWebSocket.h"

#include "TestPlatform.h"

#include <gtest/gtest.h>

void ScriptedWebSocket::send(const std::string& message) {
    TestPlatform::current().steps.add("frame ", message);
    frames.push_back(message);
    if (whileSending) {
        whileSending();
    }
}

void WebSocketThread::setThreader(ThreaderIfc* threader) {
    TestPlatform::current().steps.add("socket gains a threader");
    TestPlatform::current().webSocket.threader = threader;
}

void WebSocketThread::init(WebSocketAppIfc* app, const std::string& url, const std::string& user,
                           const std::string& password) {
    ScriptedWebSocket& webSocket = TestPlatform::current().webSocket;
    EXPECT_EQ("", user);
    EXPECT_EQ("", password);
    TestPlatform::current().steps.add("socket to ", url);
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
    TestPlatform::current().steps.add("socket stops");
    ++webSocket.stops;
    webSocket.running = false;
    if (webSocket.whileStopping) {
        webSocket.whileStopping();
    }
}

void WebSocketThread::terminate() {
    ScriptedWebSocket& webSocket = TestPlatform::current().webSocket;
    TestPlatform::current().steps.add("socket terminates");
    ++webSocket.terminations;
    webSocket.running = false;
}
