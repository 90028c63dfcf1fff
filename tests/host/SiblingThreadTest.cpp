#include "siblings/SiblingThread.h"

#include "logging/LogSink.h"
#include "support/TemporaryFolder.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>
#include <thread>

TEST(SiblingThread, RunsAnEventOnItsOwnThreadBeforeItReturns) {
    SiblingThread siblings;
    std::thread::id thread;

    EXPECT_TRUE(siblings.raise([&thread] { thread = std::this_thread::get_id(); }));

    EXPECT_NE(std::thread::id(), thread);
    EXPECT_NE(std::this_thread::get_id(), thread);
}

TEST(SiblingThread, GoesOnBehindAnEventThatThrows) {
    const TemporaryFolder folder;
    std::string error;
    ASSERT_TRUE(LogSink::configure({2, folder.file("log"), false}, error)) << error;
    SiblingThread siblings;

    EXPECT_TRUE(siblings.raise([] { throw std::runtime_error("out of order"); }));
    EXPECT_TRUE(siblings.raise([] { throw 7; }));

    bool raised = false;
    EXPECT_TRUE(siblings.raise([&raised] { raised = true; }));
    EXPECT_TRUE(raised);
    const std::string log = folder.read("log");
    EXPECT_NE(std::string::npos, log.find("sibling event ended by an exception: out of order\n")) << log;
    EXPECT_NE(std::string::npos, log.find("sibling event ended by an exception\n")) << log;
}

TEST(SiblingThread, RaisesNothingOnceItHasStopped) {
    SiblingThread siblings;
    siblings.stop();

    bool raised = false;
    EXPECT_FALSE(siblings.raise([&raised] { raised = true; }));
    EXPECT_FALSE(raised);
}
