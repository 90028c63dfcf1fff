#include "support/TransportFixture.h"

#include <sys/stat.h>

#include <array>
#include <atomic>
#include <fstream>
#include <future>
#include <stdexcept>
#include <thread>

// ---- The socket ---------------------------------------------------------------------------------------------------

TEST_F(Transport, IsForTheUserAlone) {
    serve();
    struct stat found{};
    ASSERT_EQ(0, ::stat(m_path.c_str(), &found));
    EXPECT_EQ(0600U, found.st_mode & 0777U);
}

TEST_F(Transport, ReplacesAStaleSocket) {
    leaveAStaleSocket();

    serve();

    EXPECT_TRUE(Client(m_path).isConnected());
}

TEST_F(Transport, LeavesALiveSocketAlone) {
    serve();
    ControlServer second;
    std::string error;
    EXPECT_EQ(ControlServer::Listening::OCCUPIED,
              second.listen(m_path, [](LineConnection&, const std::string&) {}, [](LineConnection&) {}, error));
    EXPECT_NE(std::string::npos, error.find(m_path));

    Client client(m_path);
    client.send("still there\n");
    EXPECT_EQ("got still there", client.readLine());
}

TEST_F(Transport, OneOfManyThatBeginAtOnceOnAStaleSocketListensAndTheOthersSaySo) {
    constexpr int servers = 4;
    for (int round = 0; round < 100; ++round) {
        leaveAStaleSocket();
        std::array<ControlServer, servers> contenders;
        std::array<ControlServer::Listening, servers> outcomes{};
        std::atomic<int> ready{0};
        std::vector<std::thread> threads;
        for (int number = 0; number < servers; ++number) {
            threads.emplace_back([&, number] {
                ++ready;
                while (ready < servers) {
                    std::this_thread::yield();
                }
                std::string error;
                outcomes[number] = contenders[number].listen(
                    m_path, [](LineConnection&, const std::string&) {}, [](LineConnection&) {}, error);
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        ASSERT_EQ(1, std::count(outcomes.begin(), outcomes.end(), ControlServer::Listening::BEGUN)) << round;
        ASSERT_EQ(servers - 1, std::count(outcomes.begin(), outcomes.end(), ControlServer::Listening::OCCUPIED))
            << round;
        ASSERT_TRUE(Client(m_path).isConnected()) << round;
    }
}

TEST_F(Transport, LeavesAnothersSocketWhenItsOwnWasTakenAway) {
    serve();
    ASSERT_EQ(0, ::unlink(m_path.c_str()));
    ControlServer second;
    std::string error;
    ASSERT_EQ(ControlServer::Listening::BEGUN,
              second.listen(m_path, [](LineConnection&, const std::string&) {}, [](LineConnection&) {}, error));

    m_server->stop();

    EXPECT_TRUE(Client(m_path).isConnected());
}

TEST_F(Transport, NeverReplacesAFileThatIsNoSocket) {
    std::ofstream(m_path) << "precious";
    ControlServer server;
    std::string error;
    EXPECT_EQ(ControlServer::Listening::UNUSABLE_PATH,
              server.listen(m_path, [](LineConnection&, const std::string&) {}, [](LineConnection&) {}, error));
    std::string content;
    std::ifstream(m_path) >> content;
    EXPECT_EQ("precious", content);
}

TEST_F(Transport, RefusesAPathThatCannotBe) {
    for (const std::string& path : {std::string(), std::string(200, 'x'), m_folder + "/missing/socket"}) {
        ControlServer server;
        std::string error;
        EXPECT_EQ(ControlServer::Listening::UNUSABLE_PATH,
                  server.listen(
                      path, [](LineConnection&, const std::string&) {}, [](LineConnection&) {}, error))
            << path;
        EXPECT_FALSE(error.empty());
    }
}

TEST_F(Transport, TakesTheSocketAwayWhenItStops) {
    serve();
    m_server->stop();
    struct stat found{};
    EXPECT_NE(0, ::stat(m_path.c_str(), &found));
}

TEST_F(Transport, StopsAlthoughClientsAreConnectedAndSilent) {
    serve();
    Client first(m_path);
    Client second(m_path);
    ASSERT_TRUE(first.send("half a l"));

    m_server->stop();

    EXPECT_EQ("(end)", first.readLine());
    EXPECT_EQ("(end)", second.readLine());
}

// ---- Lines --------------------------------------------------------------------------------------------------------

TEST_F(Transport, TakesLinesHoweverTheyAreCut) {
    serve();
    Client client(m_path);
    client.send("one\ntw");
    EXPECT_EQ("got one", client.readLine());
    client.send("o\nthree\n\n");
    EXPECT_EQ("got two", client.readLine());
    EXPECT_EQ("got three", client.readLine());
}

TEST_F(Transport, AnswersEveryoneOnTheirOwnConnection) {
    serve();
    Client first(m_path);
    Client second(m_path);
    second.send("second\n");
    first.send("first\n");
    EXPECT_EQ("got first", first.readLine());
    EXPECT_EQ("got second", second.readLine());
}

TEST_F(Transport, OneClientsCallDoesNotHoldUpAnothers) {
    std::promise<void> release;
    const std::shared_future<void> released = release.get_future().share();
    serve([released](LineConnection& connection, const std::string& line) {
        if (line == "slow") {
            released.wait();
        }
        connection.send("got " + line);
    });
    Client slow(m_path);
    slow.send("slow\n");
    Client quick(m_path);
    quick.send("quick\n");

    EXPECT_EQ("got quick", quick.readLine());

    release.set_value();
    EXPECT_EQ("got slow", slow.readLine());
}

TEST_F(Transport, ManyClientsGetAllTheirAnswers) {
    serve();
    std::vector<std::thread> threads;
    std::atomic<int> answered{0};
    for (int number = 0; number < 4; ++number) {
        threads.emplace_back([this, number, &answered] {
            Client client(m_path);
            for (int call = 0; call < 200; ++call) {
                const std::string line = std::to_string(number) + "-" + std::to_string(call);
                client.send(line + "\n");
                answered += client.readLine() == "got " + line ? 1 : 0;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(800, answered);
}

TEST_F(Transport, AnExceptionInAHandlerEndsTheMessageOnly) {
    serve([](LineConnection& connection, const std::string& line) {
        if (line == "bad") {
            throw std::runtime_error("bad");
        }
        if (line == "worse") {
            throw 7;
        }
        connection.send("got " + line);
    });
    Client client(m_path);
    client.send("bad\nworse\ngood\n");
    EXPECT_EQ("got good", client.readLine());
}

TEST_F(Transport, RefusesALineThatGrowsWithoutEndAndLeavesTheOthersAlone) {
    LineConnection::Limits limits;
    limits.longestLine = 100'000;
    serve(limits);
    Client bystander(m_path);
    Client talker(m_path);

    talker.send(std::string(10'000'000, 'x')); // may fail half way: the server has had enough

    const std::string answer = talker.readLine();
    EXPECT_NE(std::string::npos, answer.find("error")) << answer.substr(0, 100);
    EXPECT_EQ("(end)", talker.readLine());
    bystander.send("still served\n");
    EXPECT_EQ("got still served", bystander.readLine());
    EXPECT_EQ(std::vector<std::string>{"still served"}, m_lines.all());
}

TEST_F(Transport, SendsWhatItOwesToAClientThatHasDoneSpeaking) {
    serve();
    Client client(m_path);
    std::string lines;
    for (int number = 0; number < 1000; ++number) {
        lines += "line " + std::to_string(number) + "\n";
    }
    client.send(lines);
    client.sendNoMore();
    ASSERT_TRUE(m_ended.waitForCount(1));

    for (int number = 0; number < 1000; ++number) {
        ASSERT_EQ("got line " + std::to_string(number), client.readLine());
    }
    EXPECT_EQ("(end)", client.readLine());
}

TEST_F(Transport, SaysWhenAClientHasGone) {
    serve();
    Client client(m_path);
    client.send("hello\nhalf a mess");
    client.readLine();
    client.close();
    EXPECT_TRUE(m_ended.waitForCount(1));
}

// ---- Slow clients -------------------------------------------------------------------------------------------------

TEST_F(Transport, AClientThatDoesNotReadBlocksNobodyAndIsDroppedWhenTooMuchWaits) {
    LineConnection::Limits limits;
    limits.mostWaitingBytes = 1'000'000;
    const std::string part(100'000, 'x');
    std::promise<std::chrono::steady_clock::duration> took;
    serve(
        [&](LineConnection& connection, const std::string&) {
            const auto begin = std::chrono::steady_clock::now();
            for (int number = 0; number < 100; ++number) {
                connection.send(part);
            }
            took.set_value(std::chrono::steady_clock::now() - begin);
        },
        limits);
    Client client(m_path);
    client.send("go\n");

    auto duration = took.get_future();
    ASSERT_EQ(std::future_status::ready, duration.wait_for(patience));
    EXPECT_LT(duration.get(), std::chrono::seconds(2));
    EXPECT_TRUE(m_ended.waitForCount(1));
}

TEST_F(Transport, AClientThatTakesNothingIsDroppedAfterTheSendLimit) {
    LineConnection::Limits limits;
    limits.sendMilliseconds = 200;
    const std::string part(4'000'000, 'x'); // more than a socket buffers
    serve([&](LineConnection& connection, const std::string&) { connection.send(part); }, limits);
    Client client(m_path);
    client.send("go\n");

    EXPECT_TRUE(m_ended.waitForCount(1));
}

TEST_F(Transport, AClientThatReadsSlowlyGetsEverything) {
    LineConnection::Limits limits;
    limits.sendMilliseconds = 2000;
    serve(
        [](LineConnection& connection, const std::string&) {
            for (int number = 0; number < 40; ++number) {
                connection.send(std::string(50'000, static_cast<char>('a' + number % 26)));
            }
        },
        limits);
    Client client(m_path);
    client.send("go\n");
    for (int number = 0; number < 40; ++number) {
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
        ASSERT_EQ(std::string(50'000, static_cast<char>('a' + number % 26)), client.readLine());
    }
}
