#include "support/WebSocketFixture.h"

namespace {

class KeepAlive : public WebSocketFixture {
protected:
    static void setPings(int intervalMilliseconds, int pongMilliseconds) {
        setLimits([&](NetworkControl::Limits& limits) {
            limits.pingIntervalMilliseconds = intervalMilliseconds;
            limits.pongMilliseconds = pongMilliseconds;
        });
    }

    /// A server that answers no ping until it is told to, and then all of them, in order.
    void serveWithholdingPongs() {
        serve([this](WebSocketPeer& peer) {
            while (!peer.peer().isServerEnding()) {
                if (peer.peer().waitForData(std::chrono::milliseconds(5))) {
                    const WebSocketPeer::Frame frame = peer.readFrame();
                    if (frame.opcode != WebSocketPeer::PING) {
                        return;
                    }
                    withheld.push_back(frame.payload);
                    ++pings;
                }
                while (answering && !withheld.empty()) {
                    peer.sendFrame(WebSocketPeer::PONG, withheld.front());
                    withheld.erase(withheld.begin());
                }
            }
        });
    }

    std::vector<std::string> withheld;
    std::atomic<int> pings{0};
    std::atomic<bool> answering{false};
};

TEST_F(KeepAlive, PingsGoOnAndEveryPongIsReported) {
    setPings(20, 1'000);
    serveQuietly();
    open();
    EXPECT_TRUE(app.waitFor("pong", 5));
    EXPECT_EQ(app.count("pongTimeout"), 0);
}

TEST_F(KeepAlive, NoPingComesBeforeItsTime) {
    setPings(60'000, 1'000);
    answering = true;
    serveWithholdingPongs();
    open();
    ASSERT_TRUE(app.waitFor("open 0"));
    pause(100);
    EXPECT_EQ(pings, 0);
}

TEST_F(KeepAlive, TheTimeScaleShortensPingsAndTheirLimit) {
    TimeScale::set(1'000); // 30 s become 30 ms, 10 s become 10 ms
    serveWithholdingPongs();
    open();
    EXPECT_TRUE(app.waitFor("pongTimeout"));
    EXPECT_GE(pings, 1);
}

TEST_F(KeepAlive, ASilenceIsReportedOnceHoweverManyPingsGoOut) {
    setPings(20, 30);
    serveWithholdingPongs();
    open();
    ASSERT_TRUE(app.waitFor("pongTimeout"));
    ASSERT_TRUE(eventually([this] { return pings >= 6; }));
    EXPECT_EQ(app.count("pongTimeout"), 1);
    EXPECT_EQ(app.count("pong"), 0);
}

TEST_F(KeepAlive, ALimitLongerThanTheIntervalIsNotPutOffByFurtherPings) {
    setPings(10, 60);
    serveWithholdingPongs();
    open();
    EXPECT_TRUE(app.waitFor("pongTimeout", 1, std::chrono::milliseconds(2'000)));
}

TEST_F(KeepAlive, LatePongsAreReportedAndTheNextSilenceAnew) {
    setPings(20, 30);
    serveWithholdingPongs();
    open();
    ASSERT_TRUE(app.waitFor("pongTimeout"));
    const long late = pings;
    answering = true;
    ASSERT_TRUE(app.waitFor("pong", late));
    answering = false;
    EXPECT_TRUE(app.waitFor("pongTimeout", 2));
}

TEST_F(KeepAlive, AnUnaskedPongIsReported) {
    serve([](WebSocketPeer& peer) {
        peer.sendFrame(WebSocketPeer::PONG, "unasked");
        peer.readMessage();
    });
    open();
    EXPECT_TRUE(app.waitFor("pong"));
}

TEST_F(KeepAlive, AHalfOpenConnectionShowsItselfByItsSilenceAlone) {
    setPings(20, 30);
    serve([](WebSocketPeer& peer) {
        while (!peer.peer().isServerEnding()) { // neither reads nor ends
            peer.peer().waitForData(std::chrono::milliseconds(5));
            pause(5);
        }
    });
    open();
    ASSERT_TRUE(app.waitFor("pongTimeout"));
    pause(100);
    EXPECT_EQ(app.reports(), (std::vector<std::string>{"open 0", "pongTimeout"}));
}

TEST_F(KeepAlive, ALongCallbackDoesNotLookLikeASilentPeer) {
    setPings(50, 50);
    serve([](WebSocketPeer& peer) {
        peer.sendText("slow");
        while (peer.readMessage().opcode >= 0) {
        }
    });
    app.inside = [this](const std::string& report) {
        if (report == "message slow") {
            pause(60); // a ping is due behind this callback
        } else if (report == "pong" && app.count("pong") == 1) {
            pause(400); // the next pong waits behind this one, far beyond its limit
        }
    };
    open();
    ASSERT_TRUE(app.waitFor("pong", 4));
    EXPECT_EQ(app.count("pongTimeout"), 0);
}

// ---- Interface

class Freezing : public KeepAlive {
protected:
    static void setInterface(bool up) { NetworkControl::instance().setInterfaceUp(up); }
};

TEST_F(Freezing, NothingIsSentOrDeliveredUntilTheInterfaceIsBack) {
    std::atomic<bool> go{false};
    std::atomic<int> early{-1};
    serve([&](WebSocketPeer& peer) {
        eventually([&go] { return go.load(); });
        peer.sendText("while down");
        peer.sendFrame(WebSocketPeer::PING, "while down");
        early = peer.peer().waitForData(std::chrono::milliseconds(200)) ? 1 : 0;
        for (;;) {
            const WebSocketPeer::Frame frame = peer.readFrame();
            if (frame.opcode != WebSocketPeer::TEXT && frame.opcode != WebSocketPeer::PONG) {
                return;
            }
            const std::lock_guard<std::mutex> lock(heardMutex);
            heard.push_back(std::to_string(frame.opcode) + " " + frame.payload);
        }
    });
    open();
    ASSERT_TRUE(app.waitFor("open 0"));
    setInterface(false);
    go = true;
    WebSocketThread::instance()->send("queued");
    ASSERT_TRUE(eventually([&early] { return early >= 0; }));
    EXPECT_EQ(early, 0);
    EXPECT_EQ(app.reports(), std::vector<std::string>{"open 0"});
    EXPECT_TRUE(heardTexts().empty());

    setInterface(true);
    EXPECT_TRUE(app.waitFor("message while down"));
    ASSERT_TRUE(eventually([this] { return heardTexts().size() == 2; }));
    std::vector<std::string> sent = heardTexts();
    std::sort(sent.begin(), sent.end());
    EXPECT_EQ(sent, (std::vector<std::string>{"1 queued", "10 while down"}));
}

TEST_F(Freezing, NoPingGoesOutAndNoSilenceIsReported) {
    setPings(20, 20);
    answering = true;
    serveWithholdingPongs();
    open();
    ASSERT_TRUE(app.waitFor("pong"));
    setInterface(false);
    pause(50); // what had left before arrives
    const int before = pings;
    const std::size_t reportsBefore = app.reports().size();
    pause(150);
    EXPECT_EQ(pings, before);
    EXPECT_EQ(app.reports().size(), reportsBefore);
    EXPECT_EQ(app.count("pongTimeout"), 0);

    setInterface(true);
    EXPECT_TRUE(eventually([&] { return pings > before + 1; }));
    EXPECT_EQ(app.count("pongTimeout"), 0);
}

TEST_F(Freezing, ALimitThatRunsWhileDownBeginsAnew) {
    setPings(50, 150);
    serveWithholdingPongs();
    open();
    ASSERT_TRUE(eventually([this] { return pings == 1; }));
    setInterface(false);
    pause(250);
    EXPECT_EQ(app.count("pongTimeout"), 0);
    const auto begin = std::chrono::steady_clock::now();
    setInterface(true);
    EXPECT_TRUE(app.waitFor("pongTimeout"));
    EXPECT_GE(std::chrono::steady_clock::now() - begin, std::chrono::milliseconds(140));
}

TEST_F(Freezing, AConnectionThatEndsMeanwhileIsReportedWhenTheInterfaceIsBack) {
    std::atomic<bool> go{false};
    serve([&go](WebSocketPeer& peer) {
        eventually([&go] { return go.load(); });
        peer.sendText("last");
        peer.sendClose(1001, "bye");
        peer.peer().end();
    });
    open();
    ASSERT_TRUE(app.waitFor("open 0"));
    setInterface(false);
    go = true;
    pause(100);
    EXPECT_EQ(app.reports().size(), 1U);
    setInterface(true);
    EXPECT_TRUE(app.waitFor("close 1001 1001"));
    EXPECT_EQ(app.reports(), (std::vector<std::string>{"open 0", "message last", "close 1001 1001"}));
}

TEST_F(Freezing, ALostInterfaceAloneIsNoLostConnection) {
    serveQuietly();
    open();
    ASSERT_TRUE(app.waitFor("open 0"));
    for (int count = 0; count < 20; ++count) {
        setInterface(false);
        setInterface(true);
    }
    WebSocketThread::instance()->send("still here");
    EXPECT_TRUE(eventually([this] { return heardTexts().size() == 1; }));
    EXPECT_EQ(app.reports(), std::vector<std::string>{"open 0"});
}

TEST_F(Freezing, AConnectThatBeginsWhileDownWaits) {
    serveQuietly();
    setInterface(false);
    open();
    pause(100);
    EXPECT_TRUE(app.reports().empty());
    EXPECT_EQ(server->accepted(), 0);
    setInterface(true);
    EXPECT_TRUE(app.waitFor("open 0"));
}

TEST_F(Freezing, AConnectInProgressWaitsAndUsesUpNoTime) {
    setLimits([](NetworkControl::Limits& limits) { limits.connectMilliseconds = 150; });
    std::atomic<bool> go{false};
    serveRaw([&go](ScriptedPeer& peer) {
        WebSocketPeer socket(peer);
        eventually([&go] { return go.load(); });
        socket.accept();
        socket.readMessage();
    });
    open();
    ASSERT_TRUE(eventually([this] { return server->connections() == 1; }));
    setInterface(false);
    go = true;
    pause(300);
    EXPECT_TRUE(app.reports().empty());
    setInterface(true);
    EXPECT_TRUE(app.waitFor("open 0"));
    EXPECT_EQ(app.count("error"), 0);
}

TEST_F(Freezing, AnUnusableUrlIsReportedWhenTheInterfaceIsBack) {
    setInterface(false);
    WebSocketThread::init(&app, "ws://127.0.0.1/", "", "");
    pause(50);
    EXPECT_TRUE(app.reports().empty());
    setInterface(true);
    EXPECT_TRUE(app.waitFor("close 0 1006"));
    EXPECT_EQ(app.reports(), (std::vector<std::string>{"error", "close 0 1006"}));
}

TEST_F(Freezing, ThePeerSeesNothingOfAStopUntilTheInterfaceIsBack) {
    serveQuietly();
    open();
    ASSERT_TRUE(app.waitFor("open 0"));
    setInterface(false);
    WebSocketThread::stop();
    EXPECT_EQ(WebSocketThread::instance(), nullptr);
    pause(100);
    EXPECT_EQ(ended, 0);
    setInterface(true);
    EXPECT_TRUE(eventually([this] { return ended == 1; }));
    EXPECT_EQ(closeCode, 1000);
    EXPECT_EQ(app.reports(), std::vector<std::string>{"open 0"});
}

TEST_F(Freezing, TheThreadEndsWhileDown) {
    serveQuietly();
    open();
    ASSERT_TRUE(app.waitFor("open 0"));
    setInterface(false);
    WebSocketThread::instance()->send("never sent");
    EXPECT_LT(durationOf([] { WebSocketThread::terminate(); }).count(), 1'500);
    EXPECT_TRUE(heardTexts().empty());
}

} // namespace
