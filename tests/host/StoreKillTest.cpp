#include "data/ItemStore.h"
#include "support/TemporaryFolder.h"

#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <csignal>
#include <cstdint>

namespace {

/// Writes ever higher numbers and reports each one through the pipe once the store has taken it.
[[noreturn]] void writeForEver(const std::string& path, int report) {
    std::string error;
    const std::unique_ptr<ItemStore> items = ItemStore::open(path, error);
    for (std::int64_t number = 1; items != nullptr; ++number) {
        if (!items->put("last-dialled-number", std::to_string(number)) ||
            ::write(report, &number, sizeof number) != sizeof number) {
            break;
        }
    }
    ::_exit(1);
}

/// Lets a child process write, kills it behind that many writes, and returns the last number that it reported.
std::int64_t numberAtTheKill(const std::string& path, int writesBefore) {
    int ends[2] = {-1, -1};
    EXPECT_EQ(0, ::pipe(ends));
    const pid_t child = ::fork();
    if (child == 0) {
        ::close(ends[0]);
        writeForEver(path, ends[1]);
    }
    ::close(ends[1]);
    std::int64_t reported = 0;
    std::int64_t number = 0;
    for (int count = 0; count < writesBefore && ::read(ends[0], &number, sizeof number) == sizeof number; ++count) {
        reported = number;
    }
    EXPECT_EQ(0, ::kill(child, SIGKILL));
    int status = 0;
    EXPECT_EQ(child, ::waitpid(child, &status, 0));
    EXPECT_TRUE(WIFSIGNALED(status)) << "the child ended by itself";
    while (::read(ends[0], &number, sizeof number) == sizeof number) {
        reported = number;
    }
    ::close(ends[0]);
    return reported;
}

} // namespace

TEST(StoreOfAKilledProcess, OpensWithTheLastItemsThatWereWritten) {
    TemporaryFolder folder;
    for (const int writesBefore : {1, 2, 3, 10, 50, 200}) {
        const std::int64_t reported = numberAtTheKill(folder.file("store"), writesBefore);
        ASSERT_GE(reported, writesBefore);

        std::string error;
        const std::unique_ptr<ItemStore> items = ItemStore::open(folder.file("store"), error);
        ASSERT_NE(nullptr, items) << error;
        const std::int64_t stored = std::stoll(items->get("last-dialled-number").value_or("0"));

        // One more may have been written whose report did not get out.
        EXPECT_GE(stored, reported);
        EXPECT_LE(stored, reported + 1);
    }
}
