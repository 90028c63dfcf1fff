#include <gtest/gtest.h>

#include <cstdio>

int main(int argumentCount, char** arguments) {
    testing::InitGoogleTest(&argumentCount, arguments);
    if (testing::GTEST_FLAG(shuffle)) {
        std::printf("seed %d\n", testing::GTEST_FLAG(random_seed));
    }
    return RUN_ALL_TESTS();
}
