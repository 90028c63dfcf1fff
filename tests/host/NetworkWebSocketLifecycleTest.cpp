#include "support/WebSocketFixture.h"

#include <future>
#include <stdexcept>

namespace {

class Lifecycle : public WebSocketFixture {};

TEST_F(Lifecycle, StaticOperationsAreSafeWithoutAnInstance) {
    EXPECT_EQ(WebSocketThread::instance(), nullptr);
    WebSocketThread::stop();
    WebSocketThread::terminate();
    WebSocketThread::terminate();
    EXPECT_EQ(WebSocketThread::instance(), nullptr);
}

TEST_F(Lifecycle, TheThreadIsMadeByTheThreaderAndEndsWithTerminate) {
    TestThreader threader;
    WebSocketThread::setThreader(&threader);
    serveQuietly();
    open();
    ASSERT_TRUE(app.waitFor("open 0"));
    EXPECT_EQ(threader.names, std::vector<std::string>{"WebSocket"});
    EXPECT_EQ(threader.ended, 0);
    WebSocketThread::terminate();
    EXPECT_EQ(threader.ended, 1);
    EXPECT_EQ(WebSocketThread::instance(), nullptr);
    EXPECT_TRUE(eventually([this] { return ended == 1; }));
    EXPECT_EQ(app.reports(), std::vector<std::string>{"open 0"});
}

TEST_F(Lifecycle, WithoutAThreadThereIsNoInstance) {
    TestThreader threader;
    threader.refuse = true;
    WebSocketThread::setThreader(&threader);
    serveQuietly();
    open();
    EXPECT_EQ(WebSocketThread::instance(), nullptr);
    EXPECT_TRUE(RecordedHostLog::contains(2, "no thread"));
    threader.refuse = false;
    open();
    EXPECT_TRUE(app.waitFor("open 0"));
    WebSocketThread::terminate();
}

TEST_F(Lifecycle, CallbacksComeOnTheConnectionsThread) {
    std::atomic<bool> otherThread{false};
    const std::thread::id caller = std::this_thread::get_id();
    app.inside = [&](const std::string&) { otherThread = std::this_thread::get_id() != caller; };
    serveQuietly();
    open();
    ASSERT_TRUE(app.waitFor("open 0"));
    EXPECT_TRUE(eventually([&otherThread] { return otherThread.load(); }));
}

TEST_F(Lifecycle, StopClosesInOrderWithoutOnClose) {
    serveQuietly();
    open();
    ASSERT_TRUE(app.waitFor("open 0"));
    WebSocketThread::stop();
    EXPECT_EQ(WebSocketThread::instance(), nullptr);
    ASSERT_TRUE(eventually([this] { return ended == 1; }));
    EXPECT_EQ(closeCode, 1000);
    WebSocketThread::terminate();
    EXPECT_EQ(app.reports(), std::vector<std::string>{"open 0"});
}

TEST_F(Lifecycle, WhatWasQueuedBeforeStopIsStillSent) {
    serveQuietly();
    open();
    ASSERT_TRUE(app.waitFor("open 0"));
    for (int count = 0; count < 10; ++count) {
        WebSocketThread::instance()->send(std::string(50'000, 'x'));
    }
    WebSocketThread::stop();
    ASSERT_TRUE(eventually([this] { return ended == 1; }));
    EXPECT_EQ(heardTexts().size(), 10U);
    EXPECT_EQ(closeCode, 1000);
}

TEST_F(Lifecycle, StopDuringTheOpeningReportsNothing) {
    std::atomic<bool> gone{false};
    serveRaw([&gone](ScriptedPeer& peer) { gone = peer.waitForEnd(); });
    open();
    ASSERT_TRUE(eventually([this] { return server->connections() == 1; }));
    WebSocketThread::stop();
    EXPECT_TRUE(eventually([&gone] { return gone.load(); }));
    WebSocketThread::terminate();
    EXPECT_TRUE(app.reports().empty());
}

TEST_F(Lifecycle, AnInitAfterStopOpensANewConnection) {
    serveQuietly();
    for (int count = 1; count <= 5; ++count) {
        open();
        ASSERT_TRUE(app.waitFor("open 0", count));
        WebSocketThread::stop();
    }
    EXPECT_EQ(server->connections(), 5);
    EXPECT_TRUE(eventually([this] { return ended == 5; }));
    EXPECT_EQ(app.reports().size(), 5U);
}

TEST_F(Lifecycle, AnInitAfterTerminateOpensANewConnection) {
    serveQuietly();
    open();
    ASSERT_TRUE(app.waitFor("open 0"));
    WebSocketThread::terminate();
    open();
    EXPECT_TRUE(app.waitFor("open 0", 2));
}

TEST_F(Lifecycle, AnInitOverALiveConnectionClosesThatOneSilently) {
    serveQuietly();
    open();
    ASSERT_TRUE(app.waitFor("open 0"));
    RecordingApp second;
    WebSocketThread::init(&second, url("/second"), "", "");
    ASSERT_TRUE(second.waitFor("open 0"));
    EXPECT_TRUE(eventually([this] { return ended == 1; }));
    EXPECT_EQ(closeCode, 1000);
    EXPECT_EQ(app.reports(), std::vector<std::string>{"open 0"});
    WebSocketThread::terminate();
}

TEST_F(Lifecycle, InitReturnsBeforeACallbackThatWaitsForIt) {
    // The callback goes on only when init has returned: an init that waited for it would never return.
    std::atomic<bool> returned{false};
    std::atomic<int> sawReturn{-1};
    app.inside = [&](const std::string& report) {
        if (report == "error") {
            sawReturn = eventually([&returned] { return returned.load(); }, std::chrono::seconds(5)) ? 1 : 0;
        }
    };
    WebSocketThread::init(&app, "wss://", "", "");
    returned = true;
    ASSERT_TRUE(app.waitFor("close 0 1006"));
    EXPECT_EQ(sawReturn, 1);
}

TEST_F(Lifecycle, StopWaitsForACallbackInProgress) {
    std::atomic<bool> leave{false};
    std::atomic<bool> left{false};
    app.inside = [&](const std::string&) {
        eventually([&leave] { return leave.load(); });
        pause(20);
        left = true;
    };
    serveQuietly();
    open();
    ASSERT_TRUE(app.waitFor("open 0"));
    std::future<bool> stopped = std::async(std::launch::async, [&left] {
        WebSocketThread::stop();
        return left.load();
    });
    EXPECT_EQ(stopped.wait_for(std::chrono::milliseconds(100)), std::future_status::timeout);
    leave = true;
    EXPECT_TRUE(stopped.get()) << "stop returned while the callback was running";
    EXPECT_EQ(app.running(), 0);
}

TEST_F(Lifecycle, ACallbackMayStop) {
    serve([](WebSocketPeer& peer) {
        peer.sendText("one");
        peer.sendText("two");
        peer.sendClose(1000);
    });
    std::atomic<bool> returned{false};
    app.inside = [&returned](const std::string& report) {
        if (report == "message one") {
            WebSocketThread::stop();
            returned = true;
        }
    };
    open();
    ASSERT_TRUE(eventually([&returned] { return returned.load(); }));
    WebSocketThread::terminate();
    EXPECT_EQ(app.reports(), (std::vector<std::string>{"open 0", "message one"}));
}

TEST_F(Lifecycle, ACallbackMayOpenANewConnection) {
    serve([](WebSocketPeer& peer) { peer.close(1001); });
    RecordingApp second;
    app.inside = [this, &second](const std::string& report) {
        if (report == "close 1001 1001") {
            WebSocketThread::init(&second, url(), "", "");
        }
    };
    open();
    EXPECT_TRUE(second.waitFor("close 1001 1001"));
    EXPECT_EQ(app.reports().size(), 2U);
    WebSocketThread::terminate();
}

TEST_F(Lifecycle, ACallbackMayTerminate) {
    TestThreader threader;
    WebSocketThread::setThreader(&threader);
    serveQuietly();
    app.inside = [](const std::string&) { WebSocketThread::terminate(); };
    open();
    ASSERT_TRUE(app.waitFor("open 0"));
    EXPECT_TRUE(eventually([&threader] { return threader.ended == 1; }));
    EXPECT_EQ(WebSocketThread::instance(), nullptr);
}

TEST_F(Lifecycle, ACallbackThatThrowsEndsNothing) {
    serve([](WebSocketPeer& peer) {
        peer.sendText("one");
        peer.sendText("two");
        peer.readMessage();
    });
    app.inside = [](const std::string& report) {
        if (report == "message one") {
            throw std::runtime_error("thrown by a callback");
        }
    };
    open();
    EXPECT_TRUE(app.waitFor("message two"));
    EXPECT_TRUE(RecordedHostLog::contains(2, "thrown by a callback"));
}

TEST_F(Lifecycle, SendDoesNotWaitForACallback) {
    std::atomic<bool> leave{false};
    app.inside = [&leave](const std::string&) { eventually([&leave] { return leave.load(); }); };
    serveQuietly();
    open();
    ASSERT_TRUE(app.waitFor("open 0"));
    EXPECT_LT(durationOf([] { WebSocketThread::instance()->send("text"); }).count(), 500);
    leave = true;
    EXPECT_TRUE(eventually([this] { return heardTexts().size() == 1; }));
}

TEST_F(Lifecycle, AStopEndsWithinItsTimeThoughThePeerAnswersNothing) {
    serve([](WebSocketPeer& peer) { eventually([&peer] { return peer.peer().isServerEnding(); }); });
    open();
    ASSERT_TRUE(app.waitFor("open 0"));
    EXPECT_LT(durationOf([] { WebSocketThread::stop(); }).count(), 500);
    EXPECT_LT(durationOf([] { WebSocketThread::terminate(); }).count(), 1'500);
}

TEST_F(Lifecycle, ConcurrentInitsAndStopsLeaveAWorkingClient) {
    serveQuietly();
    app.inside = [this](const std::string&) { EXPECT_EQ(app.running(), 1); };
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 4; ++thread) {
        threads.emplace_back([this, thread] {
            for (int count = 0; count < 25; ++count) {
                if ((count + thread) % 2 == 0) {
                    open();
                } else {
                    WebSocketThread::stop();
                }
                if (WebSocketThread* client = WebSocketThread::instance()) {
                    client->send("from many threads");
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    WebSocketThread::stop();
    const std::size_t before = app.reports().size();
    pause(50);
    EXPECT_EQ(app.reports().size(), before) << "a stopped connection reported";
    EXPECT_EQ(app.count("error"), 0);

    const long openings = app.count("open 0");
    open();
    EXPECT_TRUE(app.waitFor("open 0", openings + 1));
    EXPECT_EQ(app.mostAtOnce(), 1);
}

TEST_F(Lifecycle, ConcurrentInitsAndTerminatesAreSafe) {
    serveQuietly();
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 3; ++thread) {
        threads.emplace_back([this, thread] {
            for (int count = 0; count < 15; ++count) {
                if ((count + thread) % 3 == 0) {
                    WebSocketThread::terminate();
                } else {
                    open();
                }
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    WebSocketThread::terminate();
    const long openings = app.count("open 0");
    open();
    EXPECT_TRUE(app.waitFor("open 0", openings + 1));
    WebSocketThread::terminate();
}

} // namespace
