#include "support/WebSocketFixture.h"

#include <random>

namespace {

constexpr int warning = 3;
constexpr std::size_t mebibyte = 1024 * 1024;

class WebSocket : public WebSocketFixture {
protected:
    /// Opens against a server that does that after the opening handshake, and waits for that report.
    void expectReport(const Script& script, const std::string& report) {
        serve(script);
        open();
        EXPECT_TRUE(app.waitFor(report)) << ::testing::PrintToString(app.reports());
    }
};

TEST_F(WebSocket, TheOpeningHandshakeAsksForTheTargetAsItStands) {
    std::string request;
    std::atomic<bool> done{false};
    serve([&](WebSocketPeer& peer) {
        request = peer.request();
        done = true;
        peer.readMessage();
    });
    open("/path/socket?access_token=a+b%20c&wsc=d/e=");
    ASSERT_TRUE(app.waitFor("open 0"));
    ASSERT_TRUE(eventually([&done] { return done.load(); }));
    EXPECT_EQ(request.rfind("GET /path/socket?access_token=a+b%20c&wsc=d/e= HTTP/1.1\r\n", 0), 0U) << request;
    EXPECT_NE(request.find("\r\nHost: 127.0.0.1:" + std::to_string(server->port()) + "\r\n"), std::string::npos);
    EXPECT_NE(request.find("\r\nSec-WebSocket-Version: 13\r\n"), std::string::npos);
    for (const char* header : {"Origin", "Sec-WebSocket-Protocol", "Sec-WebSocket-Extensions", "Authorization"}) {
        EXPECT_EQ(request.find(std::string("\r\n") + header), std::string::npos) << header;
    }
    EXPECT_FALSE(RecordedHostLog::mentions("a+b%20c"));
}

TEST_F(WebSocket, AMissingPathIsTheRoot) {
    for (const auto& [rest, line] :
         {std::pair{"", "GET / HTTP/1.1"}, {"?access_token=x", "GET /?access_token=x HTTP/1.1"}}) {
        std::atomic<bool> matches{false};
        std::atomic<bool> done{false};
        serve([&, wanted = std::string(line)](WebSocketPeer& peer) {
            matches = peer.request().rfind(wanted + "\r\n", 0) == 0;
            done = true;
            peer.readMessage();
        });
        open(rest);
        ASSERT_TRUE(eventually([&done] { return done.load(); }));
        EXPECT_TRUE(matches) << line;
        WebSocketThread::stop();
    }
}

TEST_F(WebSocket, TextMessagesArriveWholeAndInOrder) {
    expectReport(
        [](WebSocketPeer& peer) {
            peer.sendText("one");
            peer.sendText("");
            peer.sendText("zw\xc3\xb6lf");
            peer.readMessage();
        },
        "message zw\xc3\xb6lf");
    EXPECT_EQ(app.reports(), (std::vector<std::string>{"open 0", "message one", "message ", "message zw\xc3\xb6lf"}));
}

TEST_F(WebSocket, FragmentsAreOneMessageWithControlFramesBetweenThem) {
    std::atomic<bool> ponged{false};
    expectReport(
        [&ponged](WebSocketPeer& peer) {
            peer.sendFrame(WebSocketPeer::TEXT, "a\xc3", false);
            peer.sendFrame(WebSocketPeer::CONTINUATION, "\xb6", false);
            peer.sendFrame(WebSocketPeer::PING, "data");
            peer.sendFrame(WebSocketPeer::CONTINUATION, "", false);
            peer.sendFrame(WebSocketPeer::CONTINUATION, "c", true);
            const WebSocketPeer::Frame pong = peer.readFrame();
            ponged = pong.opcode == WebSocketPeer::PONG && pong.payload == "data" && pong.masked;
            peer.readMessage();
        },
        "message a\xc3\xb6"
        "c");
    EXPECT_TRUE(eventually([&ponged] { return ponged.load(); }));
}

TEST_F(WebSocket, MessagesOfOneMebibyteArrive) {
    const std::string text(mebibyte, 'x');
    expectReport(
        [&text](WebSocketPeer& peer) {
            peer.sendText(text);
            peer.readMessage();
        },
        "message " + text);
}

TEST_F(WebSocket, ALongerMessageClosesTheConnectionWith1009) {
    for (const bool fragmented : {false, true}) {
        std::atomic<int> code{-1};
        RecordingApp listener;
        serve([&code, fragmented](WebSocketPeer& peer) {
            if (fragmented) {
                peer.sendFrame(WebSocketPeer::TEXT, std::string(mebibyte, 'x'), false);
                peer.sendFrame(WebSocketPeer::CONTINUATION, "x", true);
            } else {
                peer.sendText(std::string(mebibyte + 1, 'x'));
            }
            code = peer.readMessage().closeCode();
        });
        WebSocketThread::init(&listener, url(), "", "");
        EXPECT_TRUE(listener.waitFor("close 0 1009"))
            << ::testing::PrintToString(listener.reports().back().substr(0, 80));
        EXPECT_TRUE(eventually([&code] { return code >= 0; }));
        EXPECT_EQ(code, 1009);
        WebSocketThread::stop();
    }
}

TEST_F(WebSocket, TextThatIsNotUtf8ClosesTheConnectionWith1007) {
    for (const char* text : {"\xff", "a\xc3", "\xed\xa0\x80", "\xc0\x80"}) {
        std::atomic<int> code{-1};
        RecordingApp listener;
        serve([&code, text](WebSocketPeer& peer) {
            peer.sendText(text);
            code = peer.readMessage().closeCode();
        });
        WebSocketThread::init(&listener, url(), "", "");
        EXPECT_TRUE(listener.waitFor("close 0 1007"));
        EXPECT_EQ(listener.reports().size(), 2U);
        EXPECT_TRUE(eventually([&code] { return code == 1007; }));
        WebSocketThread::stop();
    }
}

TEST_F(WebSocket, FramesAgainstTheProtocolCloseTheConnectionWith1002) {
    const std::string faults[] = {
        WebSocketPeer::frame(3, "x"),                                        // reserved opcode
        WebSocketPeer::frame(WebSocketPeer::CONTINUATION, "x"),              // of nothing
        WebSocketPeer::frame(WebSocketPeer::PING, std::string(126, 'x')),    // too long for a control frame
        WebSocketPeer::frame(WebSocketPeer::PING, "x", false),               // fragmented control frame
        WebSocketPeer::frame(0x40 | WebSocketPeer::TEXT, "x"),               // reserved bit
        WebSocketPeer::frame(WebSocketPeer::CLOSE, "x"),                     // half a close code
        WebSocketPeer::frame(WebSocketPeer::CLOSE, std::string("\x03\xed")), // 1005 must not be sent
        std::string("\x81\x81\x01\x02\x03\x04\x79", 7),                      // masked by the server
    };
    for (const std::string& fault : faults) {
        RecordingApp listener;
        serve([&fault](WebSocketPeer& peer) {
            peer.peer().write(fault);
            peer.readMessage();
        });
        WebSocketThread::init(&listener, url(), "", "");
        EXPECT_TRUE(listener.waitFor("close 0 1002")) << ::testing::PrintToString(fault);
        WebSocketThread::stop();
    }
}

TEST_F(WebSocket, RandomBytesEndTheConnectionAndNothingElse) {
    std::mt19937 random(3); // NOLINT: the same bytes at every run
    for (int count = 0; count < 20; ++count) {
        std::string bytes(300, '\0');
        for (char& byte : bytes) {
            byte = static_cast<char>(random());
        }
        RecordingApp listener;
        serve([&bytes](WebSocketPeer& peer) {
            peer.peer().write(bytes);
            peer.peer().end();
        });
        WebSocketThread::init(&listener, url(), "", "");
        EXPECT_TRUE(eventually([&listener] {
            const auto reports = listener.reports();
            return !reports.empty() && reports.back().rfind("close ", 0) == 0;
        }));
        WebSocketThread::stop();
    }
}

TEST_F(WebSocket, BinaryMessagesAreDropped) {
    expectReport(
        [](WebSocketPeer& peer) {
            peer.sendFrame(WebSocketPeer::BINARY, "\xff");
            peer.sendText("after");
            peer.readMessage();
        },
        "message after");
    EXPECT_EQ(app.reports().size(), 2U);
    EXPECT_TRUE(RecordedHostLog::contains(warning, "binary message"));
}

TEST_F(WebSocket, EveryCloseCodeIsReportedWithItsReason) {
    for (const int code : {1000, 1001, 1002, 1003, 1007, 1008, 1009, 1010, 1011, 3000, 4999}) {
        std::atomic<int> answer{-1};
        RecordingApp listener;
        serve([&answer, code](WebSocketPeer& peer) { answer = peer.close(code, "because"); });
        WebSocketThread::init(&listener, url(), "", "");
        const std::string text = std::to_string(code);
        EXPECT_TRUE(listener.waitFor("close " + text + " " + text));
        EXPECT_EQ(listener.closeText, "because");
        EXPECT_TRUE(eventually([&answer, code] { return answer == code; })) << code << " was answered by " << answer;
        EXPECT_EQ(listener.reports().size(), 2U);
        WebSocketThread::stop();
    }
}

TEST_F(WebSocket, ACloseWithoutACodeIs1005) {
    expectReport([](WebSocketPeer& peer) { peer.close(0); }, "close 0 1005");
    EXPECT_EQ(app.closeText, "");
}

TEST_F(WebSocket, ACloseIsReportedAtOnceThoughThePeerKeepsTheConnection) {
    std::atomic<bool> dropped{false};
    setLimits([](NetworkControl::Limits& limits) { limits.closeMilliseconds = 300; });
    serve([&dropped](WebSocketPeer& peer) {
        peer.sendClose(1000);
        dropped = peer.peer().waitForEnd();
    });
    open();
    EXPECT_TRUE(app.waitFor("close 1000 1000", 1, std::chrono::milliseconds(250)));
    EXPECT_TRUE(eventually([&dropped] { return dropped.load(); }));
}

TEST_F(WebSocket, AnEndOrResetOfTheStreamIs1006) {
    for (void (ScriptedPeer::*ending)() : {&ScriptedPeer::end, &ScriptedPeer::cut, &ScriptedPeer::reset}) {
        RecordingApp listener;
        serve([ending](WebSocketPeer& peer) {
            peer.sendText("last");
            peer.peer().waitForData(std::chrono::milliseconds(100));
            (peer.peer().*ending)();
        });
        WebSocketThread::init(&listener, url(), "", "");
        EXPECT_TRUE(listener.waitFor("close 0 1006"));
        EXPECT_EQ(listener.reports(), (std::vector<std::string>{"open 0", "message last", "close 0 1006"}));
        WebSocketThread::stop();
    }
}

TEST_F(WebSocket, AnEndInTheMiddleOfAFrameIs1006) {
    expectReport(
        [](WebSocketPeer& peer) {
            peer.peer().write(WebSocketPeer::frame(WebSocketPeer::TEXT, "0123456789").substr(0, 6));
            peer.peer().end();
        },
        "close 0 1006");
    EXPECT_EQ(app.reports().size(), 2U);
}

// ---- A connection that never comes about

class NeverEstablished : public WebSocket {
protected:
    void expectFailure(const std::string& address) {
        RecordingApp listener;
        WebSocketThread::init(&listener, address, "", "");
        EXPECT_TRUE(listener.waitFor("close 0 1006"));
        EXPECT_EQ(listener.reports(), (std::vector<std::string>{"error", "close 0 1006"}));
        EXPECT_FALSE(listener.errorText.empty());
        errorText = listener.errorText;
        errorCode = listener.errorCode;
        EXPECT_TRUE(RecordedHostLog::contains(warning, errorText));
        WebSocketThread::stop();
    }

