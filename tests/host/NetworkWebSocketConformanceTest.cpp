#include "support/WebSocketFixture.h"

#include <csignal>
#include <cstdio>
#include <cstring>
#include <sys/wait.h>
#include <unistd.h>

namespace {

/// A server program that shares nothing with the client: Debian's python3-websockets.
class ServerProgram {
public:
    explicit ServerProgram(const CertificateFiles& files) {
        int ends[2];
        if (pipe(ends) != 0) {
            return;
        }
        m_pid = fork();
        if (m_pid == 0) {
            dup2(ends[1], STDOUT_FILENO);
            close(ends[0]);
            close(ends[1]);
            execl("/usr/bin/python3", "python3", WEBSOCKET_SERVER, files.certificate.c_str(), files.key.c_str(),
                  static_cast<char*>(nullptr));
            _exit(127);
        }
        close(ends[1]);
        m_output = fdopen(ends[0], "r");
    }
    ~ServerProgram() {
        if (m_pid > 0) {
            kill(m_pid, SIGKILL);
            waitpid(m_pid, nullptr, 0);
        }
        if (m_output != nullptr) {
            std::fclose(m_output);
        }
    }
    ServerProgram(const ServerProgram&) = delete;
    ServerProgram& operator=(const ServerProgram&) = delete;

    /// The next line that the program writes, without its end; empty when it has ended.
    std::string readLine() {
        char line[256] = "";
        if (m_output == nullptr || std::fgets(line, sizeof line, m_output) == nullptr) {
            return {};
        }
        line[std::strcspn(line, "\n")] = '\0';
        return line;
    }

private:
    pid_t m_pid = -1;
    std::FILE* m_output = nullptr;
};

class Conformance : public WebSocketFixture {
protected:
    static void SetUpTestSuite() {
        program = std::make_unique<ServerProgram>(certificates().server());
        port = program->readLine();
    }
    static void TearDownTestSuite() { program.reset(); }

    void SetUp() override {
        ASSERT_FALSE(port.empty()) << "the server did not start: is python3-websockets installed?";
    }

    void openPath(const std::string& path) {
        WebSocketThread::init(&app, "wss://127.0.0.1:" + port + path + "?token=a", "", "");
        ASSERT_TRUE(app.waitFor("open 0")) << app.errorText;
    }
    static void send(const std::string& text) { WebSocketThread::instance()->send(text); }

    static inline std::unique_ptr<ServerProgram> program;
    static inline std::string port;
};

TEST_F(Conformance, TextsOfAllLengthEncodingsComeBack) {
    openPath("/echo");
    const std::string characters = "a\xc3\xa4\xe2\x82\xac\xf0\x9f\x98\x80";
    const std::size_t lengths[] = {0, 1, 125, 126, 127, 65535, 65536, 1024 * 1024};
    for (const std::size_t length : lengths) {
        send(std::string(length, 'x'));
    }
    send(characters);
    ASSERT_TRUE(app.waitFor("message " + characters));
    for (const std::size_t length : lengths) {
        EXPECT_EQ(app.count("message " + std::string(length, 'x')), 1) << length;
    }
    WebSocketThread::stop();
    EXPECT_EQ(program->readLine(), "/echo close 1000");
}

TEST_F(Conformance, AMessageInFragmentsIsWhole) {
    openPath("/fragments");
    EXPECT_TRUE(app.waitFor("message fragments \xc3\xa4\xe2\x82\xac\xf0\x9f\x98\x80"));
    WebSocketThread::stop();
    EXPECT_EQ(program->readLine(), "/fragments close 1000");
}

TEST_F(Conformance, PingsAreAnsweredWithTheirData) {
    openPath("/pings");
    EXPECT_TRUE(app.waitFor("message all pings answered"));
    WebSocketThread::stop();
    EXPECT_EQ(program->readLine(), "/pings close 1000");
}

TEST_F(Conformance, OwnPingsAreAnswered) {
    setLimits([](NetworkControl::Limits& limits) { limits.pingIntervalMilliseconds = 20; });
    openPath("/echo");
    EXPECT_TRUE(app.waitFor("pong", 3));
    WebSocketThread::stop();
    EXPECT_EQ(program->readLine(), "/echo close 1000");
}

TEST_F(Conformance, AMessageBeyondTheBoundClosesWith1009) {
    openPath("/large");
    EXPECT_TRUE(app.waitFor("close 0 1009"));
    EXPECT_EQ(app.count("message " + std::string(1024 * 1024, 'x')), 1);
    EXPECT_EQ(program->readLine(), "/large close 1009");
}

TEST_F(Conformance, BinaryMessagesDoNotDisturb) {
    openPath("/binary");
    EXPECT_TRUE(app.waitFor("message text"));
    WebSocketThread::stop();
    EXPECT_EQ(program->readLine(), "/binary close 1000");
}

TEST_F(Conformance, ACloseIsAnsweredInKind) {
    openPath("/close");
    EXPECT_TRUE(app.waitFor("close 4001 4001"));
    EXPECT_EQ(app.closeText, "gr\xc3\xbcnde");
    EXPECT_EQ(program->readLine(), "/close close 4001");
}

TEST_F(Conformance, TheOpeningHandshakeHasNothingBeyondTheNecessary) {
    openPath("/headers");
    EXPECT_TRUE(app.waitFor("message connection,host,sec-websocket-key,sec-websocket-version,upgrade"))
        << ::testing::PrintToString(app.reports());
    WebSocketThread::stop();
    EXPECT_EQ(program->readLine(), "/headers close 1000");
}

} // namespace
