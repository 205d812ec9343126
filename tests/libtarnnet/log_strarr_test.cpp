// The library's log file and its string arrays.
#include <gtest/gtest.h>

#include <cerrno>
#include <ctime>

#include "log.h"
#include "own_mounts.h"
#include "strarr.h"

namespace {

TEST(Log, OneStampedLineForEachMessageCutTo1023Characters) {
    own_mounts::run([] {
        const long before = time(nullptr);
        errno = EPERM;
        tarnnetlog("%s %d", "first", 1);
        tarnnetlog("%s", std::string(3000, 'x').c_str());
        EXPECT_EQ(errno, EPERM);

        const std::string text = own_mounts::read_file("/var/log/tarnnetcfg.log");
        const std::string rest = text.substr(text.find('\t'));
        EXPECT_GE(std::stol(text), before);
        EXPECT_LE(std::stol(text), time(nullptr));
        const std::string ids =
            "\t" + std::to_string(getpid()) + "\t" + std::to_string(getppid()) + "\t";
        EXPECT_EQ(rest.substr(0, rest.find('\n')), ids + "first 1");
        EXPECT_EQ(own_mounts::logged_messages(), "first 1\n" + std::string(1023, 'x') + "\n");
    });
}

TEST(StringArray, GrowsFromNothingAndCopiesDeep) {
    char** array = nullptr;
    EXPECT_EQ(dup_strarr(nullptr), nullptr);
    ASSERT_EQ(add_to_strarr(&array, "a"), 0);
    ASSERT_EQ(add_to_strarr(&array, ""), 0);
    char** copy = dup_strarr(array);
    ASSERT_NE(copy, nullptr);
    free_strarr(array);
    EXPECT_STREQ(copy[0], "a");
    EXPECT_STREQ(copy[1], "");
    EXPECT_EQ(copy[2], nullptr);
    free_strarr(copy);
    free_strarr(nullptr);
}

}  // namespace