    std::string errorText;
    int errorCode = 0;
};

TEST_F(NeverEstablished, ForARefusedPort) {
    expectFailure("wss://127.0.0.1:" + std::to_string(unusedPort()) + "/");
    EXPECT_EQ(errorText, "Connection refused");
}

TEST_F(NeverEstablished, ForAUrlThatIsNone) {
    for (const char* address : {"", "ws://127.0.0.1/", "https://127.0.0.1/", "wss://", "wss://host:x/"}) {
        expectFailure(address);
    }
    serveQuietly();
    expectFailure(url("/a\r\nX-Header: b"));
    EXPECT_EQ(server->accepted(), 0);
}

TEST_F(NeverEstablished, ForANameWithoutAnAddress) {
    expectFailure("wss://" + std::string(70, 'a') + "/");
}

TEST_F(NeverEstablished, ForAServerThatCannotBeVerified) {
    ScriptedTlsServer::Options options = serverOptions();
    const CertificateFiles files = certificates().make("otherHost", {"Other", "DNS:other.example.test"}, "authority");
    options.certificate = files.certificate;
    options.key = files.key;
    server = std::make_unique<ScriptedTlsServer>(options, [](ScriptedPeer&) {});
    expectFailure(url());
    EXPECT_EQ(server->connections(), 0);
    EXPECT_NE(errorText.find("mismatch"), std::string::npos) << errorText;

    serveQuietly();
    NetworkControl::instance().setCertificates(nullptr);
    expectFailure(url());
    EXPECT_EQ(server->connections(), 0);
}

TEST_F(NeverEstablished, ForARefusedHandshake) {
    serveRaw([](ScriptedPeer& peer) {
        peer.readRequest();
        peer.write("HTTP/1.1 401 Unauthorized\r\nContent-Length: 2\r\n\r\nno");
        peer.waitForEnd();
    });
    expectFailure(url("/?access_token=verySecret"));
    EXPECT_EQ(errorCode, 401);
    EXPECT_FALSE(RecordedHostLog::mentions("verySecret"));
}

TEST_F(NeverEstablished, ForARedirection) {
    serveRaw([](ScriptedPeer& peer) {
        peer.readRequest();
        peer.write("HTTP/1.1 302 Found\r\nLocation: wss://127.0.0.1:1/\r\nContent-Length: 0\r\n\r\n");
        peer.waitForEnd();
    });
    expectFailure(url());
    EXPECT_EQ(errorCode, 302);
}

TEST_F(NeverEstablished, ForAPeerThatEndsDuringTheHandshake) {
    for (void (ScriptedPeer::*ending)() : {&ScriptedPeer::end, &ScriptedPeer::cut, &ScriptedPeer::reset}) {
        serveRaw([ending](ScriptedPeer& peer) {
            peer.readRequest();
            peer.write("HTTP/1.1 101 Switch");
            (peer.*ending)();
        });
        expectFailure(url());
    }
}

TEST_F(NeverEstablished, ForAWrongHandshake) {
    for (const char* answer : {"garbage\r\n\r\n", "HTTP/1.1 200 OK\r\nContent-Length: 0\r\n\r\n",
                               "HTTP/1.1 101 Switching Protocols\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n"
                               "Sec-WebSocket-Accept: AAAAAAAAAAAAAAAAAAAAAAAAAAA=\r\n\r\n",
                               "HTTP/1.1 101 Switching Protocols\r\n\r\n"}) {
        serveRaw([answer](ScriptedPeer& peer) {
            peer.readRequest();
            peer.write(answer);
            peer.waitForEnd();
        });
        expectFailure(url());
    }
}

TEST_F(NeverEstablished, ForAPeerThatDoesNotAnswerInTime) {
    setLimits([](NetworkControl::Limits& limits) { limits.connectMilliseconds = 200; });
    serveRaw([](ScriptedPeer& peer) { peer.waitForEnd(); });
    expectFailure(url());
    EXPECT_EQ(errorText, "time limit");

    ScriptedTlsServer::Options options = serverOptions();
    options.handshake = false;
    server = std::make_unique<ScriptedTlsServer>(options, [](ScriptedPeer&) {});
    expectFailure(url());
    EXPECT_EQ(errorText, "time limit");
}

// ---- Sending

TEST_F(WebSocket, SendsMaskedTextFramesInOrder) {
    serveQuietly();
    open();
    WebSocketThread::instance()->send("before the connection stands");
    ASSERT_TRUE(app.waitFor("open 0"));
    for (int count = 0; count < 100; ++count) {
        WebSocketThread::instance()->send("text " + std::to_string(count));
    }
    WebSocketThread::instance()->send(std::string(mebibyte, 'y'));
    ASSERT_TRUE(eventually([this] { return heardTexts().size() == 102; }));
    EXPECT_EQ(heardTexts().front(), "before the connection stands");
    EXPECT_EQ(heardTexts()[100], "text 99");
    EXPECT_TRUE(heardTexts().back() == std::string(mebibyte, 'y'));
}

TEST_F(WebSocket, AFrameOfAnySizeIsOneMaskedTextFrame) {
    std::atomic<bool> good{false};
    serve([&good](WebSocketPeer& peer) {
        const WebSocketPeer::Frame frame = peer.readMessage();
        good = frame.opcode == WebSocketPeer::TEXT && frame.last && frame.masked && frame.payload.size() == 100'000;
        peer.readMessage();
    });
    open();
    WebSocketThread::instance()->send(std::string(100'000, 'x'));
    EXPECT_TRUE(eventually([&good] { return good.load(); }));
}

TEST_F(WebSocket, AtMost256FramesWaitAndSendNeverDoes) {
    std::atomic<bool> go{false};
    serve([&](WebSocketPeer& peer) {
        eventually([&go] { return go.load(); });
        for (;;) {
            const WebSocketPeer::Frame frame = peer.readMessage();
            if (frame.opcode != WebSocketPeer::TEXT) {
                return;
            }
            const std::lock_guard<std::mutex> lock(heardMutex);
            heard.push_back(frame.payload.substr(0, 5));
        }
    });
    open();
    ASSERT_TRUE(app.waitFor("open 0"));
    NetworkControl::instance().setInterfaceUp(false);
    const auto took = durationOf([] {
        for (int count = 0; count < 300; ++count) {
            WebSocketThread::instance()->send(std::to_string(1'0000 + count) + std::string(10'000, 'x'));
        }
    });
    EXPECT_LT(took.count(), 1'000);
    NetworkControl::instance().setInterfaceUp(true);
    go = true;
    ASSERT_TRUE(eventually([this] { return heardTexts().size() >= 256; }));
    WebSocketThread::instance()->send("after");
    ASSERT_TRUE(eventually([this] { return heardTexts().back() == "after"; }));
    EXPECT_EQ(heardTexts().size(), 257U);
    EXPECT_EQ(heardTexts()[255], "10255");
    EXPECT_TRUE(RecordedHostLog::contains(warning, "256 are waiting"));
}

TEST_F(WebSocket, SendingAfterTheEndIsDroppedAndLogged) {
    serve([](WebSocketPeer& peer) { peer.close(1000); });
    open();
    ASSERT_TRUE(app.waitFor("close 1000 1000"));
    ASSERT_NE(WebSocketThread::instance(), nullptr);
    for (int count = 0; count < 300; ++count) {
        WebSocketThread::instance()->send("lost");
    }
    EXPECT_TRUE(eventually([] { return RecordedHostLog::contains(warning, "the connection has ended"); }));
    EXPECT_FALSE(RecordedHostLog::mentions("lost"));
}

TEST_F(WebSocket, ACallbackMaySend) {
    serve([this](WebSocketPeer& peer) {
        peer.sendText("question");
        const std::lock_guard<std::mutex> lock(heardMutex);
        heard.push_back(peer.readMessage().payload);
    });
    app.inside = [](const std::string& report) {
        if (report == "message question") {
            WebSocketThread::instance()->send("answer");
        }
    };
    open();
    ASSERT_TRUE(eventually([this] { return heardTexts().size() == 1; }));
    EXPECT_EQ(heardTexts()[0], "answer");
}

} // namespace
