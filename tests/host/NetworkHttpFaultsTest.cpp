#include "support/NetworkFixture.h"

#include <random>

namespace {

constexpr int warning = 3;
constexpr std::chrono::milliseconds atOnce{1'000};

class HttpFaults : public NetworkFixture {
protected:
    void connectTo(ScriptedTlsServer::Script script) {
        m_server = std::make_unique<ScriptedTlsServer>(serverOptions(), std::move(script));
        m_establisher = std::make_unique<SecureConnectionEstablisher>(&service);
        ASSERT_TRUE(m_establisher->connect(m_server->url()));
    }

    /// One exchange that must fail within bounds and leave a connection that nobody uses again.
    Answer failedExchange(ScriptedTlsServer::Script script) {
        connectTo(std::move(script));
        Answer answer;
        const auto took = durationOf([&] { answer = exchange(*m_establisher); });
        EXPECT_TRUE(answer.sent == HttpClientIfc::FAILURE || answer.result == HttpClientIfc::FAILURE);
        EXPECT_LT(took, 5 * atOnce);
        EXPECT_FALSE(isOpen());
        EXPECT_FALSE(RecordedHostLog::lines().empty());
        return answer;
    }

    Answer failedExchangeFor(const std::string& text) {
        return failedExchange([text](ScriptedPeer& peer) {
            peer.readRequest();
            peer.write(text);
            peer.end();
        });
    }

    bool isOpen() { return m_establisher->getConnection()->isOpen(); }

    std::unique_ptr<ScriptedTlsServer> m_server;
    std::unique_ptr<SecureConnectionEstablisher> m_establisher;
};

TEST_F(HttpFaults, AnIdleConnectionThatThePeerEndsIsNotOpen) {
    for (void (ScriptedPeer::*ending)() : {&ScriptedPeer::end, &ScriptedPeer::cut, &ScriptedPeer::reset}) {
        std::atomic<bool> go{false};
        connectTo([&go, ending](ScriptedPeer& peer) {
            peer.readRequest();
            peer.write("HTTP/1.1 204 No Content\r\n\r\n");
            eventually([&go] { return go.load(); });
            (peer.*ending)();
        });
        ASSERT_EQ(exchange(*m_establisher).status, 204);
        EXPECT_TRUE(isOpen());
        EXPECT_TRUE(isOpen()) << "asking does not change it";
        go = true;
        EXPECT_TRUE(eventually([this] { return !isOpen(); }));
        EXPECT_EQ(exchange(*m_establisher).sent, HttpClientIfc::FAILURE);
    }
}

TEST_F(HttpFaults, SessionTicketsDoNotMakeAConnectionLookClosed) {
    ScriptedTlsServer::Options options = serverOptions();
    options.sessionTickets = 4;
    ScriptedTlsServer server(options, [](ScriptedPeer& peer) {
        peer.readRequest();
        peer.write("HTTP/1.1 204 No Content\r\n\r\n");
        peer.waitForEnd();
    });
    SecureConnectionEstablisher establisher(&service);
    ASSERT_TRUE(establisher.connect(server.url()));
    std::this_thread::sleep_for(std::chrono::milliseconds(50)); // the tickets arrive after the handshake
    EXPECT_TRUE(establisher.getConnection()->isOpen());
    EXPECT_EQ(exchange(establisher).status, 204);
    EXPECT_TRUE(establisher.getConnection()->isOpen());
}

TEST_F(HttpFaults, AskingWhetherItIsOpenSendsNothingAndDoesNotWait) {
    std::atomic<int> heard{-1};
    connectTo([&heard](ScriptedPeer& peer) { heard = peer.waitForData(std::chrono::milliseconds(200)) ? 1 : 0; });
    EXPECT_LT(durationOf([this] {
                  for (int count = 0; count < 100; ++count) {
                      isOpen();
                  }
              }).count(),
              100);
    EXPECT_TRUE(eventually([&heard] { return heard >= 0; }));
    EXPECT_EQ(heard, 0);
}

TEST_F(HttpFaults, UnaskedBytesCloseTheConnection) {
    connectTo([](ScriptedPeer& peer) {
        peer.write("HTTP/1.1 408 Request Timeout\r\nContent-Length: 0\r\n\r\n");
        peer.waitForEnd();
    });
    EXPECT_TRUE(eventually([this] { return !isOpen(); }));
}

TEST_F(HttpFaults, BytesBehindAnAnswerCloseTheConnection) {
    connectTo([](ScriptedPeer& peer) {
        peer.readRequest();
        peer.write("HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nokHTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n");
        peer.waitForEnd();
    });
    EXPECT_EQ(exchange(*m_establisher).body, "ok");
    EXPECT_TRUE(eventually([this] { return !isOpen(); }));
}

TEST_F(HttpFaults, CloseTellsThePeer) {
    std::atomic<bool> ended{false};
    connectTo([&ended](ScriptedPeer& peer) { ended = peer.waitForEnd(); });
    m_establisher->getConnection()->close();
    EXPECT_FALSE(isOpen());
    EXPECT_TRUE(eventually([&ended] { return ended.load(); }));
    m_establisher->getConnection()->close();
    EXPECT_FALSE(isOpen());
}

TEST_F(HttpFaults, AResetBeforeTheAnswerIsAFailure) {
    failedExchange([](ScriptedPeer& peer) {
        peer.readRequest();
        peer.reset();
    });
}

TEST_F(HttpFaults, AnEndBeforeTheAnswerIsAFailure) {
    const Answer answer = failedExchange([](ScriptedPeer& peer) {
        peer.readRequest();
        peer.end();
    });
    EXPECT_EQ(answer.status, 0);
    EXPECT_EQ(answer.body, "");
}

TEST_F(HttpFaults, AResetInTheHeadersIsAFailure) {
    failedExchange([](ScriptedPeer& peer) {
        peer.readRequest();
        peer.write("HTTP/1.1 200 OK\r\nContent-Le");
        peer.reset();
    });
}

TEST_F(HttpFaults, AResetInTheBodyIsAFailureThatKeepsWhatCame) {
    std::atomic<bool> go{false};
    connectTo([&go](ScriptedPeer& peer) {
        peer.readRequest();
        peer.write("HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\n01234");
        eventually([&go] { return go.load(); });
        peer.reset();
    });
    HttpClient client;
    SecureConnection* connection = m_establisher->getConnection();
    ASSERT_EQ(client.send(connection, HttpClientIfc::HTTP_GET, 0, {}, "/", nullptr, 0, "", "", 1, 0),
              HttpClientIfc::SUCCESS);
    std::string data;
    int total = 0;
    auto status = HttpClientIfc::STATUS_NONE;
    HttpClientIfc::Headers headers;
    ASSERT_EQ(client.readResponse(connection, data, 5, status, total, headers), HttpClientIfc::MORE_DATA);
    go = true;
    EXPECT_EQ(client.readMore(connection, data, 5), HttpClientIfc::FAILURE);
    EXPECT_EQ(status, 200);
    EXPECT_FALSE(isOpen());
}

TEST_F(HttpFaults, AResetAfterTheAnswerLeavesTheAnswer) {
    std::atomic<bool> go{false};
    connectTo([&go](ScriptedPeer& peer) {
        peer.readRequest();
        peer.write("HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\nok");
        eventually([&go] { return go.load(); });
        peer.reset();
    });
    const Answer answer = exchange(*m_establisher);
    EXPECT_EQ(answer.result, HttpClientIfc::SUCCESS);
    EXPECT_EQ(answer.body, "ok");
    go = true;
    EXPECT_TRUE(eventually([this] { return !isOpen(); }));
}

TEST_F(HttpFaults, ACutBodyIsAFailureThatKeepsWhatCame) {
    const Answer announced = failedExchangeFor("HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\n01234");
    EXPECT_EQ(announced.body, "01234");
    EXPECT_EQ(announced.status, 200);
    const Answer chunked = failedExchangeFor("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n5\r\n01234\r\n");
    EXPECT_EQ(chunked.body, "01234");
}

TEST_F(HttpFaults, ABodyUntilTheEndThatIsCutWithoutTheClosingAlertIsAFailure) {
    failedExchange([](ScriptedPeer& peer) {
        peer.readRequest();
        peer.write("HTTP/1.1 200 OK\r\n\r\nhalf");
        peer.cut();
    });
}

TEST_F(HttpFaults, AStalledAnswerEndsAtTheLimit) {
    setLimits([](NetworkControl::Limits& limits) { limits.progressMilliseconds = 200; });
    for (const char* text : {"", "HTTP/1.1 200 OK\r\nContent", "HTTP/1.1 200 OK\r\nContent-Length: 10\r\n\r\n01234"}) {
        connectTo([text](ScriptedPeer& peer) {
            peer.readRequest();
            peer.write(text);
            peer.waitForEnd();
        });
        RecordedHostLog::clear();
        Answer answer;
        const auto took = durationOf([&] { answer = exchange(*m_establisher); });
        EXPECT_EQ(answer.result, HttpClientIfc::FAILURE);
        EXPECT_GE(took.count(), 200);
        EXPECT_LT(took, 2 * atOnce);
        EXPECT_FALSE(isOpen());
        EXPECT_TRUE(RecordedHostLog::contains(warning, "time limit"));
    }
}

TEST_F(HttpFaults, APeerThatReadsNothingEndsASendAtTheLimit) {
    setLimits([](NetworkControl::Limits& limits) { limits.progressMilliseconds = 200; });
    std::atomic<bool> done{false};
    connectTo([&done](ScriptedPeer&) { eventually([&done] { return done.load(); }); });
    Request request;
    request.method = HttpClientIfc::HTTP_POST;
    request.body.assign(32 * 1024 * 1024, 'x');
    Answer answer;
    const auto took = durationOf([&] { answer = exchange(*m_establisher, request); });
    done = true;
    EXPECT_EQ(answer.sent, HttpClientIfc::FAILURE);
    EXPECT_GE(took.count(), 200);
    EXPECT_FALSE(isOpen());
    m_server.reset(); // its script looks at a variable of this test
}

TEST_F(HttpFaults, ATooLongBodyIsAFailure) {
    setLimits([](NetworkControl::Limits& limits) { limits.bodyBytes = 1'000; });
    failedExchangeFor("HTTP/1.1 200 OK\r\nContent-Length: 1001\r\n\r\n" + std::string(1'001, 'x'));
    failedExchangeFor("HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\n3e9\r\n" + std::string(1'001, 'x') +
                      "\r\n0\r\n\r\n");
    failedExchangeFor("HTTP/1.1 200 OK\r\n\r\n" + std::string(1'001, 'x'));
}

TEST_F(HttpFaults, ABodyOfJustTheBoundIsComplete) {
    setLimits([](NetworkControl::Limits& limits) { limits.bodyBytes = 1'000; });
    connectTo([](ScriptedPeer& peer) {
        peer.readRequest();
        peer.write("HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\n" + std::string(1'000, 'x'));
        peer.waitForEnd();
    });
    EXPECT_EQ(exchange(*m_establisher).body.size(), 1'000U);
}

TEST_F(HttpFaults, AnnouncedLengthsBeyondAllBoundsAreFailures) {
    failedExchangeFor("HTTP/1.1 200 OK\r\nContent-Length: 67108865\r\n\r\n");
    failedExchangeFor("HTTP/1.1 200 OK\r\nContent-Length: 18446744073709551615\r\n\r\n");
    failedExchangeFor("HTTP/1.1 200 OK\r\nContent-Length: 99999999999999999999999\r\n\r\n");
    failedExchangeFor("HTTP/1.1 200 OK\r\nContent-Length: -1\r\n\r\n");
}

TEST_F(HttpFaults, EndlessHeadersAreAFailure) {
    failedExchange([](ScriptedPeer& peer) {
        peer.readRequest();
        peer.write("HTTP/1.1 200 OK\r\n");
        while (peer.write("X-Filler: " + std::string(1'000, 'x') + "\r\n")) {
        }
    });
}

TEST_F(HttpFaults, WhatIsNoHttpIsAFailure) {
    for (const char* text : {"hello", "HTTP/1.1\r\n\r\n", "HTTP/9.9 200 OK\r\n\r\n", "HTTP/1.1 2000 OK\r\n\r\n",
                             "HTTP/1.1 200 OK\r\nbroken header\r\n\r\n", "\r\n\r\n",
                             "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nxyz\r\n",
                             "HTTP/1.1 200 OK\r\nTransfer-Encoding: chunked\r\n\r\nffffffffffffffffff\r\n"}) {
        SCOPED_TRACE(text);
        failedExchangeFor(text);
    }
}

TEST_F(HttpFaults, RandomBytesAreAFailure) {
    std::mt19937 random(20); // NOLINT: the same bytes at every run
    for (int count = 0; count < 20; ++count) {
        std::string bytes(200, '\0');
        for (char& byte : bytes) {
            byte = static_cast<char>(random());
        }
        failedExchangeFor(bytes);
    }
}

class Interface : public HttpFaults {};

TEST_F(Interface, GoingDownEndsAReadInProgressAtOnce) {
    std::atomic<bool> asked{false};
    connectTo([&asked](ScriptedPeer& peer) {
        peer.readRequest();
        asked = true;
        peer.waitForEnd();
    });
    Answer answer;
    std::atomic<bool> returned{false};
    std::thread caller([&] {
        answer = exchange(*m_establisher);
        returned = true;
    });
    ASSERT_TRUE(eventually([&asked] { return asked.load(); }));
    const auto took = durationOf([] { NetworkControl::instance().setInterfaceUp(false); });
    EXPECT_TRUE(eventually([&returned] { return returned.load(); }, atOnce));
    caller.join();
    EXPECT_LT(took, atOnce);
    EXPECT_EQ(answer.result, HttpClientIfc::FAILURE);
    EXPECT_FALSE(isOpen());
    EXPECT_TRUE(RecordedHostLog::contains(warning, "the interface is down"));
}

TEST_F(Interface, GoingDownEndsAConnectInProgressAtOnce) {
    ScriptedTlsServer::Options options = serverOptions();
    options.handshake = false;
    ScriptedTlsServer server(options, [](ScriptedPeer&) {});
    SecureConnectionEstablisher establisher(&service);
    std::atomic<int> connected{-1};
    std::thread caller([&] { connected = establisher.connect(server.url()) ? 1 : 0; });
    ASSERT_TRUE(eventually([&server] { return server.accepted() == 1; }));
    NetworkControl::instance().setInterfaceUp(false);
    EXPECT_TRUE(eventually([&connected] { return connected == 0; }, atOnce));
    caller.join();
}

TEST_F(Interface, WhileItIsDownNewStepsFailAndNothingIsSent) {
    std::atomic<int> requests{0};
    connectTo([&requests](ScriptedPeer& peer) {
        while (!peer.readRequest().empty()) {
            ++requests;
            peer.write("HTTP/1.1 204 No Content\r\n\r\n");
        }
    });
    NetworkControl::instance().setInterfaceUp(false);
    EXPECT_EQ(exchange(*m_establisher).sent, HttpClientIfc::FAILURE);
    SecureConnectionEstablisher other(&service);
    EXPECT_FALSE(other.connect(m_server->url()));
    EXPECT_TRUE(RecordedHostLog::contains(warning, "the interface is down"));
    EXPECT_EQ(m_server->accepted(), 1);

    NetworkControl::instance().setInterfaceUp(true);
    ASSERT_TRUE(other.connect(m_server->url()));
    EXPECT_EQ(exchange(other).status, 204);
    EXPECT_EQ(requests, 1);
}

TEST_F(Interface, AnIdleConnectionOutlivesALostInterface) {
    connectTo([](ScriptedPeer& peer) {
        while (!peer.readRequest().empty()) {
            peer.write("HTTP/1.1 204 No Content\r\n\r\n");
        }
    });
    ASSERT_EQ(exchange(*m_establisher).status, 204);
    NetworkControl::instance().setInterfaceUp(false);
    NetworkControl::instance().setInterfaceUp(true);
    EXPECT_TRUE(isOpen());
    EXPECT_EQ(exchange(*m_establisher).status, 204);
}

TEST_F(Interface, AbortEndsStepsAndRefusesNewOnes) {
    std::atomic<bool> asked{false};
    connectTo([&asked](ScriptedPeer& peer) {
        peer.readRequest();
        asked = true;
        peer.waitForEnd();
    });
    std::atomic<bool> returned{false};
    std::thread caller([&] {
        exchange(*m_establisher);
        returned = true;
    });
    ASSERT_TRUE(eventually([&asked] { return asked.load(); }));
    NetworkControl::instance().abort();
    EXPECT_TRUE(eventually([&returned] { return returned.load(); }, atOnce));
    caller.join();
    SecureConnectionEstablisher other(&service);
    EXPECT_FALSE(other.connect(m_server->url()));
    EXPECT_TRUE(RecordedHostLog::contains(warning, "the program is ending"));
}

} // namespace
